#include "command_layer.h"

#include "param_types.h"
#include "source_text.h"

#include <span>

namespace wex_grammar
{
namespace
{

// A declaration spells out to one command per choice of its alternatives
// and optional parts; past these it is no longer one command.
constexpr std::size_t kMaxOptionalParts = 4;
constexpr std::size_t kMaxForms = 256;

// One place of a command line: the words a user may type there.
struct Element {
    std::vector<Word> choices;
    int optional_part = -1; // which optional part it belongs to, if any
};

class Reader
{
  public:
    Reader(CommandFile &file, Diagnostics &diagnostics, const CommandSink &each_command)
        : file_(file.name), diagnostics_(diagnostics), result_(file), each_command_(each_command)
    {
    }

    void run(std::string_view text)
    {
        tokenize_lines(text, file_, diagnostics_,
                       [this](std::span<const Token> tokens) { read_line(TokenCursor(tokens)); });
        hand_over();
    }

  private:
    void error(Position at, const std::string &message) { diagnostics_.error(file_, at, message); }

    void read_line(TokenCursor line)
    {
        const Token &key = *line.peek();
        if (key.kind != Token::Kind::word) {
            error(key.at, "a line begins with a statement: module, help, token, command");
            return;
        }
        line.take();
        if (key.at.column > 1 && key.value != "command") {
            if (pending_)
                read_attribute(key, line, *pending_);
            else if (!skipping_attributes_)
                error(key.at, "an indented line belongs to a command; none comes before it");
            if (!line.done())
                error(line.at(), "unexpected '" + line.peek()->value + "' at the end of the line");
            return;
        }
        hand_over();
        skipping_attributes_ = key.value == "command"; // until the command is read whole
        if (key.value == "module") {
            read_name(key, line, sizeof(parse_tree_node::module_id), module_);
        } else if (key.value == "help") {
            read_file_help(key, line);
        } else if (key.value == "token") {
            read_token_id(key, line);
        } else if (key.value == "command") {
            read_command(key, line); // the words run to the line's end; after an error the rest is skipped
            return;
        } else {
            error(key.at, "unknown statement '" + key.value + "' (module, help, token, command)");
            return;
        }
        if (!line.done())
            error(line.at(), "unexpected '" + line.peek()->value + "' at the end of the line");
    }

    // A word or a quoted text that fits a field of width bytes.
    bool read_name(const Token &key, TokenCursor &line, std::size_t width, std::string &into)
    {
        const Token *value = line.take();
        if (!value || (value->kind != Token::Kind::word && value->kind != Token::Kind::text)) {
            error(value ? value->at : key.at, "'" + key.value + "' needs a name");
            return false;
        }
        return fits(*value, width, "'" + key.value + "'") && (into = value->value, true);
    }

    bool fits(const Token &value, std::size_t width, const std::string &what)
    {
        if (value.value.size() < width && value.value.find('\0') == std::string::npos)
            return true;
        error(value.at, what + " holds at most " + std::to_string(width - 1) + " characters; '" +
                            value.value + "' has " + std::to_string(value.value.size()));
        return false;
    }

    void read_help(const Token &key, TokenCursor &line,
                   std::vector<std::pair<std::string, std::string>> &into)
    {
        const Token *word = line.take();
        const Token *text = line.take();
        if (!word || word->kind != Token::Kind::word || !text || text->kind != Token::Kind::text) {
            error(key.at, "'help' needs a word and its quoted help text");
            return;
        }
        if (fits(*text, sizeof(parse_tree_node::Help), "a help text"))
            into.emplace_back(word->value, text->value);
    }

    // A word's help for the whole file: given once.
    void read_file_help(const Token &key, TokenCursor &line)
    {
        std::vector<std::pair<std::string, std::string>> one;
        read_help(key, line, one);
        if (one.empty())
            return;
        const auto [it, added] = result_.help.emplace(one.front());
        if (!added && it->second != one.front().second)
            error(key.at, "the help of '" + it->first + "' is already \"" + it->second + "\" in this file");
    }

    std::optional<uint64_t> read_number(const Token &key, TokenCursor &line, int width)
    {
        const Token *value = line.take();
        const std::optional<uint64_t> number =
            value && value->kind == Token::Kind::word ? parse_number(value->value, width) : std::nullopt;
        if (!number)
            error(value ? value->at : key.at,
                  "'" + key.value + "' takes a " + std::to_string(8 * width) + "-bit number");
        return number;
    }

    void read_token_id(const Token &key, TokenCursor &line)
    {
        const Token *word = line.take();
        if (!word || word->kind != Token::Kind::word) {
            error(key.at, "'token' needs a keyword and its token id");
            return;
        }
        if (const std::optional<uint64_t> id = read_number(key, line, 4))
            result_.token_ids[word->value] = static_cast<uint32_t>(*id);
    }

    void read_attribute(const Token &key, TokenCursor &line, CommandDecl &command)
    {
        const std::string &name = key.value;
        std::string text;
        if (name == "help") {
            read_help(key, line, command.help);
        } else if (name == "function" || name == "generator") {
            if (read_name(key, line,
                          name == "function" ? sizeof(parse_tree_node::Func_ID)
                                             : sizeof(parse_tree_node::subtree_config_generator),
                          text))
                (name == "function" ? command.function : command.generator) = text;
        } else if (name == "command-id") {
            if (const auto n = read_number(key, line, 4))
                command.command_id = static_cast<uint32_t>(*n);
        } else if (name == "bcp-msg-type" || name == "internal-function" || name == "priority") {
            if (const auto n = read_number(key, line, 2))
                (name == "priority"       ? command.priority
                 : name == "bcp-msg-type" ? command.bcp_msg_type
                                          : command.internal_function) = static_cast<uint16_t>(*n);
        } else if (name == "interface-mask") {
            command.interface_mask = read_number(key, line, 8);
        } else if (name == "permissions") {
            read_permissions(key, line, command);
        } else if (name == "enters") {
            read_enters(key, line, command);
        } else if (name == "negatable") {
            command.negatable = true;
        } else if (name == "ordered") {
            command.ordered = true;
        } else if (name == "single-valued") {
            const Token *value = line.done() ? nullptr : line.take();
            command.single_valued = value ? value->value : "";
        } else {
            error(key.at, "unknown attribute '" + name +
                              "' (help, function, generator, command-id, bcp-msg-type, internal-function, "
                              "priority, interface-mask, permissions, enters, negatable, ordered, "
                              "single-valued)");
        }
    }

    // Permission bit numbers, 0 to 127, bit 0 first in the mask's first byte.
    void read_permissions(const Token &key, TokenCursor &line, CommandDecl &command)
    {
        std::array<uint8_t, 16> bits{};
        bool any = false;
        while (!line.done()) {
            const std::optional<uint64_t> bit = read_number(key, line, 1);
            if (!bit || *bit > 127) {
                if (bit)
                    error(key.at, "permission bits are numbered 0 to 127");
                return;
            }
            bits[*bit / 8] |= static_cast<uint8_t>(0x80u >> (*bit % 8));
            any = true;
        }
        if (!any)
            error(key.at, "'permissions' needs the numbers of its bits");
        else
            command.permissions = bits;
    }

    void read_enters(const Token &key, TokenCursor &line, CommandDecl &command)
    {
        Submode submode;
        const Token *mode = line.take();
        const Token *prompt = line.take();
        const Token *help = line.take();
        if (!mode || mode->kind != Token::Kind::word || !prompt || prompt->kind != Token::Kind::text ||
            !help || help->kind != Token::Kind::text) {
            error(key.at, "'enters' needs a mode name, its quoted prompt and its quoted help");
            return;
        }
        if (fits(*prompt, sizeof(parse_tree_node::SubMode_Prompt), "a submode prompt") &&
            fits(*help, sizeof(parse_tree_node::SubMode_Help), "a submode help text")) {
            command.enters = Submode{mode->value, prompt->value, help->value};
            command.enters_at = key.at;
        }
    }

    // command MODE[,MODE...]: WORDS
    void read_command(const Token &key, TokenCursor &line)
    {
        CommandDecl command;
        command.at = key.at;
        command.module = module_;
        if (!read_modes(key, line, command.modes))
            return;
        std::vector<Element> elements;
        int optional_parts = 0;
        while (!line.done()) {
            if (line.take_mark('[')) {
                if (!read_optional_part(line, elements, optional_parts++))
                    return;
            } else if (!read_element(line, elements, -1)) {
                return;
            }
        }
        if (elements.empty()) {
            error(key.at, "a command needs at least one word");
            return;
        }
        if (static_cast<std::size_t>(optional_parts) > kMaxOptionalParts) {
            error(key.at, "a command has at most " + std::to_string(kMaxOptionalParts) + " optional parts");
            return;
        }
        command.forms = spell_out(elements, optional_parts, key.at);
        if (!command.forms.empty()) {
            pending_ = std::move(command);
            skipping_attributes_ = false;
        }
    }

    bool read_modes(const Token &key, TokenCursor &line, std::vector<std::string> &modes)
    {
        for (;;) {
            const Token *mode = line.take();
            if (!mode || mode->kind != Token::Kind::word) {
                error(mode ? mode->at : key.at, "a command begins with its modes: 'command config: ...'");
                return false;
            }
            const bool last = mode->value.back() == ':';
            modes.push_back(last ? mode->value.substr(0, mode->value.size() - 1) : mode->value);
            if (last && !modes.back().empty())
                return true;
            if (last || !line.take_mark(',')) {
                error(mode->at, "a command begins with its modes: 'command config: ...'");
                return false;
            }
        }
    }

    bool read_optional_part(TokenCursor &line, std::vector<Element> &elements, int part)
    {
        const std::size_t first = elements.size();
        while (!line.take_mark(']')) {
            if (line.done() || line.peek()->value == "[") {
                error(line.at(), line.done() ? "the optional part is not closed with ']'"
                                             : "an optional part cannot hold another");
                return false;
            }
            if (!read_element(line, elements, part))
                return false;
        }
        if (elements.size() == first) {
            error(line.at(), "an optional part needs at least one word");
            return false;
        }
        for (Word &w : elements[first].choices)
            w.optional = true;
        return true;
    }

    // A keyword, {alternatives}, or one parameter or two written together.
    bool read_element(TokenCursor &line, std::vector<Element> &elements, int part)
    {
        Element element;
        element.optional_part = part;
        const Token &first = *line.peek();
        if (line.take_mark('{')) {
            if (!read_alternatives(first, line, element))
                return false;
        } else if (first.kind == Token::Kind::mark && first.value == "<") {
            Word word;
            word.at = first.at;
            while (line.peek() && line.peek()->value == "<" && line.peek()->kind == Token::Kind::mark) {
                if (!word.params.empty() && line.peek()->at.column != last_close_.column + 1)
                    break; // a blank between: the next word
                if (!read_parameter(line, word))
                    return false;
            }
            element.choices.push_back(std::move(word));
        } else if (first.kind == Token::Kind::word) {
            line.take();
            if (!keyword_fits(first))
                return false;
            element.choices.push_back(Word{first.value, {}, {}, false, first.at});
        } else {
            error(first.at, "unexpected '" + first.value + "' in a command");
            return false;
        }
        elements.push_back(std::move(element));
        return true;
    }

    bool keyword_fits(const Token &word) { return fits(word, sizeof(parse_tree_node::Token), "a keyword"); }

    bool read_alternatives(const Token &open, TokenCursor &line, Element &element)
    {
        do {
            const Token *word = line.take();
            if (!word || word->kind != Token::Kind::word) {
                error(word ? word->at : open.at,
                      "alternatives are keywords between '{' and '}', split by '|'");
                return false;
            }
            if (!keyword_fits(*word))
                return false;
            element.choices.push_back(Word{word->value, {}, {}, false, word->at});
        } while (line.take_mark('|'));
        if (!line.take_mark('}')) {
            error(line.at(), "the alternatives are not closed with '}'");
            return false;
        }
        return true;
    }

    // <NAME:TYPE [BOUNDS] ["help"]> or <SUBTYPE ["help"]>
    bool read_parameter(TokenCursor &line, Word &word)
    {
        const Token &open = *line.take();
        if (word.params.size() == WEX_NODE_MAX_PARAMS) {
            error(open.at, "a node holds at most " + std::to_string(WEX_NODE_MAX_PARAMS) + " parameters");
            return false;
        }
        const Token *head = line.take();
        if (!head || head->kind != Token::Kind::word) {
            error(head ? head->at : open.at,
                  "a parameter is <NAME:TYPE BOUNDS \"help\"> or a subtype like <module>");
            return false;
        }
        ParamFields param;
        std::string name;
        if (!read_parameter_type(*head, line, param, name))
            return false;
        if (line.peek() && line.peek()->kind == Token::Kind::text) {
            const Token &help = *line.take();
            if (!fits(help, sizeof(param_descriptor::help), "a parameter's help"))
                return false;
            param.help = help.value;
        }
        const Position close_at = line.at();
        if (!line.take_mark('>')) {
            error(close_at, "the parameter is not closed with '>'");
            return false;
        }
        last_close_ = close_at;
        word.params.push_back(param);
        word.names.push_back(name);
        return true;
    }

    bool read_parameter_type(const Token &head, TokenCursor &line, ParamFields &param, std::string &name)
    {
        const std::size_t colon = head.value.find(':');
        if (colon == std::string::npos) {
            const Subtype *subtype = subtype_by_placeholder(head.value);
            if (!subtype) {
                error(head.at, "unknown subtype '<" + head.value + ">'; a typed parameter is <NAME:TYPE>");
                return false;
            }
            param.type = subtype->type;
            param.subtype = static_cast<uint32_t>(subtype->code);
            name = head.value;
            return true;
        }
        name = head.value.substr(0, colon);
        const std::string type_word = head.value.substr(colon + 1);
        const ParamType *type = type_by_word(type_word);
        if (name.empty() || !type) {
            error(head.at, name.empty() ? "a parameter needs a name before ':'"
                                        : "unknown parameter type '" + type_word + "'");
            return false;
        }
        param.type = type->code;
        const Token *bounds = line.peek() && line.peek()->kind == Token::Kind::word ? line.take() : nullptr;
        return read_bounds(head, *type, bounds, param);
    }

    bool read_bounds(const Token &head, const ParamType &type, const Token *bounds, ParamFields &param)
    {
        if (type.bounds == Bounds::none) {
            if (bounds)
                error(bounds->at, "a " + std::string(type.word) + " parameter takes no bounds");
            return !bounds;
        }
        if (!bounds) {
            error(head.at, "a " + std::string(type.word) + " parameter needs " + bounds_form(type.bounds));
            return false;
        }
        if (type.bounds == Bounds::decimal || type.bounds == Bounds::hex)
            return read_range(*bounds, type, param);
        const std::optional<uint64_t> value =
            parse_number(bounds->value, type.bounds == Bounds::interfaces ? 8 : 4);
        if (!value) {
            error(bounds->at, "a " + std::string(type.word) + " parameter needs " + bounds_form(type.bounds));
            return false;
        }
        if (type.bounds == Bounds::interfaces)
            param.mask = *value;
        else
            param.min = static_cast<uint32_t>(*value);
        return true;
    }

    static std::string bounds_form(Bounds bounds)
    {
        switch (bounds) {
        case Bounds::length:
            return "its longest length, as in <NAME:string 64>";
        case Bounds::uri_mask:
            return "the mask of the URI kinds it takes, as in <FILE:uri 0x3>";
        case Bounds::decimal:
            return "its range, as in <ID:int 1..4094>";
        case Bounds::hex:
            return "its range, as in <ID:hex 0x0..0xff>";
        case Bounds::interfaces:
            return "the mask of its interface types, as in <IF:interface 0x2>";
        case Bounds::none:
            break;
        }
        return "no bounds";
    }

    bool read_range(const Token &bounds, const ParamType &type, ParamFields &param)
    {
        const std::size_t dots = bounds.value.find("..");
        const std::optional<uint64_t> low =
            dots == std::string::npos ? std::nullopt : parse_number(bounds.value.substr(0, dots), 4);
        const std::optional<uint64_t> high =
            dots == std::string::npos ? std::nullopt : parse_number(bounds.value.substr(dots + 2), 4);
        if (!low || !high) {
            error(bounds.at, "a " + std::string(type.word) + " parameter needs " + bounds_form(type.bounds));
            return false;
        }
        const bool reversed = type.bounds == Bounds::hex
                                  ? *low > *high
                                  : static_cast<int32_t>(*low) > static_cast<int32_t>(*high);
        if (reversed) {
            error(bounds.at, "bounds reversed: " + bounds.value.substr(0, dots) + " is above " +
                                 bounds.value.substr(dots + 2));
            return false;
        }
        param.min = static_cast<uint32_t>(*low);
        param.max = static_cast<uint32_t>(*high);
        return true;
    }

    // Every command the declaration stands for: each choice of its
    // alternatives, with and without each optional part.
    std::vector<std::vector<Word>> spell_out(const std::vector<Element> &elements, int optional_parts,
                                             Position at)
    {
        std::vector<std::vector<Word>> forms;
        for (unsigned kept = 0; kept < (1u << optional_parts); ++kept) {
            std::vector<std::vector<Word>> partial{{}};
            for (const Element &e : elements) {
                if (e.optional_part >= 0 && !(kept >> e.optional_part & 1))
                    continue;
                if (e.choices.size() == 1) {
                    for (auto &form : partial)
                        form.push_back(e.choices.front());
                    continue;
                }
                std::vector<std::vector<Word>> grown;
                for (const auto &form : partial) {
                    for (const Word &choice : e.choices) {
                        grown.push_back(form);
                        grown.back().push_back(choice);
                    }
                }
                partial = std::move(grown);
                if (partial.size() > kMaxForms)
                    break;
            }
            forms.insert(forms.end(), std::make_move_iterator(partial.begin()),
                         std::make_move_iterator(partial.end()));
            if (forms.size() > kMaxForms) {
                error(at, "the command spells out to more than " + std::to_string(kMaxForms) + " commands");
                return {};
            }
        }
        if (!check_no_parameter_after_optional(elements))
            return {};
        return forms;
    }

    // After an optional part a parameter could take the optional part's own
    // first word as its value: the match would depend on the user's input.
    bool check_no_parameter_after_optional(const std::vector<Element> &elements)
    {
        for (std::size_t i = 1; i < elements.size(); ++i) {
            const Element &e = elements[i];
            const bool after_optional =
                elements[i - 1].optional_part >= 0 && e.optional_part != elements[i - 1].optional_part;
            if (after_optional && !e.choices.front().params.empty()) {
                error(e.choices.front().at,
                      "a parameter right after an optional part makes matching ambiguous");
                return false;
            }
        }
        return true;
    }

    // The command read last, complete once the next statement begins.
    void hand_over()
    {
        if (pending_)
            each_command_(result_, std::move(*pending_));
        pending_.reset();
    }

    const std::string &file_;
    Diagnostics &diagnostics_;
    CommandFile &result_;
    const CommandSink &each_command_;
    std::optional<CommandDecl> pending_;
    bool skipping_attributes_ = false; // of a command whose line was wrong
    std::string module_;               // the module of the commands from here on
    Position last_close_;
};

} // namespace

bool is_node_layer(std::string_view text)
{
    return first_word(text) == "node";
}

void read_command_layer(std::string_view text, CommandFile &file, Diagnostics &diagnostics,
                        const CommandSink &each_command)
{
    Reader(file, diagnostics, each_command).run(text);
}

} // namespace wex_grammar
