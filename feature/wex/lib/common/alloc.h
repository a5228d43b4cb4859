// Heap blocks that callers release with free(). Every such block is taken
// here, so the test build can fail any one allocation in turn.
#ifndef WEX_COMMON_ALLOC_H
#define WEX_COMMON_ALLOC_H

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace wex
{

// True when the test build's hook refuses this allocation; always false in
// the shipped library.
bool allocation_refused() noexcept;

// malloc, or NULL when memory runs out (or the test hook says so).
void *mem_alloc(std::size_t size) noexcept;

// realloc, or NULL with block untouched when memory runs out.
void *mem_realloc(void *block, std::size_t size) noexcept;

// Releases a block the way callers of the library release theirs.
struct FreeDeleter {
    void operator()(void *block) const noexcept { std::free(block); }
};

// A block from mem_alloc, or one the platform handed over, that is released
// with free() unless it is given away first.
template <typename T> using MallocPtr = std::unique_ptr<T, FreeDeleter>;

} // namespace wex

#endif
