// A parse tree drawn for Graphviz: keywords as boxes, parameters as
// ellipses with their types, submode nodes bold with their prompt, nodes
// that complete a command doubled, link children as dashed edges.
#ifndef WEX_GRAMMAR_GRAPH_H
#define WEX_GRAMMAR_GRAPH_H

#include <cstdint>
#include <span>
#include <string>

namespace wex_grammar
{

// The DOT text of the tree of a checked network-order image from node
// from, depth levels of ordinary children below it.
std::string write_graph(std::span<const uint8_t> image, uint32_t from, uint32_t depth);

} // namespace wex_grammar

#endif
