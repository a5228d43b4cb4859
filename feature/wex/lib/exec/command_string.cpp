// Execution records turned into one command line for the command interpreter,
// run with system(), the result folded into the shell's status space.
#include "exec/cmdlist_filter.h"
#include "exec/exec_common.h"

#include <wex/exec.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

namespace
{

using wex::exec::terminated;

constexpr unsigned int kRunLineSize = 512;

// Each part is wide enough for the longest field it can hold, so a record
// whose fields are terminated always builds whole parts: the type-3 pipe
// needs 147 characters and two 127-character redirection targets 260, more
// than the shell's own 127 and 255, and a part cut in a path would run the
// wrong file.
struct LineParts {
    char option[sizeof(" -c \"\" ") + WEX_EXEC_TEXT_SIZE];
    char shell[sizeof("cat  | /wex") + WEX_EXEC_PATH_SIZE + sizeof(wex::exec::shell_dir)];
    char redirection[sizeof(" >  2>") + 2 * WEX_EXEC_PATH_SIZE];
};

bool build_option_part(const wex_system_params_t &params, LineParts &parts) noexcept
{
    switch (params.type) {
    case WEX_EXEC_CMD:
        if (!terminated(params.cmd_str))
            return false;
        std::snprintf(parts.option, sizeof parts.option, " -c \"%s\" ", params.cmd_str);
        return true;
    case WEX_EXEC_SCRIPT:
        if (!terminated(params.file_name))
            return false;
        std::snprintf(parts.option, sizeof parts.option, " -f %s ", params.file_name);
        return true;
    case WEX_EXEC_CFG:
        // The file reaches the shell through the pipe of the shell part.
        if (!terminated(params.file_name))
            return false;
        std::snprintf(parts.option, sizeof parts.option, " ");
        return true;
    default:
        return false;
    }
}

bool build_shell_part(const wex_system_params_t &params, LineParts &parts) noexcept
{
    if (!terminated(params.shell_path))
        return false;
    if (params.shell_path[0] != '\0')
        std::snprintf(parts.shell, sizeof parts.shell, "%s", params.shell_path);
    else if (params.type == WEX_EXEC_CFG)
        std::snprintf(parts.shell, sizeof parts.shell, "cat %s | %s/wex", params.file_name,
                      wex::exec::shell_dir);
    else
        std::snprintf(parts.shell, sizeof parts.shell, "%s/wex", wex::exec::shell_dir);
    return true;
}

bool build_redirection_part(const wex_system_params_t &params, LineParts &parts) noexcept
{
    parts.redirection[0] = '\0';
    if (!terminated(params.out_file))
        return false;
    if (params.out_file[0] == '\0')
        return true; // err_file alone redirects nothing
    if (!terminated(params.err_file))
        return false;
    if (params.err_file[0] != '\0')
        std::snprintf(parts.redirection, sizeof parts.redirection, " > %s 2>%s", params.out_file,
                      params.err_file);
    else
        std::snprintf(parts.redirection, sizeof parts.redirection, " > %s 2>&1", params.out_file);
    return true;
}

bool build_parts(const wex_system_params_t &params, LineParts &parts) noexcept
{
    return build_option_part(params, parts) && build_shell_part(params, parts) &&
           build_redirection_part(params, parts) && terminated(params.extra_args);
}

// Whether the record names a file that exists: 0, or the status that says
// why the run cannot go on.
uint32_t check_file(const wex_system_params_t *params) noexcept
{
    if (!params || !terminated(params->file_name))
        return WEX_STATUS_BAD_EXEC_RECORD;
    struct stat st;
    return stat(params->file_name, &st) == 0 ? WEX_STATUS_SUCCESS : WEX_STATUS_FILE_MISSING;
}

} // namespace

extern "C" {

WEX_API uint32_t wex_system_cmd_str_create(wex_system_params_t *params, char *dst,
                                           unsigned int capacity) noexcept
{
    LineParts parts;
    if (!params || (!dst && capacity > 0) || !build_parts(*params, parts))
        return WEX_STATUS_BAD_EXEC_RECORD;
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-truncation"
#endif
    // A line longer than the capacity is cut there, as the callers expect.
    std::snprintf(dst, capacity, "%s %s -e %d -q %d -o %d %s %s", parts.shell, parts.option, params->e_val,
                  params->q_val, params->o_val, params->extra_args, parts.redirection);
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    if (params->debug)
        std::printf("Command str:%s\n", capacity > 0 ? dst : "");
    return WEX_STATUS_SUCCESS;
}

WEX_API uint32_t wex_system_execute(wex_system_params_t *params) noexcept
{
    char line[kRunLineSize];
    const uint32_t status = wex_system_cmd_str_create(params, line, sizeof line);
    if (status != WEX_STATUS_SUCCESS)
        return status;
    // Flushed after the line is built, so its debug line too comes before
    // anything the shell prints.
    wex::exec::flush_std_streams();
    const int result = std::system(line);
    wex::exec::print_exit_status(params->debug, result);
    return wex::exec::fold_interpreter_result(result);
}

WEX_API uint32_t wex_system2(wex_system_params_t *params) noexcept
{
    if (!params)
        return WEX_STATUS_BAD_EXEC_RECORD;
    params->type = WEX_EXEC_CMD;
    return wex_system_execute(params);
}

WEX_API uint32_t wex_execute_script_file2(wex_system_params_t *params) noexcept
{
    if (const uint32_t status = check_file(params))
        return status;
    params->type = WEX_EXEC_SCRIPT;
    if (params->q_val == 2)
        return wex::exec::cmdlist_filter(*params);
    return wex_system_execute(params);
}

WEX_API uint32_t wex_execute_cfg_file2(wex_system_params_t *params) noexcept
{
    if (const uint32_t status = check_file(params))
        return status;
    params->type = WEX_EXEC_CFG;
    return wex_system_execute(params);
}

WEX_API uint32_t wex_multi_stage_execute_cfg_file(int32_t, wex_system_params_t *params) noexcept
{
    if (!params)
        return 0;
    wex_system_params_t copy = *params;
    const uint32_t status = wex_execute_cfg_file2(&copy);
    if (params->debug)
        std::printf("Bootstrap file execution status = %d\n", static_cast<int>(status));
    return 0;
}

WEX_API uint32_t wex_execute_cmd_file2(wex_system_params_t *params, const char *command_line) noexcept
{
    // system() given no line only asks whether an interpreter exists; that
    // answer must not pass for the result of a run.
    if (!command_line)
        return WEX_STATUS_BAD_EXEC_RECORD;
    if (const uint32_t status = check_file(params))
        return status;
    if (params->debug)
        std::printf("Executing wex command string:%s\n", command_line);
    const int result = std::system(command_line);
    wex::exec::print_exit_status(params->debug, result);
    return wex::exec::fold_interpreter_result(result);
}

} // extern "C"
