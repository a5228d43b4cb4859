// The debug filter and the configuration generator's counters: plain
// process-wide values without locks, as the shell has always shared them.
#include <wex/diag.h>

#include <cstdio>

extern "C" {
WEX_API uint32_t wex_lib_debug_filter = 0;
}

namespace
{

struct DebugGroup {
    const char *name;
    uint32_t mask;
};

// In the order the listing shows them; "PARSE full debug" spans two bits.
constexpr DebugGroup kDebugGroups[] = {
    {"EOL debug", 0x1},
    {"EOL param debug", 0x2},
    {"EOL invocation debug", 0x800},
    {"PARAM debug", 0x10000},
    {"PARSE brief debug", 0x4},
    {"PARSE full debug", 0xC},
    {"SUBMODE debug", 0x10},
    {"Interface PARAM debug", 0x20000},
    {"FUNC TRACE", 0x20},
    {"HELP debug", 0x40},
    {"CMD debug", 0x80},
    {"EXEC debug", 0x100},
    {"PARSE TREE debug", 0x200},
    {"ASCIIGEN debug", 0x400},
    {"ERROR-CODES debug", 0x8000},
    {"LOGFILE debug", 0x1000},
};

uint32_t asciigen_started = 0;
uint32_t asciigen_count = 0;

} // namespace

extern "C" {

WEX_API void wex_lib_debug_filter_set(uint32_t value) noexcept
{
    wex_lib_debug_filter = value;
}

WEX_API uint32_t wex_lib_debug_filter_get(void) noexcept
{
    return wex_lib_debug_filter;
}

WEX_API void wex_lib_debug_filter_value_print(const char *name, uint32_t value, uint32_t mask) noexcept
{
    if (value & mask)
        std::printf("wex %s is on\n", name ? name : "(null)");
}

WEX_API void wex_lib_debug_filter_print(void) noexcept
{
    if (wex_lib_debug_filter == 0)
        return;
    std::puts("Wex:");
    if (wex_lib_debug_filter == WEX_DEBUG_ALL) {
        std::puts("wex ALL debugs are on");
        return;
    }
    for (const DebugGroup &group : kDebugGroups)
        wex_lib_debug_filter_value_print(group.name, wex_lib_debug_filter, group.mask);
}

WEX_API int wex_asciigen_internal_cmd_init(void) noexcept
{
    asciigen_started = 1;
    asciigen_count = 0;
    return 0;
}

WEX_API int wex_asciigen_internal_cmd_punch(void) noexcept
{
    ++asciigen_count;
    return 0;
}

WEX_API uint32_t wex_asciigen_internal_cmd_count_get(void) noexcept
{
    return asciigen_count;
}

WEX_API uint32_t wex_asciigen_internal_start_stop_get(void) noexcept
{
    return asciigen_started;
}

} // extern "C"
