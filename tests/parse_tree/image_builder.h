// Parse-tree images for tests and benchmarks, built in host order.
#ifndef WEX_TEST_IMAGE_BUILDER_H
#define WEX_TEST_IMAGE_BUILDER_H

#include <wex/parse_tree.h>

#include <cstdint>
#include <vector>

namespace wex_test
{

struct Tree {
    std::vector<parse_tree_node> nodes;

    explicit Tree(std::size_t count);
    uint8_t *bytes() { return reinterpret_cast<uint8_t *>(nodes.data()); }
    parse_tree_node &operator[](std::size_t i) { return nodes[i]; }

    // Appends child to parent's children, as a link when link is true.
    Tree &add_child(uint32_t parent, uint16_t child, bool link = false);
    // The image as a .par file holds it: child counts and children in
    // network order (the only numbers these trees set).
    std::vector<uint8_t> network_order() const;
};

// Nodes "n0" .. "n<count - 1>", with no children yet.
Tree make_named(std::size_t count);

// Nodes n0 .. n<count - 1>, each the only (ordinary) child of the one before.
Tree make_chain(std::size_t count);

// Nodes "node0" .. count - 1, each node i > 0 an ordinary child of node
// (i - 1) / 8: a wide, shallow tree the size of a main tree.
Tree make_eight_way(std::size_t count);

} // namespace wex_test

#endif
