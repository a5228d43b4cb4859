/** @file
 * Diagnostics: the debug filter that switches groups of debug output, and
 * the command counters of the configuration generator. */
#ifndef WEX_DIAG_H
#define WEX_DIAG_H

#include <wex/wex_api.h>

WEX_BEGIN_DECLS

/** One bit per group of debug output; 0 at load. */
WEX_API extern uint32_t wex_lib_debug_filter;

#define WEX_DEBUG_ALL 0x7FFFFFFFu /**< every group on */
#define WEX_DEBUG_EOL 0x1u        /**< also traces the interface-configuration check */

/** Sets the debug filter to value. */
WEX_API void wex_lib_debug_filter_set(uint32_t value) WEX_NOEXCEPT;
/** The debug filter. */
WEX_API uint32_t wex_lib_debug_filter_get(void) WEX_NOEXCEPT;
/** Prints "wex <name> is on" when value and mask share a bit. */
WEX_API void wex_lib_debug_filter_value_print(const char *name, uint32_t value, uint32_t mask) WEX_NOEXCEPT;
/** Lists the groups that are on, under "Wex:"; nothing when none is. */
WEX_API void wex_lib_debug_filter_print(void) WEX_NOEXCEPT;

/** @{ */
/** The configuration generator's command count: init starts it at 0, punch
 * adds one. Both return 0. */
WEX_API int wex_asciigen_internal_cmd_init(void) WEX_NOEXCEPT;
WEX_API int wex_asciigen_internal_cmd_punch(void) WEX_NOEXCEPT;
WEX_API uint32_t wex_asciigen_internal_cmd_count_get(void) WEX_NOEXCEPT;
/** @} */
/** 1 once init has run, else 0. */
WEX_API uint32_t wex_asciigen_internal_start_stop_get(void) WEX_NOEXCEPT;

/* ---- Terminal input -------------------------------------------------- */

/** A question to the user. 32-bit size: 32 bytes; 64-bit: 48. */
typedef struct wex_user_input_t {
    const char *prompt;          /**< printed before every read */
    const char *default_str;     /**< the answer to an empty line (NULL: empty) */
    uint32_t reserved1;          /**< not read */
    int32_t max_len;             /**< capacity of the destination, terminator included: 1 to 256 */
    uint32_t timeout;            /**< seconds to wait for input, over all retries; 0: no limit */
    int (*validate)(char *line); /**< optional: a line is taken only when it returns 1 */
    uint32_t reserved2;          /**< not read */
    uint32_t debug;              /**< non-zero: print what the read does */
} wex_user_input_t;

#if UINTPTR_MAX == 0xFFFFFFFFu
WEX_ASSERT_SIZE(wex_user_input_t, 32);
WEX_ASSERT_OFFSET(wex_user_input_t, max_len, 12);
WEX_ASSERT_OFFSET(wex_user_input_t, validate, 20);
WEX_ASSERT_OFFSET(wex_user_input_t, debug, 28);
#endif

/** Set by the program: when it points at 0, wex_user_input_get asks nothing. */
WEX_API extern int *cmd_baby_mode_p;

/** Prompts on standard output and reads one line from standard input until
 * a line fits and passes the validator; an empty line, or no input before
 * the time limit or the end of input, gives default_str. Copies the answer
 * with strncpy limited to max_len. 0; WEX_STATUS_FAILURE for a max_len
 * outside 1 to 256. */
WEX_API int32_t wex_user_input_get(wex_user_input_t *request, char *dst) WEX_NOEXCEPT;

/* ---- Messages, log file, time --------------------------------------- */

/** Prints the standard line for an exchange with a process that could not be made. */
WEX_API void wex_print_communication_failure_message(void) WEX_NOEXCEPT;
/** The lines for a request that timed out, by kind (0 to 6). */
WEX_API void wex_print_timeout_message(unsigned int kind) WEX_NOEXCEPT;
/** The message for a failed transport request: EPIPE, ETIME (by kind), or
 * perror("Internal CLI error") for any other error. 0. */
WEX_API int wex_print_ipcq_error_message(unsigned int kind, int error) WEX_NOEXCEPT;
/** Appends text to the file (created when missing); nothing when it cannot
 * be opened. 0. */
WEX_API int wex_log_mesg_to_file(const char *path, const char *text) WEX_NOEXCEPT;
/** Removes the file: remove's result. */
WEX_API int wex_log_file_clear(const char *path) WEX_NOEXCEPT;
/** Microseconds since the start of the current hour; -1 when the clock
 * cannot be read. */
WEX_API int64_t wex_time(void) WEX_NOEXCEPT;
/** Lower-cases text in place. */
WEX_API void wex_convert_str_to_lower_case(char *text) WEX_NOEXCEPT;

/* ---- Terminal messages ----------------------------------------------- */

/** Writes text and its terminating NUL to the terminal of standard input,
 * and makes standard output unbuffered. 0. */
WEX_API int display_terminal(const char *text) WEX_NOEXCEPT;
/** Writes text to the existing terminal "/dev/<name>". close's result, or
 * -1 when it cannot be opened. */
WEX_API int notify_session(const char *name, const char *text) WEX_NOEXCEPT;
/** Writes text to the console and to pts/0 to pts/31: the result for pts/31. */
WEX_API int wex_notify_cli_sessions(const char *text) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_DIAG_H */
