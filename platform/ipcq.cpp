// The transport's queues: each a listening socket plus the connections of
// the requests it sent and still waits to hear back on.
#include "ipcq.h"
#include "ipcq_wire.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using ipcq_wire::Deadline;
using ipcq_wire::FrameHeader;
using ipcq_wire::Kind;

struct ipcq_msg {
    FrameHeader header{};
    void *payload = nullptr; // malloc'd, header.length bytes
    int reply_fd = -1;       // a received request's connection, until answered
};

namespace
{

// A request whose reply has not been received; a sender that never asks for
// its replies cannot make its queue hold more connections than this.
constexpr std::size_t kMaxPendingReplies = 64;
// How long a receiver waits for the rest of a message once a sender has
// connected, so a stalled sender cannot hold a queue.
constexpr std::chrono::seconds kFrameTimeout{5};

class Fd
{
  public:
    explicit Fd(int fd = -1) : fd_(fd) {}
    Fd(Fd &&other) noexcept : fd_(other.release()) {}
    Fd &operator=(Fd &&other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~Fd() { reset(); }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }
    void reset(int fd = -1)
    {
        if (fd_ >= 0)
            close(fd_);
        fd_ = fd;
    }

  private:
    int fd_;
};

struct Queue {
    uint32_t address = 0;
    uint32_t number = 0;
    std::string path;
    Fd listener;
    std::mutex mutex;
    uint32_t next_token = 1;
    std::deque<std::pair<uint32_t, Fd>> pending;
    int last_errno = 0;

    uint32_t take_token()
    {
        std::lock_guard lock(mutex);
        const uint32_t token = next_token++;
        if (next_token == 0)
            next_token = 1; // 0 means "any request" to a receiver
        return token;
    }
    void add_pending(uint32_t token, Fd connection)
    {
        std::lock_guard lock(mutex);
        if (pending.size() == kMaxPendingReplies)
            pending.pop_front();
        pending.emplace_back(token, std::move(connection));
    }
    Fd take_pending(uint32_t token)
    {
        std::lock_guard lock(mutex);
        for (auto it = pending.begin(); it != pending.end(); ++it) {
            if (it->first == token) {
                Fd connection = std::move(it->second);
                pending.erase(it);
                return connection;
            }
        }
        return Fd{};
    }
    // Records the failure and hands back -1 for the caller to return.
    int fail(int error)
    {
        std::lock_guard lock(mutex);
        last_errno = error;
        errno = error;
        return -1;
    }
};

std::mutex registry_mutex;
std::map<int, std::shared_ptr<Queue>> registry;
int next_queue_id = 1;

std::shared_ptr<Queue> find_queue(int q)
{
    std::lock_guard lock(registry_mutex);
    const auto it = registry.find(q);
    return it == registry.end() ? nullptr : it->second;
}

// Binds the queue's socket, taking over a socket file that nobody listens
// on any more (left by a process that died).
Fd listen_on(const std::string &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const auto *raw = reinterpret_cast<const sockaddr *>(&address);
    Fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (fd.get() < 0)
        return Fd{};
    if (bind(fd.get(), raw, sizeof address) != 0) {
        if (errno != EADDRINUSE)
            return Fd{};
        Fd probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (probe.get() >= 0 && connect(probe.get(), raw, sizeof address) == 0) {
            errno = EADDRINUSE;
            return Fd{};
        }
        unlink(path.c_str());
        if (bind(fd.get(), raw, sizeof address) != 0)
            return Fd{};
    }
    if (listen(fd.get(), 128) != 0)
        return Fd{};
    return fd;
}

ipcq_msg *new_message(const FrameHeader &header)
{
    auto *message = new (std::nothrow) ipcq_msg;
    if (message)
        message->header = header;
    return message;
}

void free_message(ipcq_msg *message)
{
    if (!message)
        return;
    if (message->reply_fd >= 0)
        close(message->reply_fd);
    std::free(message->payload);
    delete message;
}

// Reads one whole frame from a connection into a new message.
ipcq_msg *read_message(int fd, const Deadline &deadline)
{
    FrameHeader header{};
    if (!ipcq_wire::read_exact(fd, &header, sizeof header, deadline))
        return nullptr;
    if (header.magic != ipcq_wire::kMagic || header.length > IPCQ_MAX_PAYLOAD) {
        errno = EBADMSG;
        return nullptr;
    }
    std::unique_ptr<ipcq_msg, void (*)(ipcq_msg *)> message(new_message(header), free_message);
    if (message && header.length > 0)
        message->payload = std::malloc(header.length);
    if (!message || (header.length > 0 && !message->payload)) {
        errno = ENOMEM;
        return nullptr;
    }
    if (!ipcq_wire::read_exact(fd, message->payload, header.length, deadline))
        return nullptr;
    return message.release();
}

void replace_message(ipcq_msg_handle_t *slot, ipcq_msg *message)
{
    free_message(*slot);
    *slot = message;
}

Deadline receive_deadline(const ipcq_recv_options_t &options)
{
    const uint32_t seconds = options.timeout_s ? options.timeout_s : IPCQ_DEFAULT_TIMEOUT_S;
    return Deadline(std::chrono::seconds(seconds));
}

int receive_reply(Queue &queue, ipcq_msg_handle_t *msg, uint32_t token, const Deadline &deadline)
{
    Fd connection = queue.take_pending(token);
    if (connection.get() < 0)
        return queue.fail(ENOMSG);
    const int ready = ipcq_wire::wait_readable(connection.get(), deadline, false);
    if (ready <= 0)
        return queue.fail(ready == 0 ? ETIME : errno);
    ipcq_msg *reply = read_message(connection.get(), Deadline(kFrameTimeout));
    if (!reply)
        return queue.fail(errno);
    if (reply->header.kind != static_cast<uint32_t>(Kind::reply) || reply->header.token != token) {
        free_message(reply);
        return queue.fail(EBADMSG);
    }
    replace_message(msg, reply);
    return 0;
}

// Waits for the next sender on the queue's socket and reads its message. A
// signal ends the wait (EINTR), so a server loop can notice it is asked to
// stop.
int receive_request(Queue &queue, ipcq_msg_handle_t *msg, const Deadline &deadline)
{
    const int ready = ipcq_wire::wait_readable(queue.listener.get(), deadline, true);
    if (ready <= 0)
        return queue.fail(ready == 0 ? ETIME : errno);
    Fd connection(accept4(queue.listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (connection.get() < 0)
        return queue.fail(errno);
    ipcq_msg *request = read_message(connection.get(), Deadline(kFrameTimeout));
    if (!request)
        return queue.fail(errno);
    if (request->header.kind == static_cast<uint32_t>(Kind::request))
        request->reply_fd = connection.release();
    replace_message(msg, request);
    return 0;
}

FrameHeader header_from(const Queue &queue, Kind kind, uint32_t opcode, uint32_t token, uint32_t length)
{
    return FrameHeader{ipcq_wire::kMagic,
                       static_cast<uint32_t>(kind),
                       opcode,
                       queue.address,
                       queue.number,
                       token,
                       length,
                       0};
}

int send_message(Queue &queue, uint32_t dest_address, uint32_t dest_queue, uint32_t opcode,
                 const void *payload, uint32_t len, ipcq_msg_handle_t *msg)
{
    if (len > IPCQ_MAX_PAYLOAD)
        return queue.fail(EMSGSIZE);
    if (len > 0 && !payload)
        return queue.fail(EINVAL);
    const uint32_t token = msg ? queue.take_token() : 0;
    const Kind kind = msg ? Kind::request : Kind::one_way;
    const FrameHeader header = header_from(queue, kind, opcode, token, len);
    ipcq_msg *sent = msg ? new_message(header) : nullptr;
    if (msg && !sent)
        return queue.fail(ENOMEM);
    const Deadline deadline(std::chrono::seconds(IPCQ_SEND_TIMEOUT_S));
    Fd connection(ipcq_wire::connect_queue(dest_address, dest_queue, deadline));
    if (connection.get() < 0 || !ipcq_wire::write_frame(connection.get(), header, payload, deadline)) {
        const int error = errno;
        free_message(sent);
        return queue.fail(error);
    }
    if (msg) {
        sent->header.length = 0; // the handle of a sent message keeps no copy of its payload
        queue.add_pending(token, std::move(connection));
        replace_message(msg, sent);
    }
    return 0;
}

template <typename Call> int guarded(Call call) noexcept
{
    try {
        return call();
    } catch (const std::bad_alloc &) {
        errno = ENOMEM;
    } catch (...) {
        errno = EIO;
    }
    return -1;
}

const ipcq_msg *message_of(const ipcq_msg_handle_t *msg)
{
    return msg ? *msg : nullptr;
}

} // namespace

extern "C" int ipcq_open(uint32_t address, uint32_t queue)
{
    return guarded([&] {
        auto state = std::make_shared<Queue>();
        state->address = address;
        state->number = queue;
        state->path = ipcq_wire::queue_path(address, queue);
        if (state->path.empty() || !ipcq_wire::ensure_runtime_dir())
            return -1;
        state->listener = listen_on(state->path);
        if (state->listener.get() < 0)
            return -1;
        std::lock_guard lock(registry_mutex);
        const int id = next_queue_id++;
        registry.emplace(id, std::move(state));
        return id;
    });
}

extern "C" int ipcq_close(int q)
{
    return guarded([&] {
        std::shared_ptr<Queue> state;
        {
            std::lock_guard lock(registry_mutex);
            const auto it = registry.find(q);
            if (it == registry.end()) {
                errno = EBADF;
                return -1;
            }
            state = std::move(it->second);
            registry.erase(it);
        }
        unlink(state->path.c_str());
        return 0;
    });
}

extern "C" int ipcq_send(int q, uint32_t dest_address, uint32_t dest_queue, uint32_t opcode,
                         const void *payload, uint32_t len, ipcq_msg_handle_t *msg, uint32_t flags,
                         const ipcq_send_options_t * /*options: one supervisor, no standby here*/)
{
    return guarded([&] {
        const auto queue = find_queue(q);
        if (!queue) {
            errno = EBADF;
            return -1;
        }
        if (flags != 0)
            return queue->fail(EINVAL);
        return send_message(*queue, dest_address, dest_queue, opcode, payload, len, msg);
    });
}

extern "C" int ipcq_recv(int q, ipcq_msg_handle_t *msg, const ipcq_recv_options_t *options)
{
    return guarded([&] {
        const auto queue = find_queue(q);
        if (!queue) {
            errno = EBADF;
            return -1;
        }
        if (!msg || !options)
            return queue->fail(EINVAL);
        const Deadline deadline = receive_deadline(*options);
        return options->rr_token ? receive_reply(*queue, msg, options->rr_token, deadline)
                                 : receive_request(*queue, msg, deadline);
    });
}

extern "C" int ipcq_drop(int /*q: messages do not belong to a queue here*/, ipcq_msg_handle_t *msg)
{
    if (!msg) {
        errno = EINVAL;
        return -1;
    }
    replace_message(msg, nullptr);
    return 0;
}

extern "C" uint32_t ipcq_rr_token_get(const ipcq_msg_handle_t *msg)
{
    const ipcq_msg *message = message_of(msg);
    return message ? message->header.token : 0;
}

extern "C" void *ipcq_payload_get(const ipcq_msg_handle_t *msg)
{
    const ipcq_msg *message = message_of(msg);
    return message ? message->payload : nullptr;
}

extern "C" uint32_t ipcq_payload_size(const ipcq_msg_handle_t *msg)
{
    const ipcq_msg *message = message_of(msg);
    return message ? message->header.length : 0;
}

extern "C" int ipcq_errno_get(int q)
{
    const auto queue = find_queue(q);
    if (!queue)
        return EBADF;
    std::lock_guard lock(queue->mutex);
    return queue->last_errno;
}

extern "C" uint32_t ipcq_opcode_get(const ipcq_msg_handle_t *msg)
{
    const ipcq_msg *message = message_of(msg);
    return message ? message->header.opcode : 0;
}

extern "C" uint32_t ipcq_sender_address_get(const ipcq_msg_handle_t *msg)
{
    const ipcq_msg *message = message_of(msg);
    return message ? message->header.sender_address : 0;
}

extern "C" uint32_t ipcq_sender_queue_get(const ipcq_msg_handle_t *msg)
{
    const ipcq_msg *message = message_of(msg);
    return message ? message->header.sender_queue : 0;
}

extern "C" int ipcq_reply(int q, const ipcq_msg_handle_t *request, const void *payload, uint32_t len)
{
    return guarded([&] {
        const auto queue = find_queue(q);
        if (!queue) {
            errno = EBADF;
            return -1;
        }
        ipcq_msg *message = request ? *request : nullptr;
        if (!message || message->reply_fd < 0 || (len > 0 && !payload))
            return queue->fail(EINVAL);
        if (len > IPCQ_MAX_PAYLOAD)
            return queue->fail(EMSGSIZE);
        const FrameHeader header =
            header_from(*queue, Kind::reply, message->header.opcode, message->header.token, len);
        Fd connection(std::exchange(message->reply_fd, -1)); // one reply per request
        if (!ipcq_wire::write_frame(connection.get(), header, payload,
                                    Deadline(std::chrono::seconds(IPCQ_SEND_TIMEOUT_S))))
            return queue->fail(errno);
        return 0;
    });
}
