#include "complaints.h"

#include "program.h"

#include <wex/diag.h>

#include <cerrno>

namespace wex_shell
{

FILE *complaints()
{
    std::fflush(stdout);
    return stderr;
}

void print_exchange_failure(int error)
{
    wex_tools::on_standard_error([error] {
        if (error == ETIME)
            wex_print_timeout_message(1);
        else
            wex_print_communication_failure_message();
    });
}

} // namespace wex_shell
