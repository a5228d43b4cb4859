// The parse tree that a set of command files describes: the exec root,
// each mode's commands under the node that enters it, leading words
// shared, and commands of several modes (and their "no" forms) reached
// through link children instead of copies.
#ifndef WEX_GRAMMAR_TREE_BUILDER_H
#define WEX_GRAMMAR_TREE_BUILDER_H

#include "command_layer.h"
#include "diagnostics.h"
#include "node_layer.h"

#include <optional>
#include <vector>

namespace wex_grammar
{

// The image, or nothing when diagnostics received errors.
std::optional<CompiledImage> build_tree(const std::vector<CommandFile> &files, Diagnostics &diagnostics);

} // namespace wex_grammar

#endif
