#include "support/capture.h"

#include <wex/output.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace wex_test
{

namespace
{

// Points one descriptor at a temporary file for its lifetime.
class Redirect
{
  public:
    explicit Redirect(int fd) : fd_(fd), file_(std::tmpfile()), saved_(dup(fd))
    {
        if (!file_ || saved_ < 0)
            throw std::runtime_error("cannot redirect descriptor");
        std::fflush(nullptr);
        dup2(fileno(file_), fd_);
    }

    Redirect(const Redirect &) = delete;
    Redirect &operator=(const Redirect &) = delete;

    ~Redirect()
    {
        restore();
        std::fclose(file_);
    }

    std::string finish()
    {
        restore();
        return read_whole_fd(fileno(file_));
    }

  private:
    void restore()
    {
        if (saved_ < 0)
            return;
        std::fflush(nullptr);
        dup2(saved_, fd_);
        close(saved_);
        saved_ = -1;
    }

    int fd_;
    std::FILE *file_;
    int saved_;
};

} // namespace

std::string read_whole_fd(int fd)
{
    std::string text;
    char chunk[4096];
    off_t at = 0;
    for (ssize_t n; (n = pread(fd, chunk, sizeof chunk, at)) > 0; at += n)
        text.append(chunk, static_cast<std::size_t>(n));
    return text;
}

Output capture_output(const std::function<void()> &fn)
{
    Redirect out(STDOUT_FILENO);
    Redirect err(STDERR_FILENO);
    fn();
    Output result;
    result.err = err.finish();
    result.out = out.finish();
    return result;
}

std::string capture_combined(const std::function<void()> &fn)
{
    Redirect out(STDOUT_FILENO);
    const int saved_err = dup(STDERR_FILENO);
    dup2(STDOUT_FILENO, STDERR_FILENO);
    fn();
    std::fflush(nullptr);
    dup2(saved_err, STDERR_FILENO);
    close(saved_err);
    return out.finish();
}

std::string capture_stdout(const std::function<void()> &fn)
{
    return capture_output(fn).out;
}

std::string capture_buffered(const std::function<void()> &fn)
{
    wex_set_redir2buf();
    fn();
    char *buf = wex_get_buf();
    wex_reset_redir2buf();
    std::string text = buf ? buf : "";
    std::free(buf);
    return text;
}

} // namespace wex_test
