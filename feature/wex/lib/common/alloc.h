// Heap blocks that callers release with free(). Every such block is taken
// here, so the test build can fail any one allocation in turn.
#ifndef WEX_COMMON_ALLOC_H
#define WEX_COMMON_ALLOC_H

#include <cstddef>

namespace wex
{

// malloc, or NULL when memory runs out (or the test hook says so).
void *mem_alloc(std::size_t size) noexcept;

// realloc, or NULL with block untouched when memory runs out.
void *mem_realloc(void *block, std::size_t size) noexcept;

} // namespace wex

#endif
