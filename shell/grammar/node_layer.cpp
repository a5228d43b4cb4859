#include "node_layer.h"

#include "image_check.h"
#include "node_record.h"
#include "param_types.h"
#include "source_text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

namespace wex_grammar
{
namespace
{

// A number of the record, by its stanza key.
struct NumberField {
    std::string_view key;
    int width; // bytes
    bool hex;
    uint64_t (*get)(const NodeFields &);
    void (*set)(NodeFields &, uint64_t);
};

#define WEX_NUMBER(key, member, hex)                                                                         \
    NumberField                                                                                              \
    {                                                                                                        \
        key, static_cast<int>(sizeof(NodeFields::member)), hex,                                              \
            [](const NodeFields &f) { return static_cast<uint64_t>(f.member); },                             \
            [](NodeFields &f, uint64_t v) { f.member = static_cast<decltype(NodeFields::member)>(v); }       \
    }

const NumberField kNumbers[] = {
    WEX_NUMBER("optional", optional, false),     WEX_NUMBER("bcp-msg-type", bcp_msg_type, false),
    WEX_NUMBER("action", action, true),          WEX_NUMBER("token-id", token_id, false),
    WEX_NUMBER("command-id", command_id, false), WEX_NUMBER("internal-function", internal_function, false),
    WEX_NUMBER("priority", priority, false),     WEX_NUMBER("interface-mask", interface_mask, true),
};
#undef WEX_NUMBER

struct TextField {
    std::string_view key;
    std::string NodeFields::*member;
    std::size_t width;
};

const TextField kTexts[] = {
    {"name", &NodeFields::name, sizeof(parse_tree_node::NodeName)},
    {"token", &NodeFields::token, sizeof(parse_tree_node::Token)},
    {"help", &NodeFields::help, sizeof(parse_tree_node::Help)},
    {"submode-help", &NodeFields::submode_help, sizeof(parse_tree_node::SubMode_Help)},
    {"submode-prompt", &NodeFields::submode_prompt, sizeof(parse_tree_node::SubMode_Prompt)},
    {"function", &NodeFields::function, sizeof(parse_tree_node::Func_ID)},
    {"module", &NodeFields::module, sizeof(parse_tree_node::module_id)},
    {"generator", &NodeFields::generator, sizeof(parse_tree_node::subtree_config_generator)},
};

struct ParamNumber {
    std::string_view key;
    bool wide; // 64 bits
    uint64_t ParamFields::*wide_member;
    uint32_t ParamFields::*member;
};

const ParamNumber kParamNumbers[] = {
    {"mask", true, &ParamFields::mask, nullptr},        {"min", false, nullptr, &ParamFields::min},
    {"max", false, nullptr, &ParamFields::max},         {"subtype", false, nullptr, &ParamFields::subtype},
    {"extra32", false, nullptr, &ParamFields::extra32}, {"extra64", true, &ParamFields::extra64, nullptr},
};

constexpr std::size_t kParamHelpWidth = sizeof(param_descriptor::help);

std::string hex_digits(const uint8_t *bytes, std::size_t count)
{
    std::string out;
    char pair[3];
    for (std::size_t i = 0; i < count; ++i) {
        std::snprintf(pair, sizeof pair, "%02x", bytes[i]);
        out += pair;
    }
    return out;
}

void write_param(std::string &out, const ParamFields &p)
{
    const ParamType *type = type_by_code(p.type);
    out += "  param ";
    out += type ? std::string(type->name) : hex_number(p.type);
    for (const ParamNumber &n : kParamNumbers) {
        const uint64_t value = n.wide ? p.*n.wide_member : p.*n.member;
        if (value == 0)
            continue;
        out += " " + std::string(n.key) + "=";
        out += n.wide ? hex_number(value)
                      : bound_number(static_cast<uint32_t>(value), type ? type->bounds : Bounds::none);
    }
    if (!p.help.empty())
        out += " help=" + quoted(p.help);
    out += "\n";
}

// The runs of bytes in which the record differs from what its fields make.
void write_leftovers(std::string &out, const uint8_t *record, const Record &from_fields)
{
    for (std::size_t i = 0; i < from_fields.size();) {
        if (record[i] == from_fields[i]) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < from_fields.size() && record[end] != from_fields[end])
            ++end;
        out += "  bytes " + std::to_string(i) + " " + hex_digits(record + i, end - i) + "\n";
        i = end;
    }
}

void write_node(std::string &out, std::size_t index, const uint8_t *record)
{
    const NodeFields f = decode_record(record);
    out += "node " + std::to_string(index) + "\n";
    for (const TextField &t : kTexts) {
        if (!(f.*t.member).empty())
            out += "  " + std::string(t.key) + " " + quoted(f.*t.member) + "\n";
    }
    for (const NumberField &n : kNumbers) {
        if (const uint64_t value = n.get(f); value != 0)
            out +=
                "  " + std::string(n.key) + " " + (n.hex ? hex_number(value) : std::to_string(value)) + "\n";
    }
    const NodeFields zero;
    if (f.permissions != zero.permissions)
        out += "  permissions " + hex_digits(f.permissions.data(), f.permissions.size()) + "\n";
    if (f.reserved != zero.reserved)
        out += "  reserved " + hex_digits(f.reserved.data(), f.reserved.size()) + "\n";
    for (const ParamFields &p : f.params)
        write_param(out, p);
    for (const ChildRef &c : f.children)
        out += std::string(c.link ? "  link " : "  child ") + std::to_string(c.index) + "\n";
    write_leftovers(out, record, encode_record(f));
}

} // namespace

std::string write_node_layer(std::span<const uint8_t> image)
{
    const std::size_t nodes = image.size() / WEX_NODE_SIZE;
    std::string out = "# " + std::to_string(nodes) + " parse-tree nodes, every field that is set\n";
    for (std::size_t i = 0; i < nodes; ++i)
        write_node(out, i, image.data() + i * WEX_NODE_SIZE);
    return out;
}

} // namespace wex_grammar

namespace wex_grammar
{
namespace
{

std::optional<std::vector<uint8_t>> parse_hex_bytes(std::string_view word)
{
    if (word.empty() || word.size() % 2 != 0)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    for (std::size_t i = 0; i < word.size(); i += 2) {
        const int high = hex_digit(word[i]), low = hex_digit(word[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.push_back(static_cast<uint8_t>(high << 4 | low));
    }
    return bytes;
}

struct Leftover {
    std::size_t offset;
    std::vector<uint8_t> bytes;
};

struct Stanza {
    NodeFields fields;
    std::vector<Leftover> leftovers;
    Position at;
};

class NodeReader
{
  public:
    NodeReader(const std::string &file, Diagnostics &diagnostics) : file_(file), diagnostics_(diagnostics) {}

    std::optional<CompiledImage> run(std::string_view text)
    {
        tokenize_lines(text, file_, diagnostics_,
                       [this](std::span<const Token> tokens) { read_line(TokenCursor(tokens)); });
        check_children();
        if (diagnostics_.any())
            return std::nullopt;
        return assemble();
    }

  private:
    void error(Position at, const std::string &message) { diagnostics_.error(file_, at, message); }

    void read_line(TokenCursor line)
    {
        const Token &key = *line.take();
        if (key.kind != Token::Kind::word) {
            error(key.at, "a line of the node layer begins with a field name");
            return;
        }
        if (key.value == "node") {
            start_node(key, line);
            return;
        }
        if (stanzas_.empty()) {
            error(key.at, "'" + key.value + "' before the first 'node'");
            return;
        }
        if (read_field(key, line) && !line.done())
            error(line.peek()->at,
                  "unexpected '" + line.peek()->value + "' after the value of '" + key.value + "'");
    }

    void start_node(const Token &key, TokenCursor &line)
    {
        const Token *number = line.take();
        const std::size_t expected = stanzas_.size();
        const std::optional<uint64_t> index = number ? parse_number(number->value, 4) : std::nullopt;
        if (!index || *index != expected)
            error(number ? number->at : key.at,
                  "expected 'node " + std::to_string(expected) + "': nodes are numbered from 0 in order");
        if (expected == kMaxImageNodes) {
            error(key.at, "an image holds at most " + std::to_string(kMaxImageNodes) + " nodes");
            return;
        }
        stanzas_.push_back(Stanza{{}, {}, key.at});
        if (index && !line.done())
            error(line.peek()->at, "unexpected '" + line.peek()->value + "' after the node's number");
    }

    // false when the field's value was wrong (already reported).
    bool read_field(const Token &key, TokenCursor &line)
    {
        Stanza &node = stanzas_.back();
        for (const TextField &t : kTexts) {
            if (key.value == t.key)
                return read_text(key, line, t.width, node.fields.*t.member);
        }
        for (const NumberField &n : kNumbers) {
            if (key.value == n.key) {
                const std::optional<uint64_t> value = read_number(key, line, n.width);
                if (value)
                    n.set(node.fields, *value);
                return value.has_value();
            }
        }
        if (key.value == "permissions")
            return read_fixed_bytes(key, line, node.fields.permissions);
        if (key.value == "reserved")
            return read_fixed_bytes(key, line, node.fields.reserved);
        if (key.value == "param")
            return read_param(key, line, node.fields);
        if (key.value == "child" || key.value == "link")
            return read_child(key, line, node.fields);
        if (key.value == "bytes")
            return read_leftover(key, line, node);
        error(key.at, "unknown field '" + key.value + "'");
        return false;
    }

    const Token *value_of(const Token &key, TokenCursor &line, Token::Kind kind, const char *what)
    {
        const Token *value = line.take();
        if (!value || value->kind != kind) {
            error(value ? value->at : key.at, "'" + key.value + "' takes " + what);
            return nullptr;
        }
        return value;
    }

    bool read_text(const Token &key, TokenCursor &line, std::size_t width, std::string &into)
    {
        const Token *value = value_of(key, line, Token::Kind::text, "a quoted text");
        if (!value)
            return false;
        if (value->value.size() >= width || value->value.find('\0') != std::string::npos) {
            error(value->at, "'" + key.value + "' holds at most " + std::to_string(width - 1) +
                                 " characters and no NUL; this text has " +
                                 std::to_string(value->value.size()));
            return false;
        }
        into = value->value;
        return true;
    }

    std::optional<uint64_t> read_number(const Token &key, TokenCursor &line, int width)
    {
        const Token *value = value_of(key, line, Token::Kind::word, "a number");
        if (!value)
            return std::nullopt;
        const std::optional<uint64_t> number = parse_number(value->value, width);
        if (!number)
            error(value->at, "'" + key.value + "' takes a " + std::to_string(8 * width) +
                                 "-bit number, decimal or 0x hexadecimal; not '" + value->value + "'");
        return number;
    }

    template <std::size_t W>
    bool read_fixed_bytes(const Token &key, TokenCursor &line, std::array<uint8_t, W> &into)
    {
        const Token *value = value_of(key, line, Token::Kind::word, "hexadecimal digits");
        if (!value)
            return false;
        const std::optional<std::vector<uint8_t>> bytes = parse_hex_bytes(value->value);
        if (!bytes || bytes->size() != W) {
            error(value->at, "'" + key.value + "' takes " + std::to_string(2 * W) + " hexadecimal digits");
            return false;
        }
        std::copy(bytes->begin(), bytes->end(), into.begin());
        return true;
    }

    bool read_param(const Token &key, TokenCursor &line, NodeFields &fields)
    {
        const Token *type = value_of(key, line, Token::Kind::word, "a TYPE_* name or code");
        if (!type)
            return false;
        ParamFields param;
        if (const ParamType *known = type_by_name(type->value)) {
            param.type = known->code;
        } else if (const std::optional<uint64_t> code = parse_number(type->value, 4)) {
            param.type = static_cast<uint32_t>(*code);
        } else {
            error(type->at, "unknown parameter type '" + type->value + "'");
            return false;
        }
        while (!line.done()) {
            if (!read_param_setting(line, param))
                return false;
        }
        if (fields.params.size() == WEX_NODE_MAX_PARAMS) {
            error(key.at, "a node holds at most " + std::to_string(WEX_NODE_MAX_PARAMS) + " parameters");
            return false;
        }
        fields.params.push_back(param);
        return true;
    }

    // KEY=VALUE of a param line.
    bool read_param_setting(TokenCursor &line, ParamFields &param)
    {
        const Token &key = *line.take();
        const Token *equals = line.take();
        if (key.kind != Token::Kind::word || !equals || equals->value != "=") {
            error(key.at,
                  "a parameter's settings are KEY=VALUE: mask, min, max, subtype, extra32, extra64, help");
            return false;
        }
        if (key.value == "help")
            return read_text(key, line, kParamHelpWidth, param.help);
        for (const ParamNumber &n : kParamNumbers) {
            if (key.value != n.key)
                continue;
            const std::optional<uint64_t> value = read_number(key, line, n.wide ? 8 : 4);
            if (value && n.wide)
                param.*n.wide_member = *value;
            else if (value)
                param.*n.member = static_cast<uint32_t>(*value);
            return value.has_value();
        }
        error(key.at, "unknown parameter setting '" + key.value + "'");
        return false;
    }

    bool read_child(const Token &key, TokenCursor &line, NodeFields &fields)
    {
        const std::optional<uint64_t> index = read_number(key, line, 2);
        if (!index)
            return false;
        if (fields.children.size() == WEX_NODE_MAX_CHILDREN) {
            error(key.at, "a node holds at most " + std::to_string(WEX_NODE_MAX_CHILDREN) + " children");
            return false;
        }
        fields.children.push_back({static_cast<uint16_t>(*index), key.value == "link"});
        child_at_.push_back({static_cast<uint16_t>(*index), key.at});
        return true;
    }

    bool read_leftover(const Token &key, TokenCursor &line, Stanza &node)
    {
        const std::optional<uint64_t> offset = read_number(key, line, 2);
        if (!offset)
            return false;
        const Token *value = value_of(key, line, Token::Kind::word, "an offset and hexadecimal digits");
        const std::optional<std::vector<uint8_t>> bytes =
            value ? parse_hex_bytes(value->value) : std::nullopt;
        if (value && !bytes)
            error(value->at, "'bytes' takes an even number of hexadecimal digits");
        if (!bytes)
            return false;
        if (*offset + bytes->size() > WEX_NODE_SIZE) {
            error(key.at, "'bytes' runs past the " + std::to_string(WEX_NODE_SIZE) + "-byte record");
            return false;
        }
        node.leftovers.push_back({static_cast<std::size_t>(*offset), *bytes});
        return true;
    }

    // Child indexes name nodes of this image; known only once all are read.
    void check_children()
    {
        for (const auto &[index, at] : child_at_) {
            if (index >= stanzas_.size())
                error(at, "child " + std::to_string(index) + " is not a node of this image (it has " +
                              std::to_string(stanzas_.size()) + ")");
        }
    }

    CompiledImage assemble() const
    {
        CompiledImage image;
        image.bytes.reserve(stanzas_.size() * WEX_NODE_SIZE);
        for (const Stanza &node : stanzas_) {
            Record record = encode_record(node.fields);
            for (const Leftover &left : node.leftovers)
                std::copy(left.bytes.begin(), left.bytes.end(),
                          record.begin() + static_cast<long>(left.offset));
            image.bytes.insert(image.bytes.end(), record.begin(), record.end());
            image.node_at.push_back({file_, node.at});
        }
        return image;
    }

    const std::string &file_;
    Diagnostics &diagnostics_;
    std::vector<Stanza> stanzas_;
    std::vector<std::pair<uint16_t, Position>> child_at_;
};

} // namespace

std::optional<CompiledImage> read_node_layer(std::string_view text, const std::string &file,
                                             Diagnostics &diagnostics)
{
    return NodeReader(file, diagnostics).run(text);
}

} // namespace wex_grammar
