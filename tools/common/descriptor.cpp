#include "descriptor.h"

#include <cerrno>
#include <unistd.h>

namespace wex_tools
{

Descriptor::~Descriptor()
{
    if (fd_ > STDERR_FILENO)
        close(fd_);
}

ssize_t read_block(int fd, uint8_t *block, std::size_t size)
{
    std::size_t have = 0;
    while (have < size) {
        const ssize_t got = read(fd, block + have, size - have);
        if (got == 0)
            break;
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        have += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(have);
}

} // namespace wex_tools
