// The commands that turn a running configuration into a wanted one, worked
// out from the main tree: which words of a line are keywords and which are
// values, which commands enter a submode, which can be undone, which make
// ordered lists, and in what order their features depend on each other.
#ifndef WEX_REMEDIATION_REMEDIATION_H
#define WEX_REMEDIATION_REMEDIATION_H

#include "command_grammar.h"

#include <string>
#include <string_view>
#include <vector>

namespace wex_remediation
{

// A line the engine cannot turn into commands.
struct Problem {
    enum class Side { running, wanted };
    Side side;
    uint32_t line; // its number in its text
    std::string text;
    std::string why;
};

// What to do with such lines.
enum class OnProblem {
    refuse, // no command at all, every problem said
    skip,   // the commands for the rest, every line left out said
};

struct Remediation {
    std::vector<std::string> commands; // from configuration mode, in the order to run them
    std::vector<Problem> problems;     // why it was refused, or what was left out
    bool refused = false;
};

Remediation remediate(const CommandGrammar &grammar, std::string_view running, std::string_view wanted,
                      OnProblem on_problem);

// "RUNNING:12: no command matches \"...\": why", with the names given to
// the two texts.
std::string describe(const Problem &problem, std::string_view running_name, std::string_view wanted_name);

} // namespace wex_remediation

#endif
