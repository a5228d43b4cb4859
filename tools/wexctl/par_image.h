// Validation of a ".par" parse-tree image as stored, in network order,
// before any library walk touches it: the walks trust the image and end
// the process past their depth limit.
#ifndef WEXCTL_PAR_IMAGE_H
#define WEXCTL_PAR_IMAGE_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace wexctl
{

// The largest image: child indexes are 16 bits wide.
inline constexpr std::size_t kMaxImageNodes = 0x10000;

struct ImageCheck {
    std::vector<std::string> problems; // one line each, naming the node
    bool walkable = false;             // the whole image converts to host order safely
    uint32_t nodes = 0;
    std::vector<uint32_t> roots; // the nodes without a non-link parent
};

// Checks the image from the start node: whole nodes, counts, child
// indexes, one non-link parent per node, the depth of every non-link tree,
// and loops and depth following links (then the library's cycle_check on
// the image in host order).
// Checks the image from node start. When the whole image is walkable, it is
// left converted to host order, ready for the library's walks.
ImageCheck check_image(std::span<uint8_t> image, uint32_t start);

} // namespace wexctl

#endif
