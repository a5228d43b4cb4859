// One parse tree from several: the base grammar and each feature's, as
// wexd makes the main tree. Nodes that stand at the same place (the same
// keyword, or the same parameters, under the same parent) are one node;
// what only one image has is added after what the others have.
#ifndef WEX_GRAMMAR_IMAGE_MERGE_H
#define WEX_GRAMMAR_IMAGE_MERGE_H

#include "diagnostics.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wex_grammar
{

struct NamedImage {
    std::string name;               // for messages
    std::span<const uint8_t> bytes; // network order, checked
};

// The merged image in network order, or nothing when diagnostics received
// errors: two images that give one node different fields, or a result the
// walks could not take.
std::optional<std::vector<uint8_t>> merge_images(const std::vector<NamedImage> &images,
                                                 Diagnostics &diagnostics);

} // namespace wex_grammar

#endif
