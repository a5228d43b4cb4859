#include "tree_builder.h"

#include "image_check.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace wex_grammar
{
namespace
{

constexpr std::size_t kDeepest = WEX_TREE_MAX_DEPTH - 1; // levels below the root the walks reach

struct Node {
    NodeFields fields;
    Origin origin;
    std::size_t depth = 0;
};

std::string shown(const Word &word, const std::vector<std::string> &names)
{
    if (!word.keyword.empty())
        return word.keyword;
    std::string text;
    for (const std::string &name : names)
        text += "<" + name + ">";
    return text;
}

// The parameters without their help: what decides whether two words are one.
bool same_parameters(const std::vector<ParamFields> &a, const std::vector<ParamFields> &b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        ParamFields x = a[i], y = b[i];
        x.help = y.help = "";
        if (!(x == y))
            return false;
    }
    return true;
}

} // namespace

class TreeBuilder::Impl
{
  public:
    explicit Impl(Diagnostics &diagnostics) : diagnostics_(diagnostics)
    {
        Node root;
        root.fields.name = "exec";
        nodes_.push_back(root);
        modes_["exec"] = 0;
    }

    void add(const CommandFile &file, CommandDecl &&command)
    {
        if (modes_known(command))
            build(file, command);
        else
            waiting_.emplace_back(&file, std::move(command));
    }

    std::optional<CompiledImage> finish()
    {
        // A mode is known once the command that enters it is built, which
        // may come later in the files: build in rounds until none is left.
        while (!waiting_.empty()) {
            std::vector<std::pair<const CommandFile *, CommandDecl>> later;
            for (auto &[file, command] : waiting_) {
                if (modes_known(command))
                    build(*file, command);
                else
                    later.emplace_back(file, std::move(command));
            }
            if (later.size() == waiting_.size()) {
                report_unknown_modes(later);
                break;
            }
            waiting_ = std::move(later);
        }
        if (diagnostics_.any())
            return std::nullopt;
        return assemble();
    }

  private:
    void error(const std::string &file, Position at, const std::string &message)
    {
        diagnostics_.error(file, at, message);
    }

    bool modes_known(const CommandDecl &command) const
    {
        for (const std::string &mode : command.modes)
            if (!modes_.count(mode))
                return false;
        return true;
    }

    void report_unknown_modes(const std::vector<std::pair<const CommandFile *, CommandDecl>> &left)
    {
        for (const auto &[file, command] : left)
            for (const std::string &mode : command.modes)
                if (!modes_.count(mode))
                    error(file->name, command.at, "no command enters the mode '" + mode + "'");
    }

    void build(const CommandFile &file, const CommandDecl &command)
    {
        const std::size_t errors = diagnostics_.count();
        std::optional<uint16_t> first_word;
        for (const std::vector<Word> &form : command.forms) {
            uint16_t at = static_cast<uint16_t>(modes_.at(command.modes.front()));
            std::optional<uint16_t> value;
            for (std::size_t i = 0; i < form.size(); ++i) {
                const std::optional<uint16_t> child =
                    word_node(file, command.module, at, form[i], help_of(file, command, form[i]));
                if (!child)
                    return;
                at = *child;
                if (i == 0)
                    first_word = at;
                if (holds_value(command, form, i))
                    value = at;
            }
            finish(file, command, at);
            if (command.single_valued && !value) {
                error(file.name, command.at,
                      "'single-valued' names '" + *command.single_valued + "', no parameter of this command");
                return;
            }
            if (value)
                nodes_[*value].fields.action |= kActionValue;
        }
        if (diagnostics_.count() != errors || !first_word)
            return;
        for (std::size_t m = 1; m < command.modes.size(); ++m)
            add_link(file, command.at, static_cast<uint16_t>(modes_.at(command.modes[m])), *first_word);
        if (!command.negatable)
            return;
        for (const std::string &mode : command.modes) {
            if (const std::optional<uint16_t> no =
                    no_node(file, command, static_cast<uint16_t>(modes_.at(mode))))
                add_link(file, command.at, *no, *first_word);
        }
    }

    // The node of word under parent: the one already there, or a new one.
    std::optional<uint16_t> word_node(const CommandFile &file, const std::string &module, uint16_t parent,
                                      const Word &word, const std::string &help)
    {
        if (const std::optional<ChildRef> found = find_child(parent, word)) {
            const ChildRef c = *found;
            const NodeFields &child = nodes_[c.index].fields;
            if (c.link) {
                error(file.name, word.at,
                      "'" + shown(word, word.names) + "' here is a link to another mode's command");
                return std::nullopt;
            }
            if (!help.empty() && child.help != help) {
                error(file.name, word.at,
                      "'" + shown(word, word.names) + "' has the help \"" + child.help + "\" at " +
                          where(c.index) + "; here it is \"" + help + "\"");
                return std::nullopt;
            }
            return c.index;
        }
        if (help.empty()) {
            error(file.name, word.at,
                  "'" + shown(word, word.names) + "' has no help: add help " +
                      (word.keyword.empty() ? word.names.front() : word.keyword) + " \"...\"");
            return std::nullopt;
        }
        Node node;
        node.fields.name = shown(word, word.names);
        node.fields.token = word.keyword;
        node.fields.help = help;
        node.fields.module = module;
        node.fields.optional = word.optional ? 1 : 0;
        node.fields.params = word.params;
        for (ParamFields &p : node.fields.params)
            if (p.help.empty())
                p.help = help;
        if (const auto id = file.token_ids.find(word.keyword); id != file.token_ids.end())
            node.fields.token_id = id->second;
        node.origin = {file.name, word.at};
        node.depth = nodes_[parent].depth + 1;
        return add_child(file, word.at, parent, std::move(node), false);
    }

    // The child of parent that word names, a link included.
    std::optional<ChildRef> find_child(uint16_t parent, const Word &word) const
    {
        if (!word.keyword.empty()) {
            const auto found = keyword_children_.find(keyword_key(parent, word.keyword));
            return found == keyword_children_.end() ? std::nullopt : std::optional(found->second);
        }
        for (const ChildRef &c : nodes_[parent].fields.children) {
            const NodeFields &child = nodes_[c.index].fields;
            if (child.token.empty() && same_parameters(child.params, word.params))
                return c;
        }
        return std::nullopt;
    }

    static std::string keyword_key(uint16_t parent, const std::string &keyword)
    {
        return std::to_string(parent) + " " + keyword;
    }

    void add_to(uint16_t parent, ChildRef child)
    {
        nodes_[parent].fields.children.push_back(child);
        if (!nodes_[child.index].fields.token.empty())
            keyword_children_.emplace(keyword_key(parent, nodes_[child.index].fields.token), child);
    }

    std::string help_of(const CommandFile &file, const CommandDecl &command, const Word &word) const
    {
        const std::string &key = word.keyword.empty() ? word.names.front() : word.keyword;
        for (const auto &[name, text] : command.help)
            if (name == key)
                return text;
        if (word.keyword.empty() && !word.params.front().help.empty())
            return word.params.front().help;
        const auto text = file.help.find(key);
        return text == file.help.end() ? "" : text->second;
    }

    std::optional<uint16_t> add_child(const CommandFile &file, Position at, uint16_t parent, Node node,
                                      bool link)
    {
        if (nodes_[parent].fields.children.size() == WEX_NODE_MAX_CHILDREN) {
            error(file.name, at,
                  "'" + nodes_[parent].fields.name + "' would have more than " +
                      std::to_string(WEX_NODE_MAX_CHILDREN) + " children");
            return std::nullopt;
        }
        if (node.depth > kDeepest) {
            error(file.name, at,
                  "the command reaches " + std::to_string(node.depth) +
                      " levels below the root; the walks go " + std::to_string(kDeepest) + " deep");
            return std::nullopt;
        }
        if (nodes_.size() == kMaxImageNodes) {
            error(file.name, at, "an image holds at most " + std::to_string(kMaxImageNodes) + " nodes");
            return std::nullopt;
        }
        const auto index = static_cast<uint16_t>(nodes_.size());
        nodes_.push_back(std::move(node));
        add_to(parent, {index, link});
        return index;
    }

    // Whether word i of a form holds the value of a single-valued command:
    // the parameter the attribute names, or else the form's last word.
    static bool holds_value(const CommandDecl &command, const std::vector<Word> &form, std::size_t i)
    {
        if (!command.single_valued)
            return false;
        if (command.single_valued->empty())
            return i + 1 == form.size();
        const std::vector<std::string> &names = form[i].names;
        return std::find(names.begin(), names.end(), *command.single_valued) != names.end();
    }

    // The "no" keyword of a mode, made on first use.
    std::optional<uint16_t> no_node(const CommandFile &file, const CommandDecl &command, uint16_t mode)
    {
        return word_node(file, command.module, mode, Word{"no", {}, {}, false, command.at}, kNegationHelp);
    }

    void add_link(const CommandFile &file, Position at, uint16_t parent, uint16_t target)
    {
        const NodeFields &linked = nodes_[target].fields;
        const Word word{linked.token, linked.params, {}, false, at};
        if (const std::optional<ChildRef> same = find_child(parent, word)) {
            if (same->index != target)
                error(file.name, at,
                      "'" + nodes_[parent].fields.name + "' already has its own '" + linked.name + "'");
            return;
        }
        if (nodes_[parent].fields.children.size() == WEX_NODE_MAX_CHILDREN) {
            error(file.name, at,
                  "'" + nodes_[parent].fields.name + "' would have more than " +
                      std::to_string(WEX_NODE_MAX_CHILDREN) + " children");
            return;
        }
        add_to(parent, {target, true});
    }

    // The command's last word: it completes the command and carries its
    // attributes; a word that two commands complete must get the same ones.
    void finish(const CommandFile &file, const CommandDecl &command, uint16_t last)
    {
        NodeFields &f = nodes_[last].fields;
        f.action |= WEX_ACTION_TERMINAL | (command.ordered ? kActionOrdered : 0);
        set(file, command, last, "function", f.function, command.function);
        set(file, command, last, "generator", f.generator, command.generator);
        set(file, command, last, "command-id", f.command_id, command.command_id);
        set(file, command, last, "bcp-msg-type", f.bcp_msg_type, command.bcp_msg_type);
        set(file, command, last, "internal-function", f.internal_function, command.internal_function);
        set(file, command, last, "priority", f.priority, command.priority);
        set(file, command, last, "interface-mask", f.interface_mask, command.interface_mask);
        set(file, command, last, "permissions", f.permissions, command.permissions);
        if (command.enters)
            enter(file, command, last);
    }

    template <typename T>
    void set(const CommandFile &file, const CommandDecl &command, uint16_t node, const char *what, T &field,
             const std::optional<T> &value)
    {
        if (!value)
            return;
        if (field != T{} && field != *value) {
            error(file.name, command.at,
                  std::string("'") + what + "' of '" + nodes_[node].fields.name + "' differs from what " +
                      where(node) + " gives it");
            return;
        }
        field = *value;
    }

    void enter(const CommandFile &file, const CommandDecl &command, uint16_t node)
    {
        const Submode &submode = *command.enters;
        const auto known = modes_.find(submode.mode);
        if (known != modes_.end() && known->second != node) {
            error(file.name, command.enters_at,
                  "the mode '" + submode.mode + "' is already entered at " +
                      where(static_cast<uint16_t>(known->second)));
            return;
        }
        NodeFields &f = nodes_[node].fields;
        f.action |= WEX_ACTION_SUBMODE;
        f.submode_prompt = submode.prompt;
        f.submode_help = submode.help;
        modes_[submode.mode] = node;
    }

    std::string where(uint16_t node) const
    {
        const Origin &o = nodes_[node].origin;
        return o.file + ":" + std::to_string(o.at.line) + ":" + std::to_string(o.at.column);
    }

    CompiledImage assemble() const
    {
        CompiledImage image;
        image.bytes.reserve(nodes_.size() * WEX_NODE_SIZE);
        for (const Node &node : nodes_) {
            const Record record = encode_record(node.fields);
            image.bytes.insert(image.bytes.end(), record.begin(), record.end());
            image.node_at.push_back(node.origin);
        }
        return image;
    }

    Diagnostics &diagnostics_;
    std::vector<Node> nodes_;
    std::map<std::string, std::size_t> modes_;
    std::vector<std::pair<const CommandFile *, CommandDecl>> waiting_; // for modes not yet entered
    std::unordered_map<std::string, ChildRef> keyword_children_;       // by parent and keyword
};

TreeBuilder::TreeBuilder(Diagnostics &diagnostics) : impl_(std::make_unique<Impl>(diagnostics)) {}

TreeBuilder::~TreeBuilder() = default;

void TreeBuilder::add(const CommandFile &file, CommandDecl &&command)
{
    impl_->add(file, std::move(command));
}

std::optional<CompiledImage> TreeBuilder::finish()
{
    return impl_->finish();
}

} // namespace wex_grammar
