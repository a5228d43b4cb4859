// The transport's bytes on a connection: one frame header, then the payload.
#ifndef WEX_PLATFORM_IPCQ_WIRE_H
#define WEX_PLATFORM_IPCQ_WIRE_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace ipcq_wire
{

enum class Kind : uint32_t {
    one_way = 1, // nobody waits for a reply
    request = 2, // the sender waits on this connection for the reply
    reply = 3,
    unanswered = 4, // the receiver dropped the request with this token without a reply
};

// Both ends run on one machine, so the header is in host order.
struct FrameHeader {
    uint32_t magic;
    uint32_t kind;
    uint32_t opcode;
    uint32_t sender_address;
    uint32_t sender_queue;
    uint32_t token;
    uint32_t length;
    uint32_t reserved;
};
static_assert(sizeof(FrameHeader) == 32);

inline constexpr uint32_t kMagic = 0x49504351; // "IPCQ"

// A point in time after which a wait fails with ETIME.
class Deadline
{
  public:
    explicit Deadline(std::chrono::milliseconds span) : end_(std::chrono::steady_clock::now() + span) {}
    // The milliseconds left, for poll; 0 once the deadline has passed.
    int remaining_ms() const;

  private:
    std::chrono::steady_clock::time_point end_;
};

// The socket path of (address, queue) under the runtime directory; empty
// with errno ENAMETOOLONG when it does not fit a socket address.
std::string queue_path(uint32_t address, uint32_t queue);

// Creates the runtime directory (private to the user) when it is missing;
// refuses, with a line on standard error and EACCES, one that is not the
// user's own private directory.
bool ensure_runtime_dir();

// Whether a queue may bind its socket at path: nothing there yet, or a
// socket of the user's own (left by a process that died). A symbolic link
// or another user's file is refused with a line on standard error and
// EACCES.
bool socket_path_usable(const std::string &path);

// Connects to the queue's socket. Returns the descriptor, or -1 with errno.
int connect_queue(uint32_t address, uint32_t queue, const Deadline &deadline);

// Writes the header and the payload whole, in one call when the socket has
// room for them. false with errno on failure (ETIME when the peer does not
// take the bytes in time); untouched then tells whether no byte left.
bool write_frame(int fd, const FrameHeader &header, const void *payload, const Deadline &deadline,
                 bool &untouched);

// Reads exactly size bytes. false with errno: ECONNRESET when the peer
// closed first, ETIME when the deadline passed.
bool read_exact(int fd, void *buffer, std::size_t size, const Deadline &deadline);

// Waits until fd is readable: 1, 0 when the deadline passed, -1 with errno
// (EINTR only when interruptible).
int wait_readable(int fd, const Deadline &deadline, bool interruptible);

} // namespace ipcq_wire

#endif
