#include "image_builder.h"

#include <cstdio>
#include <cstring>

namespace wex_test
{

Tree::Tree(std::size_t count) : nodes(count)
{
    std::memset(nodes.data(), 0, count * sizeof(parse_tree_node));
}

void Tree::add_child(uint32_t parent, uint16_t child, bool link)
{
    parse_tree_node &p = nodes[parent];
    const unsigned position = p.child_count++;
    p.children[position] = child;
    if (link)
        p.childlist_mask[position / 8] |= static_cast<uint8_t>(1u << (position % 8));
}

Tree make_chain(std::size_t count)
{
    Tree image(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::snprintf(image[i].NodeName, sizeof image[i].NodeName, "n%zu", i);
        if (i + 1 < count)
            image.add_child(static_cast<uint16_t>(i), static_cast<uint16_t>(i + 1));
    }
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
