// The node layer of the grammar text: one stanza per node record, every
// field by name, and the record's remaining bytes where they are not zero,
// so that any image is written as text and compiled back byte for byte.
#ifndef WEX_GRAMMAR_NODE_LAYER_H
#define WEX_GRAMMAR_NODE_LAYER_H

#include "diagnostics.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wex_grammar
{

// The stanzas of a network-order image; a partial record at its end is
// left out.
std::string write_node_layer(std::span<const uint8_t> image);

// Where a node comes from: the stanza or the word that made it.
struct Origin {
    std::string file;
    Position at;
};

struct CompiledImage {
    std::vector<uint8_t> bytes;  // network order
    std::vector<Origin> node_at; // one for each node
};

// The image the stanzas of text describe, or nothing when diagnostics
// received errors (every one found, with its position in file).
std::optional<CompiledImage> read_node_layer(std::string_view text, const std::string &file,
                                             Diagnostics &diagnostics);

} // namespace wex_grammar

#endif
