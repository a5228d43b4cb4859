// Configuration snapshots: the shell's "show running-config" or
// "show startup-config", usually into a file.
#include "common/format.h"
#include "exec/exec_common.h"

#include <wex/exec.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

using wex::exec::terminated;

constexpr std::size_t kLineSize = 256;
constexpr std::size_t kShellCommandSize = 128;
constexpr char kRunningToFile[] = "show running-config > ";

// The redirection that ends a snapshot line: into out_file with standard
// error joined to it, or one blank when the text goes to standard output.
struct Redirection {
    const char *open, *target, *close;
};

Redirection redirection_of(const wex_cfg_gen_params_t &params) noexcept
{
    if (params.out_file[0] == '\0')
        return {" ", "", ""};
    return {" > ", params.out_file, " 2>&1"};
}

bool usable(const wex_cfg_gen_params_t *params) noexcept
{
    return params && terminated(params->out_file);
}

// "%s/wex -q %d -o %d -c \"<command>\"" and the redirection. A line that does
// not fit is not run: cutting it would cut the output file's path and write
// the configuration somewhere else.
bool format_rollback_line(char (&line)[kLineSize], const wex_cfg_gen_params_t &params,
                          const char *command) noexcept
{
    const Redirection r = redirection_of(params);
    return wex::format_whole(line, sizeof line, "%s/wex -q %d -o %d -c \"%s\"%s%s%s", wex::exec::shell_dir,
                             params.q_val, params.o_val, command, r.open, r.target, r.close);
}

int run_snapshot(const char *line, uint32_t debug) noexcept
{
    const int result = std::system(line);
    wex::exec::print_exit_status(debug, result);
    return result;
}

} // namespace

extern "C" {

WEX_API int wex_generate_running_cfg_rollback(wex_cfg_gen_params_t *params) noexcept
{
    wex::exec::flush_std_streams();
    if (!usable(params) || (params->exclude && !terminated(params->exclude_str)))
        return -1;
    // The exclude form without an output file sends the text to standard
    // output, as every form does when no file is named, instead of ending in
    // a redirection without a target.
    char command[sizeof("show running-config exclude ") + WEX_CFG_EXCLUDE_SIZE];
    if (params->exclude)
        std::snprintf(command, sizeof command, "show running-config exclude %s", params->exclude_str);
    else
        std::snprintf(command, sizeof command, "show running-config");
    char line[kLineSize];
    if (!format_rollback_line(line, *params, command))
        return -1;
    return run_snapshot(line, params->debug);
}

WEX_API int wex_generate_startup_cfg_rollback(wex_cfg_gen_params_t *params) noexcept
{
    wex::exec::flush_std_streams();
    char line[kLineSize];
    if (!usable(params) || !format_rollback_line(line, *params, "show startup-config"))
        return -1;
    return run_snapshot(line, params->debug);
}

WEX_API int wex_generate_running_cfg2(wex_cfg_gen_params_t *params) noexcept
{
    wex::exec::flush_std_streams();
    // Its callers take 0 whatever happened; a record without a usable output
    // file is simply not run.
    if (!usable(params))
        return 0;
    const Redirection r = redirection_of(*params);
    char line[kLineSize];
    if (wex::format_whole(line, sizeof line, "%s/wex -o %d -c \"show running-config\"%s%s%s",
                          wex::exec::shell_dir, params->o_val, r.open, r.target, r.close))
        run_snapshot(line, params->debug);
    return 0;
}

WEX_API int wex_generate_running_cfg(const char *path) noexcept
{
    wex::exec::flush_std_streams();
    // The shell's command holds 127 characters: a longer path would be cut
    // and the configuration written to another file, so it is refused.
    constexpr std::size_t kMaxPath = kShellCommandSize - sizeof(kRunningToFile) - 1;
    if (!path || strnlen(path, kMaxPath + 1) > kMaxPath)
        return -1;
    char command[kShellCommandSize];
    std::snprintf(command, sizeof command, "%s%s ", kRunningToFile, path);
    return wex_system(command);
}

} // extern "C"
