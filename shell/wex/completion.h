// What may come next at the cursor of a line being typed: the help that
// "?" shows and the completion that TAB makes. Only the words before the
// cursor count, matched from the current mode's node as a command would
// be; a parameter's value is never guessed.
#ifndef WEX_SHELL_COMPLETION_H
#define WEX_SHELL_COMPLETION_H

#include "main_tree.h"
#include "matcher.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wex_shell
{

struct Choice {
    std::string word; // a keyword, a parameter's placeholder ("<VSAN>"), or "<cr>"
    std::string help; // the keyword's help; for a parameter its help and what it takes
};

struct Choices {
    std::string partial;             // the word the cursor is in, "" after a blank
    std::vector<Choice> choices;     // keywords in order, then parameters, then "<cr>"
    std::optional<MatchError> error; // the words before the partial one match nothing
};

// The words that may come at the end of typed: every one after a blank,
// the keywords the partial word may become otherwise.
Choices choices_at(const MainTree &tree, std::size_t mode_node, std::string_view typed);

// The choices as "?" lists them, one a line, or the error placed under the
// word that went wrong.
std::string describe_choices(std::string_view typed, const Choices &choices);

struct Completion {
    std::string insert;                  // added at the cursor: the rest of a unique keyword and a blank
    std::vector<std::string> candidates; // what remains to choose from, when it is not one keyword
};

// What TAB makes of typed: the one keyword its partial word can become,
// or as much as all candidates share, and the candidates.
Completion complete_at(const MainTree &tree, std::size_t mode_node, std::string_view typed);

// The keywords that may end a command line as "wex -nRc" takes it: commands
// separated by " ; ", from exec mode, the earlier ones moving between modes
// as they would when run (a command that enters a submode, "exit", "end").
// The words are those the last, partial word may become.
std::vector<std::string> command_line_completions(const MainTree &tree, std::string_view line,
                                                  std::string_view separator);

} // namespace wex_shell

#endif
