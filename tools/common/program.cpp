#include "program.h"

#include "version.h"

#include <ctime>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace wex_tools
{

const char *project_version()
{
    return WEX_PROJECT_VERSION;
}

bool print_version_if_asked(const char *program, const std::vector<std::string> &args)
{
    if (std::find(args.begin(), args.end(), "--version") == args.end())
        return false;
    std::printf("%s %s\n", program, project_version());
    return true;
}

bool wants_help(const std::vector<std::string> &args)
{
    return std::find(args.begin(), args.end(), "--help") != args.end() ||
           std::find(args.begin(), args.end(), "-h") != args.end();
}

int usage_error(const char *program, const std::string &why, const char *usage)
{
    std::fprintf(stderr, "%s: %s\n%s", program, why.c_str(), usage);
    return 2;
}

int finish_output(const char *program, int status)
{
    errno = 0;
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return status;
    std::fprintf(stderr, "%s: standard output: %s\n", program, std::strerror(errno ? errno : EIO));
    return 2;
}

void on_standard_error(const std::function<void()> &print)
{
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    if (saved < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        print(); // no second descriptor to spare: the message on standard output beats none
        return;
    }
    print();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
}

int run_within(unsigned seconds, const std::function<int()> &work, const std::function<void()> &on_timeout)
{
    struct Outcome {
        std::mutex mutex;
        std::condition_variable done;
        bool finished = false;
        int result = 0;
    };
    // Shared with the worker, which may outlive this call by the moment it
    // takes the process to end.
    auto outcome = std::make_shared<Outcome>();
    std::thread([outcome, work] {
        const int result = work();
        const std::lock_guard lock(outcome->mutex);
        outcome->result = result;
        outcome->finished = true;
        outcome->done.notify_one();
    }).detach();
    std::unique_lock lock(outcome->mutex);
    if (outcome->done.wait_for(lock, std::chrono::seconds(seconds), [&] { return outcome->finished; }))
        return outcome->result;
    on_timeout();
    std::fflush(stdout);
    std::fflush(stderr);
    // The worker still waits inside a request: end without unwinding it.
    std::_Exit(2);
}

std::string utc_time_text(std::time_t when)
{
    std::tm parts{};
    char text[32] = "";
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", gmtime_r(&when, &parts));
    return text;
}

} // namespace wex_tools
