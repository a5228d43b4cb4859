// Access to the node records of a parse-tree image by byte offset. An image
// may sit at any address (a message payload, a file buffer), so fields are
// read and written with memcpy rather than through a struct pointer.
#ifndef WEX_PARSE_TREE_NODE_ACCESS_H
#define WEX_PARSE_TREE_NODE_ACCESS_H

#include <wex/parse_tree.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace wex::tree
{

template <typename T> inline T load(const uint8_t *p) noexcept
{
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <typename T> inline void store(uint8_t *p, T v) noexcept
{
    std::memcpy(p, &v, sizeof v);
}

inline constexpr std::size_t kOffOptional = offsetof(parse_tree_node, optional);
inline constexpr std::size_t kOffBcpMsgType = offsetof(parse_tree_node, bcp_msg_type);
inline constexpr std::size_t kOffAction = offsetof(parse_tree_node, action);
inline constexpr std::size_t kOffTokenId = offsetof(parse_tree_node, token_id);
inline constexpr std::size_t kOffCommandId = offsetof(parse_tree_node, command_id);
inline constexpr std::size_t kOffParams = offsetof(parse_tree_node, params);
inline constexpr std::size_t kOffInternalFuncId = offsetof(parse_tree_node, internal_func_id);
inline constexpr std::size_t kOffParamCount = offsetof(parse_tree_node, param_count);
inline constexpr std::size_t kOffAsciigenPriority = offsetof(parse_tree_node, asciigen_priority);
inline constexpr std::size_t kOffChildCount = offsetof(parse_tree_node, child_count);
inline constexpr std::size_t kOffChildren = offsetof(parse_tree_node, children);
inline constexpr std::size_t kOffChildlistMask = offsetof(parse_tree_node, childlist_mask);
inline constexpr std::size_t kOffInterfaceMask = offsetof(parse_tree_node, interface_mask);
inline constexpr std::size_t kOffNodeName = offsetof(parse_tree_node, NodeName);

inline const uint8_t *node_at(const uint8_t *image, uint32_t index) noexcept
{
    return image + static_cast<std::size_t>(index) * WEX_NODE_SIZE;
}

inline uint8_t *node_at(uint8_t *image, uint32_t index) noexcept
{
    return image + static_cast<std::size_t>(index) * WEX_NODE_SIZE;
}

// Counts as the walks use them. A count above its array's length belongs to a
// malformed image; clamping it keeps every walk inside the node record.
inline unsigned param_count(const uint8_t *node) noexcept
{
    return std::min<unsigned>(load<uint16_t>(node + kOffParamCount), WEX_NODE_MAX_PARAMS);
}

inline unsigned child_count(const uint8_t *node) noexcept
{
    return std::min<unsigned>(load<uint16_t>(node + kOffChildCount), WEX_NODE_MAX_CHILDREN);
}

inline uint16_t child_index(const uint8_t *node, unsigned position) noexcept
{
    return load<uint16_t>(node + kOffChildren + 2 * position);
}

// The link rule is swapbits(mask[i / 8]) & (0x80 >> (i % 8)); reversing the
// byte and testing from the top is the same as testing bit i % 8 from the
// bottom, which the walks do without a call per child.
inline bool child_is_link(const uint8_t *node, unsigned position) noexcept
{
    return (node[kOffChildlistMask + position / 8] >> (position % 8)) & 1u;
}

} // namespace wex::tree

#endif
