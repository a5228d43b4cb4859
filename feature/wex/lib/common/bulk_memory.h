// Working arrays of tens of megabytes that one operation builds and drops,
// such as the lines of two million-line configurations. A fresh process would
// otherwise take them from the kernel a page at a time, one fault per 4 KiB,
// which costs as much as the work done on them.
#ifndef WEX_COMMON_BULK_MEMORY_H
#define WEX_COMMON_BULK_MEMORY_H

#include <cstddef>

namespace wex
{

// Room for bytes, all of it already backed by memory; throws std::bad_alloc.
void *bulk_allocate(std::size_t bytes);

// Gives back a block from bulk_allocate of the same size.
void bulk_release(void *block, std::size_t bytes) noexcept;

// For standard containers whose size is known when they are filled.
template <typename T> struct BulkAllocator {
    using value_type = T;

    BulkAllocator() = default;
    template <typename U> explicit BulkAllocator(const BulkAllocator<U> &) noexcept {}

    T *allocate(std::size_t count) { return static_cast<T *>(bulk_allocate(count * sizeof(T))); }
    void deallocate(T *block, std::size_t count) noexcept { bulk_release(block, count * sizeof(T)); }

    friend bool operator==(const BulkAllocator &, const BulkAllocator &) noexcept { return true; }
};

} // namespace wex

#endif
