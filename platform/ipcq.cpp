// The transport's queues: each a listening socket plus the connections of
// the requests it sent and still waits to hear back on.
#include "ipcq.h"
#include "ipcq_wire.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <span>
#include <utility>
#include <vector>
#include <poll.h>
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
// connected; a stalled sender is dropped after it, and never holds up the
// others meanwhile.
constexpr std::chrono::seconds kFrameTimeout{5};
// Senders whose message is still arriving; past this the oldest is dropped.
constexpr std::size_t kMaxIncoming = 256;

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

// A connection accepted on a queue whose message has not all arrived. The
// payload grows only as bytes come, so a header that declares a huge
// length costs nothing until the bytes are really sent.
struct Incoming {
    Fd connection;
    Deadline deadline{kFrameTimeout};
    FrameHeader header{};
    std::size_t header_got = 0;
    std::vector<std::byte> payload;

    bool complete() const { return header_got == sizeof header && payload.size() == header.length; }
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
    std::mutex receiving;          // one receiver at a time owns incoming
    std::deque<Incoming> incoming; // in the order the senders connected

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
    // Non-blocking: a receiver accepts every waiting sender and then goes on.
    Fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
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

bool acceptable_request(const FrameHeader &header)
{
    const bool kind_served = header.kind == static_cast<uint32_t>(Kind::one_way) ||
                             header.kind == static_cast<uint32_t>(Kind::request);
    return header.magic == ipcq_wire::kMagic && header.length <= IPCQ_MAX_PAYLOAD && kind_served;
}

// The next bytes a connection owes: the rest of the header, then of the
// payload (a chunk at a time, the payload growing by what was asked).
std::span<std::byte> next_bytes(Incoming &in)
{
    constexpr std::size_t kChunk = 64 * 1024;
    if (in.header_got < sizeof in.header)
        return {reinterpret_cast<std::byte *>(&in.header) + in.header_got, sizeof in.header - in.header_got};
    const std::size_t had = in.payload.size();
    const std::size_t want = std::min<std::size_t>(in.header.length - had, kChunk);
    in.payload.resize(had + want);
    return {in.payload.data() + had, want};
}

// Reads what has arrived on one connection. false when its sender is to be
// dropped: it closed or failed before its message was whole, or sent
// something that is no request.
bool read_arrived(Incoming &in)
{
    while (!in.complete()) {
        const std::span<std::byte> into = next_bytes(in);
        const bool in_header = in.header_got < sizeof in.header;
        const ssize_t got = recv(in.connection.get(), into.data(), into.size(), MSG_DONTWAIT);
        const std::size_t kept = got > 0 ? static_cast<std::size_t>(got) : 0;
        if (!in_header)
            in.payload.resize(in.payload.size() - into.size() + kept);
        if (got == 0)
            return false;
        if (got < 0)
            return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
        if (in_header && (in.header_got += kept) == sizeof in.header && !acceptable_request(in.header))
            return false;
    }
    return true;
}

// Accepts every sender waiting on the queue's socket; when too many are
// still sending, the one that connected first gives way.
void accept_waiting(Queue &queue)
{
    for (std::size_t round = 0; round < kMaxIncoming; ++round) {
        Fd connection(accept4(queue.listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (connection.get() < 0)
            return;
        if (queue.incoming.size() == kMaxIncoming)
            queue.incoming.pop_front();
        queue.incoming.emplace_back();
        queue.incoming.back().connection = std::move(connection);
    }
}

// Hands out the first whole message, in the order the senders connected.
bool take_complete(Queue &queue, ipcq_msg_handle_t *msg)
{
    const auto whole = std::find_if(queue.incoming.begin(), queue.incoming.end(),
                                    [](const Incoming &in) { return in.complete(); });
    if (whole == queue.incoming.end())
        return false;
    std::unique_ptr<ipcq_msg, void (*)(ipcq_msg *)> message(new_message(whole->header), free_message);
    if (!message)
        throw std::bad_alloc();
    if (whole->header.length > 0) {
        message->payload = std::malloc(whole->header.length);
        if (!message->payload)
            throw std::bad_alloc();
        std::memcpy(message->payload, whole->payload.data(), whole->header.length);
    }
    if (whole->header.kind == static_cast<uint32_t>(Kind::request))
        message->reply_fd = whole->connection.release();
    queue.incoming.erase(whole);
    replace_message(msg, message.release());
    return true;
}

// Reads every connection poll found ready and drops the senders that
// failed, misbehaved or ran out of time.
void read_ready(Queue &queue, const std::vector<pollfd> &polled)
{
    std::size_t at = 0;
    for (std::size_t i = 1; i < polled.size(); ++i, ++at) {
        Incoming &in = queue.incoming[at];
        const bool ready = (polled[i].revents & (POLLIN | POLLHUP | POLLERR)) != 0;
        if ((ready && !read_arrived(in)) || (!in.complete() && in.deadline.remaining_ms() == 0)) {
            queue.incoming.erase(queue.incoming.begin() + static_cast<std::ptrdiff_t>(at));
            --at;
        }
    }
}

// The socket and every connection still sending; the wait until the
// sooner of the deadline and the first sender's time running out.
std::vector<pollfd> poll_set(const Queue &queue, const Deadline &deadline, int &wait_ms)
{
    std::vector<pollfd> polled{{queue.listener.get(), POLLIN, 0}};
    wait_ms = deadline.remaining_ms();
    for (const Incoming &in : queue.incoming) {
        polled.push_back({in.connection.get(), POLLIN, 0});
        wait_ms = std::min(wait_ms, in.deadline.remaining_ms());
    }
    return polled;
}

// Waits for the next whole message from any sender on the queue's socket;
// senders that connect and stall hold up nobody. A signal ends the wait
// (EINTR), so a server loop can notice it is asked to stop.
int receive_request(Queue &queue, ipcq_msg_handle_t *msg, const Deadline &deadline)
{
    const std::lock_guard lock(queue.receiving);
    for (;;) {
        if (take_complete(queue, msg))
            return 0;
        int wait_ms = 0;
        std::vector<pollfd> polled = poll_set(queue, deadline, wait_ms);
        const int ready = poll(polled.data(), polled.size(), wait_ms);
        if (ready < 0)
            return queue.fail(errno);
        if (ready == 0 && deadline.remaining_ms() == 0)
            return queue.fail(ETIME);
        read_ready(queue, polled);
        if (polled[0].revents & POLLIN)
            accept_waiting(queue);
    }
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
        if (state->path.empty() || !ipcq_wire::ensure_runtime_dir() ||
            !ipcq_wire::socket_path_usable(state->path))
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
