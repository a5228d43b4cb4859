#include "node_access.h"
#include "walk_limits.h"

#include <wex/parse_tree.h>

#include <cstdio>

namespace
{

using namespace wex::tree;

constexpr char kDepthMessage[] = "Fatal error: Tree exceeded maximum depth \n";

// Offsets inside a parameter descriptor.
constexpr std::size_t kDescType = offsetof(param_descriptor, type);
constexpr std::size_t kDescMask = offsetof(param_descriptor, mask);
constexpr std::size_t kDescMin = offsetof(param_descriptor, min);
constexpr std::size_t kDescMax = offsetof(param_descriptor, max);
constexpr std::size_t kDescSubtype = offsetof(param_descriptor, subtype);
constexpr std::size_t kDescExtra32 = offsetof(param_descriptor, extra32);
constexpr std::size_t kDescExtra64 = offsetof(param_descriptor, extra64);

// Byte reversal is its own inverse, so one set of swaps serves both ways.
inline void swap16_at(uint8_t *p) noexcept
{
    store(p, __builtin_bswap16(load<uint16_t>(p)));
}

inline void swap32_at(uint8_t *p) noexcept
{
    store(p, __builtin_bswap32(load<uint32_t>(p)));
}

inline void swap64_at(uint8_t *p) noexcept
{
    store(p, __builtin_bswap64(load<uint64_t>(p)));
}

// A stored mask with interface type 0 stands for types 18 and 19 as well;
// only the way into host order adds them.
inline void widen_legacy_mask_at(uint8_t *p) noexcept
{
    const uint64_t mask = load<uint64_t>(p);
    if (mask & 1u)
        store(p, mask | 0xC0000u);
}

void swap_descriptor(uint8_t *d) noexcept
{
    swap32_at(d + kDescType);
    swap64_at(d + kDescMask);
    swap32_at(d + kDescMin);
    swap32_at(d + kDescMax);
    swap32_at(d + kDescSubtype);
    swap32_at(d + kDescExtra32);
    swap64_at(d + kDescExtra64);
}

void ntoh_descriptor(uint8_t *d) noexcept
{
    swap_descriptor(d);
    widen_legacy_mask_at(d + kDescMask);
}

uint8_t *descriptor_at(uint8_t *node, unsigned i) noexcept
{
    return node + kOffParams + i * sizeof(param_descriptor);
}

// The fixed scalar fields of a node: everything but counts, children and
// descriptors.
void swap_node_scalars(uint8_t *node) noexcept
{
    swap32_at(node + kOffAction);
    swap32_at(node + kOffTokenId);
    swap32_at(node + kOffCommandId);
    swap16_at(node + kOffInternalFuncId);
    swap16_at(node + kOffBcpMsgType);
    swap16_at(node + kOffAsciigenPriority);
    swap16_at(node + kOffOptional);
    swap64_at(node + kOffInterfaceMask);
}

// The walks touch about six of a record's sixteen cache lines (bytes 328 to
// 575 for a node of up to four children, and the interface mask), at a
// stride the hardware does not follow; asking for the lines early lets the
// misses overlap instead of following one another. Probes 64 bytes apart
// reach every line of the range whatever the record's alignment. A prefetch
// never faults, so the address may lie past the image.
inline void prefetch_converted_lines(uintptr_t node) noexcept
{
    for (std::size_t offset : {kOffOptional, kOffOptional + 64, kOffOptional + 128, kOffOptional + 192,
                               kOffChildren + 7, kOffInterfaceMask})
        __builtin_prefetch(reinterpret_cast<const void *>(node + offset), 1);
}

// A generator flattens its tree in walk order, so the records a few places
// after this one are the next to be converted: they are asked for now.
constexpr uintptr_t kPrefetchAhead = 8 * WEX_NODE_SIZE;

uint8_t *node_for_walk(uint8_t *image, uint32_t index, int32_t depth) noexcept
{
    if (past_max_depth(depth))
        end_walk(stderr, kDepthMessage);
    uint8_t *node = node_at(image, index);
    prefetch_converted_lines(reinterpret_cast<uintptr_t>(node) + kPrefetchAhead);
    return node;
}

// Host to network: counts and child indices are read while still in host
// order and converted after their last use.
void hton_node(uint8_t *image, uint32_t index, int32_t depth) noexcept
{
    uint8_t *node = node_for_walk(image, index, depth);
    swap_node_scalars(node);
    const unsigned params = param_count(node);
    for (unsigned i = 0; i < params; ++i)
        swap_descriptor(descriptor_at(node, i));
    swap16_at(node + kOffParamCount);

    const unsigned children = child_count(node);
    for (unsigned i = 0; i < children; ++i) {
        if (!child_is_link(node, i))
            hton_node(image, child_index(node, i), depth + 1);
        swap16_at(node + kOffChildren + 2 * i);
    }
    swap16_at(node + kOffChildCount);
}

// Network to host: counts and child indices are converted first, then used.
void ntoh_node(uint8_t *image, uint32_t index, int32_t depth) noexcept
{
    uint8_t *node = node_for_walk(image, index, depth);
    swap_node_scalars(node);
    widen_legacy_mask_at(node + kOffInterfaceMask);
    swap16_at(node + kOffParamCount);
    const unsigned params = param_count(node);
    for (unsigned i = 0; i < params; ++i)
        ntoh_descriptor(descriptor_at(node, i));

    swap16_at(node + kOffChildCount);
    const unsigned children = child_count(node);
    for (unsigned i = 0; i < children; ++i) {
        swap16_at(node + kOffChildren + 2 * i);
        if (!child_is_link(node, i))
            ntoh_node(image, child_index(node, i), depth + 1);
    }
}

void swap_header(uint32_t *header) noexcept
{
    for (int i = 0; i < WEX_SUBTREE_HEADER_WORDS; ++i)
        header[i] = __builtin_bswap32(header[i]);
}

} // namespace

extern "C" {

WEX_API void hton_parameter(param_descriptor *p) noexcept
{
    swap_descriptor(reinterpret_cast<uint8_t *>(p));
}

WEX_API void ntoh_parameter(param_descriptor *p) noexcept
{
    ntoh_descriptor(reinterpret_cast<uint8_t *>(p));
}

WEX_API void hton_array_tree(uint8_t *image, uint32_t index, int32_t depth) noexcept
{
    if (image)
        hton_node(image, index, start_depth(depth));
}

WEX_API void ntoh_array_tree(uint8_t *image, uint32_t index, int32_t depth) noexcept
{
    if (image)
        ntoh_node(image, index, start_depth(depth));
}

WEX_API void hton_subtree_header(uint32_t *header) noexcept
{
    swap_header(header);
}

WEX_API void ntoh_subtree_header(uint32_t *header) noexcept
{
    swap_header(header);
}

} // extern "C"
