// Starting the shell binary directly: spawn, wait. No interpreter sits
// between the caller and the shell, so the text reaches it as one argument.
#include "common/paths.h"
#include "exec/exec_common.h"

#include <wex/exec.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace
{

// The exit status of a child that could not execute the shell.
constexpr int kShellNotExecuted = 127;

const char *mode_option(int mode) noexcept
{
    switch (mode) {
    case WEX_EXEC_CMD:
        return "-nRc";
    case WEX_EXEC_SCRIPT:
        return "-nRf";
    case WEX_EXEC_CFG:
        return "-nRr";
    default:
        return nullptr;
    }
}

// The shell started without copying the caller's address space: a daemon
// that spawns shells is a large process, and a copy of its page tables
// would cost far more than the shell's whole run. The child shares the
// caller's memory until it executes the shell, so it runs none of the
// caller's code: nothing in it flushes or exits through the caller's
// handlers. Returns the child's id, 0 when the child could not execute the
// shell (it has ended with 127 and been reaped), -1 when no child started.
pid_t start_shell(const char *text, const char *option, int image) noexcept
{
    const bool main_image = image == WEX_IMAGE_MAIN;
    const char *path = main_image ? WEX_PATH("/tarn/bin/wex") : WEX_PATH("/lc/tarnboot/bin/wexboot");
    char *argv[] = {const_cast<char *>(main_image ? "wex" : "wexboot"), const_cast<char *>(option),
                    const_cast<char *>(text), nullptr};
    pid_t pid = -1;
    const int error = posix_spawn(&pid, path, nullptr, nullptr, argv, environ);
    if (error == 0)
        return pid;
    // Only a child that could not be created fails with these; any other
    // error is the shell's execution failing in a child that has ended.
    return error == EAGAIN || error == ENOMEM ? -1 : 0;
}

int wait_for_child(pid_t pid) noexcept
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return status;
}

bool file_exists(const char *path) noexcept
{
    if (!path) {
        errno = EFAULT; // what stat reports for a missing path argument
        return false;
    }
    struct stat st;
    return stat(path, &st) == 0;
}

} // namespace

extern "C" {

WEX_API int32_t g_run_script_exec = 0;
WEX_API char g_run_script_filename[WEX_EXEC_PATH_SIZE] = "";

WEX_API int wex_system_internal(const char *text, int mode, int image) noexcept
{
    if (!text)
        return 1;
    const char *option = mode_option(mode);
    // The shell would read an unknown mode as a word of its own choosing, so
    // no child is started for it: the caller sees the failure to start one.
    if (!option)
        return -1;
    wex::exec::flush_std_streams();
    const pid_t pid = start_shell(text, option, image);
    if (pid < 0)
        return -1;
    if (pid == 0)
        return W_EXITCODE(kShellNotExecuted, 0);
    return wait_for_child(pid);
}

WEX_API int wex_system(const char *command) noexcept
{
    return wex_system_internal(command, WEX_EXEC_CMD, WEX_IMAGE_MAIN);
}

WEX_API int wex_execute_script_file(const char *path) noexcept
{
    if (!file_exists(path)) {
        std::perror("");
        return -1;
    }
    return wex_system_internal(path, WEX_EXEC_SCRIPT, WEX_IMAGE_MAIN) == 0 ? 0 : -1;
}

WEX_API int wex_execute_cfg_file(const char *path) noexcept
{
    if (!file_exists(path))
        return -1;
    return wex_system_internal(path, WEX_EXEC_CFG, WEX_IMAGE_MAIN) == 0 ? 0 : -1;
}

WEX_API int wex_lc_execute_script_file(const char *path) noexcept
{
    if (!file_exists(path))
        return -1;
    return wex_system_internal(path, WEX_EXEC_SCRIPT, WEX_IMAGE_BOOT) == 0 ? 0 : -1;
}

} // extern "C"
