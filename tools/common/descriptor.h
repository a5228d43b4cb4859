// An open file descriptor owned for a scope, and reads that fill a block.
#ifndef WEX_TOOLS_DESCRIPTOR_H
#define WEX_TOOLS_DESCRIPTOR_H

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace wex_tools
{

// Closes the descriptor when it goes; the standard streams are never closed.
class Descriptor
{
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return fd_; }

  private:
    int fd_;
};

// Fills the block from fd, short only at the end of the input; the bytes
// read, or -1 with errno.
ssize_t read_block(int fd, uint8_t *block, std::size_t size);

} // namespace wex_tools

#endif
