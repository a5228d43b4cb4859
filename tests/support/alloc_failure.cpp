// Global operator new and delete of the test programs, routed through the
// allocation hook so that the library's own containers can be failed too.
#include "common/alloc_hook.h"

#include <cstdlib>
#include <new>

namespace
{

void *allocate_or_null(std::size_t size) noexcept
{
    if (wex::alloc_hook::should_fail())
        return nullptr;
    return std::malloc(size ? size : 1);
}

void *allocate_or_throw(std::size_t size)
{
    if (void *p = allocate_or_null(size))
        return p;
    throw std::bad_alloc();
}

} // namespace

void *operator new(std::size_t size)
{
    return allocate_or_throw(size);
}

void *operator new[](std::size_t size)
{
    return allocate_or_throw(size);
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return allocate_or_null(size);
}

void *operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
    return allocate_or_null(size);
}

void operator delete(void *p) noexcept
{
    std::free(p);
}

void operator delete[](void *p) noexcept
{
    std::free(p);
}

void operator delete(void *p, std::size_t) noexcept
{
    std::free(p);
}

void operator delete[](void *p, std::size_t) noexcept
{
    std::free(p);
}
