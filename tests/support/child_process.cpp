#include "support/child_process.h"
#include "support/capture.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace wex_test
{

namespace
{

struct FileCloser {
    void operator()(std::FILE *f) const { std::fclose(f); }
};
using TempFile = std::unique_ptr<std::FILE, FileCloser>;

[[noreturn]] void run_child(const std::function<void()> &fn, std::FILE *out, std::FILE *err)
{
    dup2(fileno(out), STDOUT_FILENO);
    dup2(fileno(err), STDERR_FILENO);
    fn();
    std::fflush(nullptr);
    _exit(0);
}

} // namespace

ChildResult run_in_child(const std::function<void()> &fn)
{
    TempFile out(std::tmpfile());
    TempFile err(std::tmpfile());
    if (!out || !err)
        throw std::runtime_error("cannot create capture files");
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid < 0)
        throw std::runtime_error("fork failed");
    if (pid == 0)
        run_child(fn, out.get(), err.get());

    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    ChildResult result;
    result.exited = WIFEXITED(status);
    result.exit_status = result.exited ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    result.out = read_whole_fd(fileno(out.get()));
    result.err = read_whole_fd(fileno(err.get()));
    return result;
}

} // namespace wex_test
