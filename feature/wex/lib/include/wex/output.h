/** @file
 * Output capture and comparison of configuration texts. */
#ifndef WEX_OUTPUT_H
#define WEX_OUTPUT_H

#include <wex/wex_api.h>

WEX_BEGIN_DECLS

/* ---- Output capture ------------------------------------------------------ */

/* Listings print through wex_buf_printf. In capture mode the text is
 * appended to a process-wide buffer instead of going to standard output.
 * The state has no lock: capture is for single-threaded use. */

/** Turns capture on; text captured earlier and not reset stays in front. 1. */
WEX_API int32_t wex_set_redir2buf(void) WEX_NOEXCEPT;
/** Turns capture off and forgets the buffer without releasing it. 0. */
WEX_API int32_t wex_reset_redir2buf(void) WEX_NOEXCEPT;
/** 1 while capturing, else 0. */
WEX_API int32_t wex_is_redir2buf(void) WEX_NOEXCEPT;
/** The captured text (terminated), NULL when nothing was captured. Whoever
 * takes it frees it after wex_reset_redir2buf. */
WEX_API char *wex_get_buf(void) WEX_NOEXCEPT;
/** The number of characters captured. */
WEX_API uint32_t wex_get_buf_len(void) WEX_NOEXCEPT;
/** Makes buf (malloc'd, len characters and a terminator) the capture buffer;
 * a NULL buf changes nothing. Returns the capture buffer. */
WEX_API char *wex_set_buf(char *buf, uint32_t len) WEX_NOEXCEPT;
/** printf to standard output, or appended to the capture buffer while
 * capturing. Returns the number of characters produced, or a negative value
 * when the text could not be formatted or, while capturing, the buffer could
 * not grow (the text captured so far is kept). */
WEX_API int32_t wex_buf_printf(const char *format, ...) WEX_NOEXCEPT __attribute__((format(printf, 1, 2)));

/* ---- Comparison ------------------------------------------------------ */

/** Compares two configuration texts as trees of lines (two blanks of indent
 * per level, three levels), sibling order ignored, lines matched one to one
 * by exact text. 1 when they hold the same lines, 0 otherwise (also when
 * memory runs out while comparing). A NULL text has no lines. */
WEX_API int32_t wex_is_diff_same(const char *first, const char *second) WEX_NOEXCEPT;

/** Prints on standard output the lines only in first ("    -"), only in second
 * ("    +"), each under its unchanged parents ("     "). */
WEX_API void wex_diff(const char *first, const char *second) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_OUTPUT_H */
