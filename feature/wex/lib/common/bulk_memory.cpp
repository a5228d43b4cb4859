#include "bulk_memory.h"

#include "alloc.h"

#include <cstdint>
#include <new>
#include <sys/mman.h>

namespace wex
{

namespace
{

// One large page: below it the heap serves as well, and reuses its memory.
constexpr std::size_t kLargePage = std::size_t{2} << 20;

bool is_bulk(std::size_t bytes) noexcept
{
    return bytes >= kLargePage;
}

std::size_t mapped_size(std::size_t bytes) noexcept
{
    return (bytes + kLargePage - 1) & ~(kLargePage - 1);
}

// Large pages and filling are requests the kernel may decline; the memory
// then arrives page by page as it is first touched, which is only slower.
void back_in_one_call(void *block, std::size_t size) noexcept
{
#ifdef MADV_HUGEPAGE
    (void)madvise(block, size, MADV_HUGEPAGE);
#endif
#ifdef MADV_POPULATE_WRITE
    (void)madvise(block, size, MADV_POPULATE_WRITE);
#endif
}

} // namespace

void *bulk_allocate(std::size_t bytes)
{
    if (!is_bulk(bytes))
        return ::operator new(bytes);
    if (bytes > SIZE_MAX - kLargePage || allocation_refused())
        throw std::bad_alloc();
    const std::size_t size = mapped_size(bytes);
    void *block = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED)
        throw std::bad_alloc();
    back_in_one_call(block, size);
    return block;
}

void bulk_release(void *block, std::size_t bytes) noexcept
{
    if (!is_bulk(bytes))
        ::operator delete(block);
    else if (block)
        (void)munmap(block, mapped_size(bytes));
}

} // namespace wex
