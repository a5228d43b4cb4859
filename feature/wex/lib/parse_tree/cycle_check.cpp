#include "node_access.h"
#include "walk_limits.h"

#include <wex/parse_tree.h>

#include <cstring>
#include <memory>
#include <new>

namespace
{

using namespace wex::tree;

// Answers "does a walk from this node, links included, pass the maximum
// depth?". Links let many paths share nodes, so a plain walk can take time
// exponential in the depth; remembering for each node the deepest start at
// which it was found shallow makes every node's subtree walked at most once
// per depth. Whether a node is too deep only grows with its depth, so a node
// found shallow at depth d is shallow at every smaller depth too.
class DepthProbe
{
  public:
    explicit DepthProbe(const uint8_t *image) noexcept
        : image_(image), shallow_at_(new (std::nothrow) int8_t[kNodeIndices])
    {
        // Without the memory the walk stays correct, only slower.
        if (shallow_at_)
            std::memset(shallow_at_.get(), -1, kNodeIndices);
    }

    bool too_deep(uint32_t index, int32_t depth) noexcept
    {
        if (past_max_depth(depth))
            return true;
        if (known_shallow(index, depth))
            return false;
        const uint8_t *node = node_at(image_, index);
        for (unsigned i = 0; i < child_count(node); ++i) {
            if (too_deep(child_index(node, i), depth + 1))
                return true;
        }
        remember_shallow(index, depth);
        return false;
    }

  private:
    // Children are 16-bit indices; only a start node can lie beyond.
    static constexpr uint32_t kNodeIndices = 0x10000;

    bool known_shallow(uint32_t index, int32_t depth) const noexcept
    {
        return shallow_at_ && index < kNodeIndices && shallow_at_[index] >= depth;
    }

    void remember_shallow(uint32_t index, int32_t depth) noexcept
    {
        if (shallow_at_ && index < kNodeIndices && shallow_at_[index] < depth)
            shallow_at_[index] = static_cast<int8_t>(depth);
    }

    const uint8_t *image_;
    std::unique_ptr<int8_t[]> shallow_at_;
};

} // namespace

extern "C" WEX_API int32_t cycle_check(const uint8_t *image, uint32_t index, int32_t depth) noexcept
{
    if (!image)
        return 0;
    DepthProbe probe(image);
    return probe.too_deep(index, start_depth(depth)) ? 1 : 0;
}
