#include "exec/exec_common.h"

#include <wex/wex_api.h>

#include <cstdio>

namespace wex::exec
{

void flush_std_streams() noexcept
{
    std::fflush(stdout);
    std::fflush(stderr);
}

uint32_t fold_interpreter_result(int result) noexcept
{
    // The interpreter's result is compared undecoded: a shell exit code N >= 1
    // arrives as N * 256 and so counts as a failure.
    if (result == 1)
        return WEX_STATUS_INTERPRETER_ONE;
    if (result >= 127)
        return WEX_STATUS_FAILURE;
    return WEX_STATUS_SUCCESS;
}

void print_exit_status(uint32_t debug, int result) noexcept
{
    if (debug)
        std::printf("wex exit status = %d\n", result);
}

} // namespace wex::exec
