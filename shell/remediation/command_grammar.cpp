#include "command_grammar.h"

#include "matcher.h"
#include "node_record.h"

#include <cstring>

namespace wex_remediation
{
namespace
{

// Stands in a setting for the value it leaves out.
constexpr std::string_view kValueMark = "\x01";

// Every node from which an ordered command can be reached, links included:
// the ordered nodes and, walking parent edges back, all that lead to them.
std::vector<bool> nodes_reaching_ordered(const wex_shell::MainTree &tree)
{
    std::vector<std::vector<uint32_t>> parents(tree.size());
    std::vector<std::size_t> pending;
    std::vector<bool> reaches(tree.size(), false);
    for (std::size_t i = 0; i < tree.size(); ++i) {
        const parse_tree_node &node = tree.node(i);
        for (std::size_t c = 0; c < node.child_count; ++c)
            parents[node.children[c]].push_back(static_cast<uint32_t>(i));
        if (node.action & wex_grammar::kActionOrdered) {
            reaches[i] = true;
            pending.push_back(i);
        }
    }
    while (!pending.empty()) {
        const std::size_t at = pending.back();
        pending.pop_back();
        for (const uint32_t parent : parents[at])
            if (!reaches[parent]) {
                reaches[parent] = true;
                pending.push_back(parent);
            }
    }
    return reaches;
}

std::string setting_of(const wex_shell::MainTree &tree, const wex_shell::Match &match)
{
    std::string setting;
    bool has_value = false;
    for (const wex_shell::MatchedNode &matched : match.path) {
        const bool value = tree.node(matched.node).action & wex_grammar::kActionValue;
        has_value |= value;
        setting.append(setting.empty() ? "" : " ").append(value ? kValueMark : matched.text);
    }
    return has_value ? setting : std::string();
}

} // namespace

CommandGrammar::CommandGrammar(const wex_shell::MainTree &tree)
    : tree_(tree), reaches_ordered_(nodes_reaching_ordered(tree))
{
    const wex_shell::MatchResult configure = wex_shell::match_line(tree, 0, "configure terminal");
    if (const auto *match = std::get_if<wex_shell::Match>(&configure))
        config_mode_ = match->path.back().node;
}

Classified CommandGrammar::classify(std::size_t mode, std::string_view line) const
{
    wex_shell::MatchResult result = wex_shell::match_line(tree_, mode, line);
    if (const auto *error = std::get_if<wex_shell::MatchError>(&result))
        return error->message;
    const wex_shell::Match &match = std::get<wex_shell::Match>(result);
    const std::size_t terminal = match.path.back().node;
    const parse_tree_node &node = tree_.node(terminal);
    CommandInfo info;
    info.canonical = match.full_text;
    info.setting = setting_of(tree_, match);
    info.terminal = terminal;
    info.ordered = node.action & wex_grammar::kActionOrdered;
    if ((node.action & WEX_ACTION_SUBMODE) && !match.negated)
        info.submode = terminal;
    info.priority = node.asciigen_priority;
    return info;
}

bool CommandGrammar::may_be_ordered(std::size_t mode, std::string_view line) const
{
    if (!reaches_ordered_[mode])
        return false;
    const std::string_view word = line.substr(0, line.find_first_of(" \t"));
    const parse_tree_node &node = tree_.node(mode);
    for (std::size_t c = 0; c < node.child_count; ++c) {
        const std::size_t child = node.children[c];
        const parse_tree_node &candidate = tree_.node(child);
        const bool may_match =
            candidate.param_count > 0 || (word.size() < sizeof candidate.Token &&
                                          std::strncmp(candidate.Token, word.data(), word.size()) == 0);
        if (may_match && reaches_ordered_[child])
            return true;
    }
    return false;
}

std::string CommandGrammar::negation(std::size_t mode, const CommandInfo &line) const
{
    const std::string_view canonical = line.canonical;
    const std::string undo =
        canonical.substr(0, 3) == "no " ? std::string(canonical.substr(3)) : "no " + line.canonical;
    return std::holds_alternative<CommandInfo>(classify(mode, undo)) ? undo : std::string();
}

} // namespace wex_remediation
