// Runs code that may end the process in a forked child, and reports how the
// child ended and what it wrote.
#ifndef WEX_TEST_CHILD_PROCESS_H
#define WEX_TEST_CHILD_PROCESS_H

#include <functional>
#include <string>

namespace wex_test
{

struct ChildResult {
    bool exited = false;  // ended through exit(), not a signal
    int exit_status = -1; // WEXITSTATUS when exited
    int signal = 0;       // terminating signal otherwise
    std::string out;
    std::string err;
};

// Forks; the child runs fn with its standard output and error captured, and
// exits with status 0 if fn returns.
ChildResult run_in_child(const std::function<void()> &fn);

} // namespace wex_test

#endif
