// A wexd-sim process for the length of a test, in a runtime directory of
// its own, with a client queue to talk to it.
#ifndef WEX_TEST_SIM_PROCESS_H
#define WEX_TEST_SIM_PROCESS_H

#include <string>
#include <vector>
#include <sys/types.h>

namespace wex_test
{

class SimProcess
{
  public:
    // Starts wexd-sim with the roles file text (empty: no file) and the
    // further arguments, and waits for it to serve; ready() tells whether
    // it did.
    explicit SimProcess(const std::string &role_config, const std::vector<std::string> &more_args = {});
    ~SimProcess();
    SimProcess(const SimProcess &) = delete;
    SimProcess &operator=(const SimProcess &) = delete;

    bool ready() const { return ready_; }
    pid_t pid() const { return pid_; }
    // The simulator's resident memory in KiB, from /proc.
    long memory_kib() const;
    const std::string &runtime_dir() const { return dir_; }
    // Sends SIGTERM and returns the exit status (-1 when it did not exit);
    // once stopped, the same status again.
    int stop();
    // Waits up to five seconds for the simulator to log a line holding
    // text (a one-way message handled); true when it did.
    bool wait_for_log(const std::string &text);
    // What the simulator printed on standard output, once stopped.
    std::string log();

  private:
    std::string dir_;
    pid_t pid_ = -1;
    int out_fd_ = -1;
    std::string log_;
    bool ready_ = false;
    int exit_status_ = -1;
};

// How a tool's run ended and what it wrote.
struct ToolRun {
    int status; // exit status, 128 + signal, or -1 when it did not end in five seconds
    std::string out;
    std::string err;
};

// Files in place of a tool's standard input and output (empty: a pipe).
struct ToolIo {
    std::string in;
    std::string out;
};

// Runs a program (under the emulator when the tests run under one) with
// the arguments, the transport's runtime directory set to runtime_dir.
ToolRun run_tool(const std::string &program, const std::vector<std::string> &args,
                 const std::string &runtime_dir, const ToolIo &io = {});

} // namespace wex_test

#endif
