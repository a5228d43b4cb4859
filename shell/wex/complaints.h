// Where the shell's complaints go, and the library's words for a request
// that went unanswered.
#ifndef WEX_SHELL_COMPLAINTS_H
#define WEX_SHELL_COMPLAINTS_H

#include <cstdio>

namespace wex_shell
{

// Standard error, after what standard output holds, so that a file taking
// both ("> FILE 2>&1") has them in the order they happened.
FILE *complaints();

// The library's time-out message for ETIME, its communication-failure
// message otherwise, on standard error.
void print_exchange_failure(int error);

} // namespace wex_shell

#endif
