// The command-list filter: a script line already in the context's list is
// not run again; a new one is appended to the list and run. Every process of
// a context serialises on an exclusive lock of the list while it reads and
// extends it.
#include "exec/cmdlist_filter.h"
#include "common/context.h"
#include "common/paths.h"
#include "exec/exec_common.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <unistd.h>

namespace wex::exec
{

namespace
{

constexpr std::size_t kScriptLineCompared = 240;
constexpr int kMaxWordPairs = 99;
constexpr char kListPrefix[] = WEX_PATH("/volatile/wex_cmdlist");

struct StreamCloser {
    void operator()(std::FILE *stream) const noexcept { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

class Descriptor
{
  public:
    explicit Descriptor(int fd) noexcept : fd_(fd) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { reset(); }
    int get() const noexcept { return fd_; }
    void reset() noexcept
    {
        if (fd_ >= 0)
            close(fd_);
        fd_ = -1;
    }

  private:
    int fd_;
};

// A getline buffer, released with the object.
struct LineBuffer {
    char *data = nullptr;
    std::size_t capacity = 0;
    LineBuffer() = default;
    LineBuffer(const LineBuffer &) = delete;
    LineBuffer &operator=(const LineBuffer &) = delete;
    ~LineBuffer() { std::free(data); }
    ssize_t read(std::FILE *stream) noexcept { return getline(&data, &capacity, stream); }
};

// Removes the temporary script when the filter ends, whichever way. unlink
// rather than remove: a folder standing at that name is not the library's.
struct TemporaryScript {
    char name[WEX_EXEC_PATH_SIZE];
    ~TemporaryScript() { unlink(name); }
};

// Blank-separated words of a text; tabs and line feeds belong to words.
class Words
{
  public:
    explicit Words(std::string_view text) noexcept : rest_(text) {}
    bool next(std::string_view &word) noexcept
    {
        const std::size_t start = rest_.find_first_not_of(' ');
        if (start == std::string_view::npos)
            return false;
        rest_.remove_prefix(start);
        const std::size_t end = std::min(rest_.find(' '), rest_.size());
        word = rest_.substr(0, end);
        rest_.remove_prefix(end);
        return true;
    }

  private:
    std::string_view rest_;
};

Stream open_stream(const char *name, const char *mode) noexcept
{
    Stream stream(std::fopen(name, mode));
    if (!stream) {
        const int error = errno;
        std::printf("Unable to fopen file %s err %d\n", name, error);
    }
    return stream;
}

// A C text ends at its first NUL, as the comparison of the words does.
std::string_view c_text(const char *data, std::size_t length) noexcept
{
    return std::string_view(data, strnlen(data, length));
}

bool list_holds(const char *list_name, std::string_view script_line) noexcept
{
    Stream list = open_stream(list_name, "re");
    if (!list)
        return false;
    LineBuffer entry;
    ssize_t length;
    while ((length = entry.read(list.get())) >= 0) {
        if (cmdlist_lines_equal(script_line, c_text(entry.data, static_cast<std::size_t>(length))))
            return true;
    }
    return false;
}

// Appends the line to the list, then to the temporary script. A line that
// cannot be recorded is not kept either, so it is never run unrecorded.
void record_and_keep(const char *list_name, std::string_view line, std::FILE *temporary) noexcept
{
    Stream list = open_stream(list_name, "r+e");
    if (!list)
        return;
    if (std::fseek(list.get(), 0, SEEK_END) != 0) {
        const int error = errno;
        std::printf("Unable to fseek end of file %s err %d\n", list_name, error);
        return;
    }
    std::fwrite(line.data(), 1, line.size(), list.get());
    std::fwrite(line.data(), 1, line.size(), temporary);
}

void filter_lines(std::FILE *script, std::FILE *temporary, const char *list_name) noexcept
{
    LineBuffer line;
    ssize_t length;
    while ((length = line.read(script)) >= 0) {
        const std::string_view text(line.data, static_cast<std::size_t>(length));
        if (!list_holds(list_name, text))
            record_and_keep(list_name, text, temporary);
    }
}

// flock waits for the lock; a signal that interrupts the wait is not a
// failure to lock, so the wait goes on.
bool change_lock(int fd, int operation) noexcept
{
    int result;
    do
        result = flock(fd, operation);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

uint32_t report_and_run_whole(const char *what, const char *name, const wex_system_params_t &params) noexcept
{
    const int error = errno;
    std::printf("Unable to %s file %s err %d\n", what, name, error);
    wex_system_params_t copy = params;
    return wex_system_execute(&copy);
}

} // namespace

bool cmdlist_lines_equal(std::string_view script_line, std::string_view list_line) noexcept
{
    // Only the first 240 bytes of the script line take part, read as a C
    // text: the working copy is cut there and terminated.
    const std::string_view key =
        c_text(script_line.data(), std::min(script_line.size(), kScriptLineCompared));
    Words script_words(key), list_words(c_text(list_line.data(), list_line.size()));
    std::string_view a, b;
    bool more_a = script_words.next(a), more_b = list_words.next(b);
    for (int pairs = 0; more_a && more_b; ++pairs) {
        if (pairs == kMaxWordPairs || a != b)
            return false;
        more_a = script_words.next(a);
        more_b = list_words.next(b);
    }
    return !more_a && !more_b;
}

uint32_t cmdlist_filter(const wex_system_params_t &params) noexcept
{
    // A temporary name cut to the field would name another file, perhaps the
    // script itself, which the filter would then empty and delete: the script
    // runs whole instead, as on every other path the filter cannot take.
    constexpr char kSuffix[] = "_tmp";
    const std::size_t name_length = strnlen(params.file_name, sizeof params.file_name);
    if (name_length + sizeof kSuffix > sizeof params.file_name) {
        if (params.debug)
            std::printf("Unable to name temporary file for %.*s err %d\n", static_cast<int>(name_length),
                        params.file_name, ENAMETOOLONG);
        wex_system_params_t whole = params;
        return wex_system_execute(&whole);
    }
    TemporaryScript temporary;
    std::memcpy(temporary.name, params.file_name, name_length);
    std::memcpy(temporary.name + name_length, kSuffix, sizeof kSuffix);
    char list_name[sizeof kListPrefix + 8];
    std::snprintf(list_name, sizeof list_name, "%s_%u", kListPrefix, context_number());

    wex_system_params_t whole = params;
    // Close-on-exec everywhere: a shell started while the list is open must
    // not inherit it and hold its lock past the filter.
    Descriptor list_fd(open(list_name, O_RDWR | O_APPEND | O_CLOEXEC));
    if (list_fd.get() < 0)
        return wex_system_execute(&whole);
    Stream script(std::fopen(params.file_name, "re"));
    if (!script)
        return report_and_run_whole("fopen", params.file_name, params);
    Stream temporary_stream(std::fopen(temporary.name, "w+e"));
    if (!temporary_stream)
        return report_and_run_whole("fopen", temporary.name, params);
    if (!change_lock(list_fd.get(), LOCK_EX))
        return report_and_run_whole("lock", list_name, params);
    filter_lines(script.get(), temporary_stream.get(), list_name);
    if (!change_lock(list_fd.get(), LOCK_UN))
        return report_and_run_whole("unlock", list_name, params);

    script.reset();
    temporary_stream.reset();
    list_fd.reset();
    wex_system_params_t filtered = params;
    std::memcpy(filtered.file_name, temporary.name, sizeof filtered.file_name);
    return wex_system_execute(&filtered);
}

} // namespace wex::exec
