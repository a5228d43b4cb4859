#include "image_builder.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace wex_test
{

Tree::Tree(std::size_t count) : nodes(count)
{
    std::memset(nodes.data(), 0, count * sizeof(parse_tree_node));
}

Tree &Tree::add_child(uint32_t parent, uint16_t child, bool link)
{
    parse_tree_node &p = nodes[parent];
    const unsigned position = p.child_count++;
    p.children[position] = child;
    if (link)
        p.childlist_mask[position / 8] |= static_cast<uint8_t>(1u << (position % 8));
    return *this;
}

std::vector<uint8_t> Tree::network_order() const
{
    std::vector<uint8_t> image(nodes.size() * sizeof(parse_tree_node));
    std::memcpy(image.data(), nodes.data(), image.size());
    const auto put_be16 = [&](std::size_t at, uint16_t value) {
        image[at] = static_cast<uint8_t>(value >> 8);
        image[at + 1] = static_cast<uint8_t>(value);
    };
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const std::size_t node = i * sizeof(parse_tree_node);
        put_be16(node + offsetof(parse_tree_node, child_count), nodes[i].child_count);
        for (std::size_t c = 0; c < WEX_NODE_MAX_CHILDREN; ++c)
            put_be16(node + offsetof(parse_tree_node, children) + 2 * c, nodes[i].children[c]);
    }
    return image;
}

Tree make_named(std::size_t count)
{
    Tree image(count);
    for (std::size_t i = 0; i < count; ++i)
        std::snprintf(image[i].NodeName, sizeof image[i].NodeName, "n%zu", i);
    return image;
}

Tree make_chain(std::size_t count)
{
    Tree image = make_named(count);
    for (std::size_t i = 0; i + 1 < count; ++i)
        image.add_child(static_cast<uint16_t>(i), static_cast<uint16_t>(i + 1));
    return image;
}

Tree make_eight_way(std::size_t count)
{
    Tree image(count);
    for (std::size_t i = 0; i < count; ++i)
        std::snprintf(image[i].NodeName, sizeof image[i].NodeName, "node%zu", i);
    for (std::size_t i = 1; i < count; ++i)
        image.add_child(static_cast<uint32_t>((i - 1) / 8), static_cast<uint16_t>(i));
    return image;
}

} // namespace wex_test
