/* Diagnostics: the debug filter that switches groups of debug output, and
 * the command counters of the configuration generator. */
#ifndef WEX_DIAG_H
#define WEX_DIAG_H

#include <wex/wex_api.h>

WEX_BEGIN_DECLS

/* One bit per group of debug output; 0 at load. */
WEX_API extern uint32_t wex_lib_debug_filter;

#define WEX_DEBUG_ALL 0x7FFFFFFFu /* every group on */
#define WEX_DEBUG_EOL 0x1u        /* also traces the interface-configuration check */

WEX_API void wex_lib_debug_filter_set(uint32_t value) WEX_NOEXCEPT;
WEX_API uint32_t wex_lib_debug_filter_get(void) WEX_NOEXCEPT;
/* Prints "wex <name> is on" when value and mask share a bit. */
WEX_API void wex_lib_debug_filter_value_print(const char *name, uint32_t value, uint32_t mask) WEX_NOEXCEPT;
/* Lists the groups that are on, under "Wex:"; nothing when none is. */
WEX_API void wex_lib_debug_filter_print(void) WEX_NOEXCEPT;

/* The configuration generator's command count: init starts it at 0, punch
 * adds one. Both return 0. */
WEX_API int wex_asciigen_internal_cmd_init(void) WEX_NOEXCEPT;
WEX_API int wex_asciigen_internal_cmd_punch(void) WEX_NOEXCEPT;
WEX_API uint32_t wex_asciigen_internal_cmd_count_get(void) WEX_NOEXCEPT;
/* 1 once init has run, else 0. */
WEX_API uint32_t wex_asciigen_internal_start_stop_get(void) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_DIAG_H */
