// Messages written straight to terminals: the caller's own, one named
// terminal, or the console and every pseudo-terminal of the switch.
#include <wex/diag.h>

#include "common/paths.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr int kPseudoTerminals = 32;

// Existing terminals only: no entry is created under /dev, the terminal
// does not become the process's controlling one, and a terminal held up by
// flow control refuses the bytes instead of blocking the caller.
int open_terminal(const char *path) noexcept
{
    return open(path, O_WRONLY | O_NOCTTY | O_NONBLOCK);
}

void write_all(int fd, const char *bytes, std::size_t count) noexcept
{
    while (count > 0) {
        const ssize_t written = write(fd, bytes, count);
        if (written <= 0)
            return;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

} // namespace

extern "C" {

WEX_API int display_terminal(const char *text) noexcept
{
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    const char *terminal = ttyname(0);
    char path[PATH_MAX];
    if (!text || !terminal || std::snprintf(path, sizeof path, "%s%s", WEX_PATH(""), terminal) >= PATH_MAX)
        return 0;
    const int fd = open_terminal(path);
    if (fd < 0)
        return 0;
    write_all(fd, text, std::strlen(text) + 1);
    close(fd);
    return 0;
}

WEX_API int notify_session(const char *name, const char *text) noexcept
{
    char path[PATH_MAX];
    if (!name || !text || std::snprintf(path, sizeof path, "%s%s", WEX_PATH("/dev/"), name) >= PATH_MAX)
        return -1;
    const int fd = open_terminal(path);
    if (fd < 0)
        return fd;
    write_all(fd, text, std::strlen(text));
    return close(fd);
}

WEX_API int wex_notify_cli_sessions(const char *text) noexcept
{
    notify_session("ttyS0", text);
    int result = -1;
    for (int n = 0; n < kPseudoTerminals; ++n) {
        char name[16];
        std::snprintf(name, sizeof name, "pts/%d", n);
        result = notify_session(name, text);
    }
    return result;
}

} // extern "C"
