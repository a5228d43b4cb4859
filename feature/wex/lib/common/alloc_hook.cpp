#include "alloc_hook.h"

#include <atomic>

namespace wex::alloc_hook
{

namespace
{
std::atomic<long> countdown{0};
std::atomic<bool> refused{false};
} // namespace

void arm(long nth) noexcept
{
    refused = false;
    countdown = nth;
}

bool fired() noexcept
{
    return refused;
}

bool should_fail() noexcept
{
    if (countdown.load() <= 0)
        return false;
    if (--countdown != 0)
        return false;
    refused = true;
    return true;
}

} // namespace wex::alloc_hook
