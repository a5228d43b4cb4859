// Grammar texts to a .par image: one node-layer text, or any number of
// command-layer texts that together make one tree, checked as the
// library's walks need it.
#ifndef WEX_GRAMMAR_COMPILER_H
#define WEX_GRAMMAR_COMPILER_H

#include "diagnostics.h"
#include "node_layer.h"

#include <optional>
#include <string>
#include <vector>

namespace wex_grammar
{

struct Source {
    std::string name; // for messages
    std::string text;
};

// The image in network order, or nothing when diagnostics received errors.
std::optional<CompiledImage> compile(const std::vector<Source> &sources, Diagnostics &diagnostics);

} // namespace wex_grammar

#endif
