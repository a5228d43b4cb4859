/* Output capture and comparison of configuration texts. */
#ifndef WEX_OUTPUT_H
#define WEX_OUTPUT_H

#include <wex/wex_api.h>

WEX_BEGIN_DECLS

/* Compares two configuration texts as trees of lines (two blanks of indent
 * per level, three levels), sibling order ignored, lines matched one to one
 * by exact text. 1 when they hold the same lines, 0 otherwise (also when
 * memory runs out while comparing). A NULL text has no lines. */
WEX_API int32_t wex_is_diff_same(const char *first, const char *second) WEX_NOEXCEPT;

/* Prints on standard output the lines only in first ("    -"), only in second
 * ("    +"), each under its unchanged parents ("     "). */
WEX_API void wex_diff(const char *first, const char *second) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_OUTPUT_H */
