// Test-build hook that fails one chosen allocation, so every allocation of an
// operation can be made to fail in turn. Built only into the test variant.
#ifndef WEX_COMMON_ALLOC_HOOK_H
#define WEX_COMMON_ALLOC_HOOK_H

namespace wex::alloc_hook
{

// Makes the nth allocation from now fail (1 is the next one); 0 disarms.
void arm(long nth) noexcept;

// True once the armed allocation has been refused.
bool fired() noexcept;

// Counts one allocation; true when it is the one to refuse.
bool should_fail() noexcept;

} // namespace wex::alloc_hook

#endif
