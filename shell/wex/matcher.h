// A typed command line matched against the main tree from a mode's node:
// word after word against the children of the node reached, keywords by a
// unique prefix, parameters by their type and bounds.
#ifndef WEX_SHELL_MATCHER_H
#define WEX_SHELL_MATCHER_H

#include "main_tree.h"
#include "typed_value.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace wex_shell
{

// One word of a line: where it stands and what it holds (a quoted word
// without its quotes).
struct Word {
    std::size_t column;
    std::string text;
};

// The words of line; a word in double quotes may hold blanks. A line with an
// unterminated quote ends its last word at the end of the line.
std::vector<Word> split_words(std::string_view line);

struct MatchedNode {
    std::size_t node;
    std::vector<TypedValue> values; // one per descriptor of a parameter node
    std::string text;               // its words as full_text holds them
};

struct Match {
    std::vector<MatchedNode> path; // the nodes from the mode's node down, in order
    bool negated = false;          // the line began with the "no" keyword
    std::string full_text;         // the line in full words: keywords unabbreviated
};

// Where a line went wrong and what is wrong there.
struct MatchError {
    std::size_t column;
    std::string message;
};

using MatchResult = std::variant<Match, MatchError>;
using WalkResult = std::variant<std::size_t, MatchError>; // the node reached, or where it went wrong

// Matches line from the node of the current mode. Only a match that reached
// a node completing a command is a Match.
MatchResult match_line(const MainTree &tree, std::size_t mode_node, std::string_view line);

// Matches the words of a line being typed, from the node of the current
// mode, without asking that they make a command: the node the last word
// reached (the mode's node for no words).
WalkResult walk_words(const MainTree &tree, std::size_t mode_node, std::string_view words);

// A node as help and errors name it: a keyword's token, a parameter's
// placeholder ("<VSAN>").
std::string name_of(const parse_tree_node &node);

// The error as the shell shows it: the line, a caret under the column, the
// message, each ending in a newline.
std::string describe_error(std::string_view line, const MatchError &error);

} // namespace wex_shell

#endif
