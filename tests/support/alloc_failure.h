// Runs an operation once for each allocation it makes, with that allocation
// failing (malloc through the library, operator new through the replacement
// in alloc_failure.cpp).
#ifndef WEX_TEST_ALLOC_FAILURE_H
#define WEX_TEST_ALLOC_FAILURE_H

#include "common/alloc_hook.h"

namespace wex_test
{

// Calls call() with its 1st, 2nd, ... allocation failing, and check() after
// each call with the hook disarmed, until a call makes no further
// allocation. Returns how many allocations were failed in turn.
template <typename Call, typename Check> int for_each_allocation_failure(Call call, Check check)
{
    for (long nth = 1;; ++nth) {
        wex::alloc_hook::arm(nth);
        call();
        const bool fired = wex::alloc_hook::fired();
        wex::alloc_hook::arm(0);
        if (!fired)
            return static_cast<int>(nth - 1);
        check();
    }
}

} // namespace wex_test

#endif
