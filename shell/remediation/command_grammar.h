// What the main tree says about one configuration line: the command it is,
// in full words, and how lines of that command are compared and undone.
#ifndef WEX_REMEDIATION_COMMAND_GRAMMAR_H
#define WEX_REMEDIATION_COMMAND_GRAMMAR_H

#include "main_tree.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace wex_remediation
{

struct CommandInfo {
    std::string canonical;              // the line in full words
    std::string setting;                // canonical with its value left out; empty when it has none
    std::size_t terminal = 0;           // the node that completes the command
    bool ordered = false;               // its lines in one block form a list whose order matters
    std::optional<std::size_t> submode; // the mode the lines under it belong to
    uint16_t priority = 0;              // its ascii-generation priority
};

// A line's command, or why no command of the mode matches it.
using Classified = std::variant<CommandInfo, std::string>;

class CommandGrammar
{
  public:
    explicit CommandGrammar(const wex_shell::MainTree &tree);

    // The node of configuration mode, where top-level lines are matched;
    // nothing when the tree has no "configure terminal".
    std::optional<std::size_t> config_mode() const { return config_mode_; }

    Classified classify(std::size_t mode, std::string_view line) const;

    // Whether a line of mode may be an ordered command, or hold one in its
    // block, judged from its first word alone: a quick answer that is
    // never false for a line that is one.
    bool may_be_ordered(std::size_t mode, std::string_view line) const;

    // The command that removes a line of mode ("no LINE", or LINE without
    // its "no"); empty when the grammar has no such command.
    std::string negation(std::size_t mode, const CommandInfo &line) const;

  private:
    const wex_shell::MainTree &tree_;
    std::optional<std::size_t> config_mode_;
    std::vector<bool> reaches_ordered_; // by node: an ordered command lies at or below it
};

} // namespace wex_remediation

#endif
