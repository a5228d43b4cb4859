#include "ipcq_wire.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace ipcq_wire
{
namespace
{

std::string runtime_dir()
{
    if (const char *dir = std::getenv("IPCQ_RUNTIME_DIR"); dir && *dir)
        return dir;
    return "/tmp/ipcq-" + std::to_string(getuid());
}

// Polls fd for events; the same contract as wait_readable.
int wait_for(int fd, short events, const Deadline &deadline, bool interruptible)
{
    for (;;) {
        pollfd entry{fd, events, 0};
        const int ready = poll(&entry, 1, deadline.remaining_ms());
        if (ready > 0)
            return 1;
        if (ready == 0)
            return 0;
        if (errno != EINTR || interruptible)
            return -1;
    }
}

// Moves the message's parts past the bytes already moved.
void skip_moved(msghdr &message, std::size_t moved)
{
    while (message.msg_iovlen > 0 && moved >= message.msg_iov->iov_len) {
        moved -= message.msg_iov->iov_len;
        ++message.msg_iov;
        --message.msg_iovlen;
    }
    if (message.msg_iovlen > 0) {
        message.msg_iov->iov_base = static_cast<std::byte *>(message.msg_iov->iov_base) + moved;
        message.msg_iov->iov_len -= moved;
    }
}

// Moves the bytes the message's parts describe with io (a non-blocking
// sendmsg or recvmsg), waiting for the descriptor between tries. A peer
// that closes first is ECONNRESET, a deadline that passes is ETIME;
// untouched tells whether no byte moved.
template <typename Io>
bool transfer(int fd, msghdr &message, short events, const Deadline &deadline, bool &untouched, Io io)
{
    untouched = true;
    while (message.msg_iovlen > 0) {
        const ssize_t moved = io(&message);
        if (moved > 0) {
            untouched = false;
            skip_moved(message, static_cast<std::size_t>(moved));
            continue;
        }
        if (moved == 0) {
            errno = ECONNRESET;
            return false;
        }
        if (errno != EAGAIN && errno != EINTR)
            return false;
        const int ready = wait_for(fd, events, deadline, false);
        if (ready <= 0) {
            if (ready == 0)
                errno = ETIME;
            return false;
        }
    }
    return true;
}

// true when there is no reason to refuse the path; otherwise says why on
// standard error and fails with EACCES.
bool accept_unless(const char *what, const std::string &path, const char *why)
{
    if (!why)
        return true;
    std::fprintf(stderr, "ipcq: %s %s %s; refusing it\n", what, path.c_str(), why);
    errno = EACCES;
    return false;
}

} // namespace

int Deadline::remaining_ms() const
{
    using namespace std::chrono;
    const auto left = duration_cast<milliseconds>(end_ - steady_clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

std::string queue_path(uint32_t address, uint32_t queue)
{
    char name[32];
    std::snprintf(name, sizeof name, "/%08x.%u", address, queue);
    std::string path = runtime_dir() + name;
    if (path.size() >= sizeof(sockaddr_un{}.sun_path)) {
        errno = ENAMETOOLONG;
        return {};
    }
    return path;
}

bool ensure_runtime_dir()
{
    const std::string dir = runtime_dir();
    if (mkdir(dir.c_str(), 0700) == 0)
        return true;
    if (errno != EEXIST)
        return false;
    // Whoever can write the directory can plant a socket where a queue is
    // looked for: only the user's own private directory will do.
    struct stat status {
    };
    if (lstat(dir.c_str(), &status) != 0)
        return false;
    const char *why = nullptr;
    if (!S_ISDIR(status.st_mode))
        why = "is not a directory";
    else if (status.st_uid != getuid())
        why = "belongs to another user";
    else if ((status.st_mode & 077) != 0)
        why = "is open to other users (it must be mode 0700)";
    return accept_unless("runtime directory", dir, why);
}

bool socket_path_usable(const std::string &path)
{
    struct stat status {
    };
    if (lstat(path.c_str(), &status) != 0)
        return errno == ENOENT;
    const char *why = nullptr;
    if (S_ISLNK(status.st_mode))
        why = "is a symbolic link";
    else if (status.st_uid != getuid())
        why = "belongs to another user";
    else if (!S_ISSOCK(status.st_mode))
        why = "is not a socket";
    return accept_unless("queue socket", path, why);
}

int connect_queue(uint32_t address, uint32_t queue, const Deadline &deadline)
{
    const std::string path = queue_path(address, queue);
    if (path.empty())
        return -1;
    sockaddr_un target{};
    target.sun_family = AF_UNIX;
    std::memcpy(target.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return -1;
    // A full backlog answers EAGAIN at once; try again until the deadline
    // instead of failing a receiver that is merely busy.
    while (connect(fd, reinterpret_cast<const sockaddr *>(&target), sizeof target) != 0) {
        const int error = errno;
        if ((error != EAGAIN && error != EINTR) || deadline.remaining_ms() == 0) {
            close(fd);
            errno = error == EAGAIN ? ETIME : error;
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return fd;
}

bool write_frame(int fd, const FrameHeader &header, const void *payload, const Deadline &deadline,
                 bool &untouched)
{
    iovec parts[2] = {{const_cast<FrameHeader *>(&header), sizeof header},
                      {const_cast<void *>(payload), header.length}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = header.length > 0 ? 2 : 1;
    return transfer(fd, message, POLLOUT, deadline, untouched,
                    [fd](const msghdr *m) { return sendmsg(fd, m, MSG_NOSIGNAL | MSG_DONTWAIT); });
}

bool read_exact(int fd, void *buffer, std::size_t size, const Deadline &deadline)
{
    iovec part{buffer, size};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = size > 0 ? 1 : 0;
    bool untouched = true;
    return transfer(fd, message, POLLIN, deadline, untouched,
                    [fd](msghdr *m) { return recvmsg(fd, m, MSG_DONTWAIT); });
}

int wait_readable(int fd, const Deadline &deadline, bool interruptible)
{
    return wait_for(fd, POLLIN, deadline, interruptible);
}

} // namespace ipcq_wire
