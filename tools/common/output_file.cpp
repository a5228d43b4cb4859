#include "output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wex_tools
{
namespace
{

bool write_all(int fd, std::span<const uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t wrote = write(fd, bytes.data(), bytes.size());
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(wrote));
    }
    return true;
}

} // namespace

bool write_file_whole(const char *program, const std::string &path, std::span<const uint8_t> bytes)
{
    std::string temporary = path + ".XXXXXX";
    const int fd = mkstemp(temporary.data());
    if (fd < 0) {
        std::fprintf(stderr, "%s: %s: cannot be written: %s\n", program, path.c_str(), std::strerror(errno));
        return false;
    }
    // Made by this user for this user, as any new file would be.
    const mode_t mask = umask(0);
    umask(mask);
    const bool written = fchmod(fd, 0666 & ~mask) == 0 && write_all(fd, bytes) && fsync(fd) == 0;
    const int error = errno;
    const bool closed = close(fd) == 0;
    if (!written || !closed || rename(temporary.c_str(), path.c_str()) != 0) {
        const int why = !written ? error : errno;
        unlink(temporary.c_str());
        std::fprintf(stderr, "%s: %s: cannot be written: %s\n", program, path.c_str(), std::strerror(why));
        return false;
    }
    return true;
}

} // namespace wex_tools
