#include "alloc.h"

#include <cstdlib>

#ifdef WEX_TEST_HOOKS
#include "alloc_hook.h"
#endif

namespace wex
{

bool allocation_refused() noexcept
{
#ifdef WEX_TEST_HOOKS
    return alloc_hook::should_fail();
#else
    return false;
#endif
}

void *mem_alloc(std::size_t size) noexcept
{
    return allocation_refused() ? nullptr : std::malloc(size);
}

void *mem_realloc(void *block, std::size_t size) noexcept
{
    return allocation_refused() ? nullptr : std::realloc(block, size);
}

} // namespace wex
