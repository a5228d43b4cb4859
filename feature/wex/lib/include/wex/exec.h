/** @file
 * Command execution: starting the shell as a child process, command lines
 * built from an execution record and run through the command interpreter,
 * the command-list filter of script runs, and configuration snapshots. */
#ifndef WEX_EXEC_H
#define WEX_EXEC_H

#include <wex/param.h>
#include <wex/wex_api.h>

WEX_BEGIN_DECLS

/** @{ */
/** Execution types (and the modes of wex_system_internal). */
#define WEX_EXEC_CMD 1    /**< one command line */
#define WEX_EXEC_SCRIPT 2 /**< a script file */
#define WEX_EXEC_CFG 3    /**< a configuration file */
/** @} */

/** @{ */
/** Shell images of wex_system_internal: the main shell, or (any other value)
 * the boot-image shell. */
#define WEX_IMAGE_MAIN 1
#define WEX_IMAGE_BOOT 4
/** @} */

#define WEX_EXEC_PATH_SIZE 128u /**< capacity of the record's path fields */
#define WEX_EXEC_TEXT_SIZE 256u /**< capacity of its command and argument texts */

/** One run of the shell through the command interpreter. Text fields are
 * NUL-terminated within their capacity; a field without its terminator makes
 * the record unusable (WEX_STATUS_BAD_EXEC_RECORD). */
typedef struct wex_system_params_t {
    uint32_t type;                       /**< WEX_EXEC_CMD, _SCRIPT or _CFG */
    char file_name[WEX_EXEC_PATH_SIZE];  /**< script or configuration file */
    char cmd_str[WEX_EXEC_TEXT_SIZE];    /**< command text (type 1) */
    char out_file[WEX_EXEC_PATH_SIZE];   /**< standard output; empty: none */
    char err_file[WEX_EXEC_PATH_SIZE];   /**< standard error; empty: with output */
    char shell_path[WEX_EXEC_PATH_SIZE]; /**< replaces the shell part when set */
    int32_t e_val;                       /**< value after "-e" */
    int32_t q_val;                       /**< value after "-q"; 2 filters scripts */
    int32_t o_val;                       /**< value after "-o" */
    uint32_t debug;                      /**< non-zero: diagnostic lines */
    char extra_args[WEX_EXEC_TEXT_SIZE]; /**< placed after the "-o" value */
} wex_system_params_t;
WEX_ASSERT_SIZE(wex_system_params_t, 1044);
WEX_ASSERT_OFFSET(wex_system_params_t, file_name, 4);
WEX_ASSERT_OFFSET(wex_system_params_t, cmd_str, 132);
WEX_ASSERT_OFFSET(wex_system_params_t, out_file, 388);
WEX_ASSERT_OFFSET(wex_system_params_t, err_file, 516);
WEX_ASSERT_OFFSET(wex_system_params_t, shell_path, 644);
WEX_ASSERT_OFFSET(wex_system_params_t, e_val, 772);
WEX_ASSERT_OFFSET(wex_system_params_t, q_val, 776);
WEX_ASSERT_OFFSET(wex_system_params_t, o_val, 780);
WEX_ASSERT_OFFSET(wex_system_params_t, debug, 784);
WEX_ASSERT_OFFSET(wex_system_params_t, extra_args, 788);

/** Capacity of wex_cfg_gen_params_t.exclude_str, terminator included. */
#define WEX_CFG_EXCLUDE_SIZE 128u

/** One configuration snapshot. */
typedef struct wex_cfg_gen_params_t {
    char out_file[WEX_EXEC_PATH_SIZE];      /**< receives the text; empty: standard output */
    int32_t o_val;                          /**< value after "-o" */
    int32_t q_val;                          /**< value after "-q" (rollback forms only) */
    uint32_t debug;                         /**< non-zero: print the interpreter's result */
    uint32_t exclude;                       /**< non-zero: running rollback uses "exclude" */
    char exclude_str[WEX_CFG_EXCLUDE_SIZE]; /**< text after the word exclude */
} wex_cfg_gen_params_t;
WEX_ASSERT_SIZE(wex_cfg_gen_params_t, 272);
WEX_ASSERT_OFFSET(wex_cfg_gen_params_t, o_val, 128);
WEX_ASSERT_OFFSET(wex_cfg_gen_params_t, q_val, 132);
WEX_ASSERT_OFFSET(wex_cfg_gen_params_t, debug, 136);
WEX_ASSERT_OFFSET(wex_cfg_gen_params_t, exclude, 140);
WEX_ASSERT_OFFSET(wex_cfg_gen_params_t, exclude_str, 144);

/** @{ */
/** For the programs that link the library; the library never uses them. */
WEX_API extern int32_t g_run_script_exec;
WEX_API extern char g_run_script_filename[WEX_EXEC_PATH_SIZE];
/** @} */

/* ---- Direct spawning: fork and execv of the shell, then wait ------------- */

/** Runs the shell (image 1: main, else boot image) in mode 1, 2 or 3 on text.
 * Returns the undecoded wait status, 1 for a NULL text, -1 when the child
 * cannot be started or waited for, or for a mode other than 1, 2, 3. */
WEX_API int wex_system_internal(const char *text, int mode, int image) WEX_NOEXCEPT;

/** Runs one command line in the main shell; the undecoded wait status. */
WEX_API int wex_system(const char *command) WEX_NOEXCEPT;

/** Runs a script file in the main shell: 0 when the shell exited with 0, -1
 * otherwise (a missing file is reported with perror). */
WEX_API int wex_execute_script_file(const char *path) WEX_NOEXCEPT;

/** Runs a configuration file in the main shell: 0 or -1 (silent when missing). */
WEX_API int wex_execute_cfg_file(const char *path) WEX_NOEXCEPT;

/** Runs a script file in the boot-image shell: 0 or -1 (silent when missing). */
WEX_API int wex_lc_execute_script_file(const char *path) WEX_NOEXCEPT;

/* ---- Execution records, through the command interpreter ----------------- */

/** Builds the record's command line into dst (capacity bytes, cut to fit).
 * 0, or WEX_STATUS_BAD_EXEC_RECORD with dst untouched. */
WEX_API uint32_t wex_system_cmd_str_create(wex_system_params_t *params, char *dst,
                                           unsigned int capacity) WEX_NOEXCEPT;

/** Builds and runs the record's line: 0, WEX_STATUS_INTERPRETER_ONE when the
 * interpreter returned 1, WEX_STATUS_FAILURE when it returned 127 or more, or
 * the build status. */
WEX_API uint32_t wex_system_execute(wex_system_params_t *params) WEX_NOEXCEPT;

/** Runs cmd_str (sets type to WEX_EXEC_CMD); a status of wex_system_execute. */
WEX_API uint32_t wex_system2(wex_system_params_t *params) WEX_NOEXCEPT;

/** Runs the script file_name (sets type to WEX_EXEC_SCRIPT), through the
 * command-list filter when q_val is 2. WEX_STATUS_FILE_MISSING when absent. */
WEX_API uint32_t wex_execute_script_file2(wex_system_params_t *params) WEX_NOEXCEPT;

/** Feeds the configuration file file_name to the shell (sets type to
 * WEX_EXEC_CFG). WEX_STATUS_FILE_MISSING when absent. */
WEX_API uint32_t wex_execute_cfg_file2(wex_system_params_t *params) WEX_NOEXCEPT;

/** wex_execute_cfg_file2 on a copy of the record, its status printed when
 * debug is set. Always 0. The first argument is not used. */
WEX_API uint32_t wex_multi_stage_execute_cfg_file(int32_t unused, wex_system_params_t *params) WEX_NOEXCEPT;

/** Runs a command line the caller built, once file_name exists; the status
 * fold of wex_system_execute, or WEX_STATUS_FILE_MISSING. */
WEX_API uint32_t wex_execute_cmd_file2(wex_system_params_t *params, const char *command_line) WEX_NOEXCEPT;

/* ---- Configuration snapshots ------------------------------------------- */

/** The running configuration, for rollback; the interpreter's result, or -1
 * when the record cannot make a complete line. */
WEX_API int wex_generate_running_cfg_rollback(wex_cfg_gen_params_t *params) WEX_NOEXCEPT;

/** The startup configuration, for rollback; as the running form. */
WEX_API int wex_generate_startup_cfg_rollback(wex_cfg_gen_params_t *params) WEX_NOEXCEPT;

/** The running configuration; always 0. */
WEX_API int wex_generate_running_cfg2(wex_cfg_gen_params_t *params) WEX_NOEXCEPT;

/** The running configuration into path, by the shell itself; the wait status
 * of wex_system, or -1 for a NULL path or one longer than 104 characters. */
WEX_API int wex_generate_running_cfg(const char *path) WEX_NOEXCEPT;

/* ---- Requests over the transport -------------------------------------- */

/** The most interface indexes one default-interface request carries. */
#define WEX_DEFAULT_INTF_MAX 255

/** Expands the ranges into interface indexes and sends them, after the two
 * values, to the configuration server for the default-interface operation;
 * no reply is awaited. 0 when sent; 1 when memory for the ranges runs out;
 * -1 for more than WEX_DEFAULT_INTF_MAX indexes, a count beyond the list's
 * entries, no memory for the message, or a failed send. */
WEX_API int wex_execute_default_intf(int32_t q, uint32_t value1, uint32_t value2,
                                     intf_range_list ranges) WEX_NOEXCEPT;

/** Asks wexd for the feature privilege value and waits for it; -1 when no
 * answer with a value arrives. */
WEX_API int wex_get_feature_privilege(int32_t q) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_EXEC_H */
