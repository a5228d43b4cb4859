// Validation of a ".par" parse-tree image as stored, in network order,
// before any library walk touches it: the walks trust the image and end
// the process past their depth limit.
#ifndef WEXCTL_PAR_IMAGE_H
#define WEXCTL_PAR_IMAGE_H

#include <cstdint>
#include <string>
#include <vector>

namespace wexctl
{

struct ImageCheck {
    std::vector<std::string> problems; // one line each, naming the node
    bool walkable = false;             // the conversion and dump walks are safe from the start node
    uint32_t nodes = 0;
};

// Checks the image from the start node: whole nodes, counts, child
// indexes, one non-link parent per node, the non-link tree's depth, and
// link loops and depth following links (the library's cycle_check, where
// the number of paths keeps it affordable).
ImageCheck check_image(const std::vector<uint8_t> &image, uint32_t start);

} // namespace wexctl

#endif
