// The depth limit shared by the parse-tree walks.
#ifndef WEX_PARSE_TREE_WALK_LIMITS_H
#define WEX_PARSE_TREE_WALK_LIMITS_H

#include <wex/parse_tree.h>

#include <cstdint>
#include <cstdio>

namespace wex::tree
{

// Depth of a walk's first call. A negative start counts as 0, so no walk ever
// runs more than 31 levels below where it began and a looping image cannot
// exhaust the stack.
inline int32_t start_depth(int32_t depth) noexcept
{
    return depth < 0 ? 0 : depth;
}

inline bool past_max_depth(int32_t depth) noexcept
{
    return depth >= WEX_TREE_MAX_DEPTH;
}

// Writes the walk's one-line message to stream and ends the process with
// status -1.
[[noreturn]] void end_walk(std::FILE *stream, const char *message) noexcept;

} // namespace wex::tree

#endif
