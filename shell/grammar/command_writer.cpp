#include "command_writer.h"

#include "command_layer.h"
#include "compiler.h"
#include "node_record.h"
#include "param_types.h"
#include "source_text.h"

#include <algorithm>
#include <map>
#include <set>

namespace wex_grammar
{
namespace
{

// Something the text must say, at the point where the compiler made it:
// a command, or a command said again to add a link to it.
struct Event {
    double key;
    std::vector<uint16_t> path; // the command's words, from its mode's first word
    std::vector<std::string> modes;
    std::optional<std::size_t> optional_from, optional_to; // the optional part, in path
    bool negatable = false;
};

class Writer
{
  public:
    explicit Writer(std::span<const uint8_t> image)
    {
        for (std::size_t at = 0; at + WEX_NODE_SIZE <= image.size(); at += WEX_NODE_SIZE)
            nodes_.push_back(decode_record(image.data() + at));
        parent_.assign(nodes_.size(), -1);
        for (std::size_t i = 0; i < nodes_.size(); ++i)
            for (const ChildRef &c : nodes_[i].children)
                if (!c.link && c.index < nodes_.size())
                    parent_[c.index] = static_cast<int>(i);
    }

    std::optional<std::string> run()
    {
        if (nodes_.empty() || nodes_[0].name != "exec" || !name_modes())
            return std::nullopt;
        collect_commands();
        index_commands();
        find_shared_help();
        if (!collect_links())
            return std::nullopt;
        std::stable_sort(events_.begin(), events_.end(),
                         [](const Event &a, const Event &b) { return a.key < b.key; });
        return text();
    }

  private:
    bool is_mode(std::size_t i) const { return i == 0 || (nodes_[i].action & WEX_ACTION_SUBMODE); }

    // The mode node a node's command runs in.
    std::size_t mode_of(std::size_t i) const
    {
        int m = parent_[i];
        while (m > 0 && !is_mode(static_cast<std::size_t>(m)))
            m = parent_[static_cast<std::size_t>(m)];
        return m < 0 ? 0 : static_cast<std::size_t>(m);
    }

    // Modes are named after their prompts; the root is exec.
    bool name_modes()
    {
        std::set<std::string> taken{"exec"};
        mode_names_[0] = "exec";
        for (std::size_t i = 1; i < nodes_.size(); ++i) {
            if (!is_mode(i))
                continue;
            const std::string &prompt = nodes_[i].submode_prompt;
            if (prompt.empty() || prompt.find_first_of(" \t\"#<>{}[]|()=,:") != std::string::npos ||
                !taken.insert(prompt).second)
                return false;
            mode_names_[i] = prompt;
        }
        return true;
    }

    std::vector<uint16_t> path_to(std::size_t node) const
    {
        std::vector<uint16_t> path;
        const std::size_t mode = mode_of(node);
        for (std::size_t n = node; n != mode && n != 0; n = static_cast<std::size_t>(parent_[n]))
            path.push_back(static_cast<uint16_t>(n));
        std::reverse(path.begin(), path.end());
        return path;
    }

    // One event per command; a command with an optional word is said once
    // with the command it extends.
    void collect_commands()
    {
        std::vector<Event> found;
        std::set<std::size_t> folded; // commands said with the one that extends them
        for (std::size_t t = 1; t < nodes_.size(); ++t) {
            if (!(nodes_[t].action & WEX_ACTION_TERMINAL) || parent_[t] < 0)
                continue;
            found.push_back(
                Event{static_cast<double>(t), path_to(t), {mode_names_.at(mode_of(t))}, {}, {}, false});
            fold_optional_part(found.back(), folded);
        }
        for (const Event &e : found)
            if (!folded.count(e.path.back()))
                events_.push_back(e);
    }

    void fold_optional_part(Event &event, std::set<std::size_t> &folded)
    {
        const auto &path = event.path;
        for (std::size_t i = 0; i < path.size(); ++i) {
            if (!nodes_[path[i]].optional)
                continue;
            for (std::size_t j = i; j < path.size(); ++j) {
                const std::optional<std::size_t> without = follow(mode_of(path.back()), path, i, j);
                if (without && (nodes_[*without].action & WEX_ACTION_TERMINAL)) {
                    event.optional_from = i;
                    event.optional_to = j;
                    event.key = static_cast<double>(std::min<std::size_t>(*without, path.back()));
                    folded.insert(*without);
                    return;
                }
            }
            return;
        }
    }

    // Where the path leads from mode without its words from to to.
    std::optional<std::size_t> follow(std::size_t mode, const std::vector<uint16_t> &path, std::size_t from,
                                      std::size_t to) const
    {
        std::size_t at = mode;
        for (std::size_t k = 0; k < path.size(); ++k) {
            if (k >= from && k <= to)
                continue;
            const NodeFields &want = nodes_[path[k]];
            const auto child =
                std::find_if(nodes_[at].children.begin(), nodes_[at].children.end(), [&](const ChildRef &c) {
                    const NodeFields &n = nodes_[c.index];
                    return !c.link && n.token == want.token && n.name == want.name;
                });
            if (child == nodes_[at].children.end())
                return std::nullopt;
            at = child->index;
        }
        return at;
    }

    // Which event makes each node first, and the first command through
    // each first word: worked out once the commands are known.
    void index_commands()
    {
        made_by_.assign(nodes_.size(), static_cast<double>(nodes_.size()));
        for (std::size_t i = 0; i < events_.size(); ++i) {
            const Event &e = events_[i];
            for (const uint16_t n : e.path)
                made_by_[n] = std::min(made_by_[n], e.key);
            const auto [first, added] = first_through_.emplace(e.path.front(), i);
            if (!added && e.key < events_[first->second].key)
                first->second = i;
        }
    }

    double made_by(std::size_t n) const { return made_by_[n]; }

    // The command that made node n, by its place in events_.
    std::optional<std::size_t> event_made(std::size_t n) const
    {
        for (std::size_t i = 0; i < events_.size(); ++i)
            if (events_[i].key == made_by_[n])
                return i;
        return std::nullopt;
    }

    // The first command through node x, by its place in events_.
    std::optional<std::size_t> command_through(std::size_t x) const
    {
        const auto found = first_through_.find(x);
        return found == first_through_.end() ? std::nullopt : std::optional(found->second);
    }

    // Links in the modes (commands of several modes) and under their "no"
    // keywords (negatable commands), each said again where it was added.
    bool collect_links()
    {
        std::vector<Event> links;
        for (std::size_t m = 0; m < nodes_.size(); ++m) {
            if (!is_mode(m))
                continue;
            double after = static_cast<double>(m);
            for (const ChildRef &c : nodes_[m].children) {
                if (!c.link) {
                    after = std::max(after, made_by(c.index));
                    if (is_no_node(c.index) && !collect_no_links(c.index, m, links))
                        return false;
                    continue;
                }
                const std::optional<std::size_t> command = command_through(c.index);
                if (!command || mode_of(c.index) == m)
                    return false;
                Event again = events_[*command];
                again.modes.push_back(mode_names_.at(m));
                after = std::max(after, again.key) + 0.001;
                again.key = after;
                links.push_back(again);
            }
        }
        events_.insert(events_.end(), links.begin(), links.end());
        return true;
    }

    bool is_no_node(std::size_t n) const
    {
        const NodeFields &f = nodes_[n];
        return f.token == "no" && f.help == kNegationHelp && !f.children.empty() &&
               std::all_of(f.children.begin(), f.children.end(), [](const ChildRef &c) { return c.link; });
    }

    // The command that made the "no" node is negatable; each later link
    // comes from the command it reaches, said again as negatable.
    bool collect_no_links(std::size_t no, std::size_t mode, std::vector<Event> &links)
    {
        double after = 0;
        for (std::size_t k = 0; k < nodes_[no].children.size(); ++k) {
            const std::size_t x = nodes_[no].children[k].index;
            const std::optional<std::size_t> command = command_through(x);
            if (!command || mode_of(x) != mode)
                return false;
            if (k == 0) {
                // The "no" node came right after the nodes of the command
                // that made it: that command, through x, is the negatable one.
                const std::optional<std::size_t> maker = event_made(no - 1);
                if (!maker || events_[*maker].path.front() != x)
                    return false;
                events_[*maker].negatable = true;
                after = events_[*maker].key;
                continue;
            }
            Event again = events_[*command];
            again.negatable = true;
            after = std::max(after, again.key) + 0.001;
            again.key = after;
            links.push_back(again);
        }
        return true;
    }

    std::string word_text(std::size_t n) const
    {
        const NodeFields &f = nodes_[n];
        if (!f.token.empty())
            return f.token;
        std::string text;
        std::size_t name_at = 0;
        for (const ParamFields &p : f.params) {
            const std::size_t open = f.name.find('<', name_at), close = f.name.find('>', name_at);
            const std::string name = open == std::string::npos || close == std::string::npos
                                         ? "P"
                                         : f.name.substr(open + 1, close - open - 1);
            name_at = close == std::string::npos ? f.name.size() : close + 1;
            text += "<" + parameter_text(name, p) + " " + quoted(p.help) + ">";
        }
        return text;
    }

    static std::string parameter_text(const std::string &name, const ParamFields &p)
    {
        const Subtype *subtype = subtype_by_placeholder(name);
        if (subtype && static_cast<uint32_t>(subtype->code) == p.subtype && subtype->type == p.type)
            return name;
        const ParamType *type = type_by_code(p.type);
        const std::string head = name + ":" + (type ? std::string(type->word) : "?");
        const std::string bounds = type ? bounds_text(p, type->bounds) : "";
        return bounds.empty() ? head : head + " " + bounds;
    }

    std::string help_key(std::size_t n) const
    {
        const NodeFields &f = nodes_[n];
        if (!f.token.empty())
            return f.token;
        const std::size_t close = f.name.find('>');
        return f.name.size() > 1 && close != std::string::npos ? f.name.substr(1, close - 1) : f.name;
    }

    // A keyword whose help is the same wherever it stands gets it once for
    // the whole text; a parameter's node takes the help written with the
    // parameter unless its command says otherwise.
    void find_shared_help()
    {
        std::map<std::string, std::set<std::string>> helps;
        for (std::size_t n = 1; n < nodes_.size(); ++n)
            if (!nodes_[n].token.empty())
                helps[nodes_[n].token].insert(nodes_[n].help);
        for (const auto &[key, texts] : helps)
            if (texts.size() == 1)
                shared_help_[key] = *texts.begin();
    }

    bool needs_own_help(std::size_t n) const
    {
        const NodeFields &f = nodes_[n];
        if (f.token.empty())
            return f.params.empty() || f.params.front().help != f.help;
        return !shared_help_.count(f.token);
    }

    std::string declaration(const Event &e) const
    {
        std::string out = "command ";
        for (std::size_t m = 0; m < e.modes.size(); ++m)
            out += (m ? "," : "") + e.modes[m];
        out += ":";
        for (std::size_t i = 0; i < e.path.size(); ++i) {
            out += " ";
            if (e.optional_from == i)
                out += "[";
            out += word_text(e.path[i]);
            if (e.optional_to == i)
                out += "]";
        }
        out += "\n";
        for (const uint16_t n : e.path)
            if (needs_own_help(n))
                out += "    help " + help_key(n) + " " + quoted(nodes_[n].help) + "\n";
        out += attributes(nodes_[e.path.back()]);
        if (e.negatable)
            out += "    negatable\n";
        out += value_attribute(e);
        return out;
    }

    // Which word of the command holds its value, when one does.
    std::string value_attribute(const Event &e) const
    {
        const auto value = std::find_if(e.path.begin(), e.path.end(),
                                        [&](uint16_t n) { return nodes_[n].action & kActionValue; });
        if (value == e.path.end())
            return "";
        if (value + 1 == e.path.end())
            return "    single-valued\n";
        return "    single-valued " + help_key(*value) + "\n";
    }

    std::string attributes(const NodeFields &f) const
    {
        std::string out;
        const auto line = [&](const char *key, const std::string &value) {
            out += "    " + std::string(key) + " " + value + "\n";
        };
        if (f.action & kActionOrdered)
            out += "    ordered\n";
        if (f.action & WEX_ACTION_SUBMODE)
            out += "    enters " + f.submode_prompt + " " + quoted(f.submode_prompt) + " " +
                   quoted(f.submode_help) + "\n";
        if (!f.function.empty())
            line("function", quoted(f.function));
        if (!f.generator.empty())
            line("generator", quoted(f.generator));
        if (f.command_id)
            line("command-id", std::to_string(f.command_id));
        if (f.bcp_msg_type)
            line("bcp-msg-type", std::to_string(f.bcp_msg_type));
        if (f.internal_function)
            line("internal-function", std::to_string(f.internal_function));
        if (f.priority)
            line("priority", std::to_string(f.priority));
        if (f.interface_mask)
            line("interface-mask", hex_number(f.interface_mask));
        std::string bits;
        for (std::size_t b = 0; b < 128; ++b)
            if (f.permissions[b / 8] & (0x80u >> (b % 8)))
                bits += " " + std::to_string(b);
        if (!bits.empty())
            out += "    permissions" + bits + "\n";
        return out;
    }

    // The module of the nodes an event makes first; empty when it makes none.
    std::string module_of(const Event &e) const
    {
        for (const uint16_t n : e.path)
            if (made_by(n) == e.key)
                return nodes_[n].module;
        return "";
    }

    std::string text() const
    {
        std::string out = "# The commands of a parse tree, as declarations\n";
        std::map<std::string, uint32_t> tokens;
        for (const NodeFields &f : nodes_)
            if (f.token_id != 0 && !f.token.empty())
                tokens[f.token] = f.token_id;
        for (const auto &[word, id] : tokens)
            out += "token " + word + " " + std::to_string(id) + "\n";
        for (const auto &[word, help] : shared_help_)
            out += "help " + word + " " + quoted(help) + "\n";
        std::string module;
        for (const Event &e : events_) {
            const std::string m = module_of(e);
            if (!m.empty() && m != module) {
                out += "module " + quoted(m) + "\n";
                module = m;
            }
            out += declaration(e);
        }
        return out;
    }

    std::vector<NodeFields> nodes_;
    std::vector<int> parent_;
    std::map<std::size_t, std::string> mode_names_;
    std::vector<Event> events_;
    std::vector<double> made_by_;
    std::map<std::size_t, std::size_t> first_through_;
    std::map<std::string, std::string> shared_help_; // by word, for the whole text
};

} // namespace

std::optional<std::string> write_command_layer(std::span<const uint8_t> image)
{
    std::optional<std::string> text = Writer(image).run();
    if (!text)
        return std::nullopt;
    Diagnostics diagnostics;
    const std::optional<CompiledImage> again = compile({{"decompiled", *text}}, diagnostics);
    if (!again || !std::equal(again->bytes.begin(), again->bytes.end(), image.begin(), image.end()))
        return std::nullopt;
    return text;
}

} // namespace wex_grammar
