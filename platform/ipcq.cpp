// The transport's queues: each a listening socket, the links its senders
// keep to it, and the links it keeps to the queues it sends to.
#include "ipcq.h"
#include "ipcq_frame_reader.h"
#include "ipcq_link.h"
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
#include <utility>
#include <vector>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using ipcq_frame_reader::FrameReader;
using ipcq_link::Link;
using ipcq_link::Message;
using ipcq_wire::Deadline;
using ipcq_wire::FrameHeader;
using ipcq_wire::Kind;

namespace
{

// A request whose reply has not been received; a sender that never asks for
// its replies cannot make its queue remember more than this.
constexpr std::size_t kMaxPendingReplies = 64;
// Senders a queue keeps links with; past this, an idle one (its sender
// reconnects when it next sends) or else the oldest gives way. A stalled
// sender is dropped once its frame's time is out, and never holds up the
// others meanwhile.
constexpr std::size_t kMaxSenders = 256;

class Fd
{
  public:
    explicit Fd(int fd = -1) : fd_(fd) {}
    Fd(Fd &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Fd &operator=(Fd &&other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Fd()
    {
        if (fd_ >= 0)
            close(fd_);
    }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }

  private:
    int fd_;
};

// A sender linked to a queue; its message comes in through the link.
struct Sender {
    std::shared_ptr<Link> link;
    bool has_sent = false; // a whole message came: the link is kept while idle
    // A new sender's first message is on the clock from the start.
    ipcq_wire::Deadline first_deadline{ipcq_frame_reader::kFrameTimeout};

    FrameReader &incoming() const { return link->incoming(); }
    bool complete() const { return incoming().complete(); }
    // An idle sender is kept without a deadline; any other is on the clock.
    bool idle() const { return has_sent && !incoming().started(); }
    const ipcq_wire::Deadline &deadline() const
    {
        return incoming().started() ? incoming().deadline() : first_deadline;
    }
};

using Destination = std::pair<uint32_t, uint32_t>;

struct Queue {
    uint32_t address = 0;
    uint32_t number = 0;
    std::string path;
    Fd listener;
    std::mutex mutex;
    uint32_t next_token = 1;
    std::deque<std::pair<uint32_t, std::shared_ptr<Link>>> pending;
    std::map<Destination, std::shared_ptr<Link>> links;
    int last_errno = 0;
    std::mutex receiving;       // one receiver at a time owns senders
    std::deque<Sender> senders; // the next to be served first

    uint32_t take_token()
    {
        std::lock_guard lock(mutex);
        const uint32_t token = next_token++;
        if (next_token == 0)
            next_token = 1; // 0 means "any request" to a receiver
        return token;
    }
    void add_pending(uint32_t token, std::shared_ptr<Link> link)
    {
        std::lock_guard lock(mutex);
        if (pending.size() == kMaxPendingReplies) {
            pending.front().second->forget(pending.front().first);
            pending.pop_front();
        }
        pending.emplace_back(token, std::move(link));
    }
    std::shared_ptr<Link> take_pending(uint32_t token)
    {
        std::lock_guard lock(mutex);
        for (auto it = pending.begin(); it != pending.end(); ++it) {
            if (it->first == token) {
                std::shared_ptr<Link> link = std::move(it->second);
                pending.erase(it);
                return link;
            }
        }
        return nullptr;
    }
    // The kept link to a destination, if any. Whether its receiver is still
    // there is learnt from the send itself (see deliver).
    std::shared_ptr<Link> kept_link(const Destination &to)
    {
        std::lock_guard lock(mutex);
        const auto it = links.find(to);
        return it == links.end() ? nullptr : it->second;
    }
    std::shared_ptr<Link> new_link(const Destination &to, const Deadline &deadline)
    {
        Fd fd(ipcq_wire::connect_queue(to.first, to.second, deadline));
        if (fd.get() < 0)
            return nullptr;
        auto link = std::make_shared<Link>(fd.release());
        std::lock_guard lock(mutex);
        links[to] = link;
        return link;
    }
    void drop_link(const std::shared_ptr<Link> &link)
    {
        std::lock_guard lock(mutex);
        std::erase_if(links, [&](const auto &entry) { return entry.second == link; });
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

void replace_message(ipcq_msg_handle_t *slot, Message message)
{
    Message old(*slot);
    *slot = message.release();
}

Deadline receive_deadline(const ipcq_recv_options_t &options)
{
    const uint32_t seconds = options.timeout_s ? options.timeout_s : IPCQ_DEFAULT_TIMEOUT_S;
    return Deadline(std::chrono::seconds(seconds));
}

int receive_reply(Queue &queue, ipcq_msg_handle_t *msg, uint32_t token, const Deadline &deadline)
{
    const std::shared_ptr<Link> link = queue.take_pending(token);
    if (!link)
        return queue.fail(ENOMSG);
    Message reply = link->await_reply(token, deadline);
    if (!reply) {
        const int error = errno;
        if (link->broken())
            queue.drop_link(link);
        return queue.fail(error);
    }
    replace_message(msg, std::move(reply));
    return 0;
}

bool is_request(const FrameHeader &header)
{
    return header.kind == static_cast<uint32_t>(Kind::one_way) ||
           header.kind == static_cast<uint32_t>(Kind::request);
}

// Whether what has come from the sender so far may be a request.
bool acceptable(const Sender &in)
{
    const FrameHeader *header = in.incoming().header();
    return !in.incoming().failed() && (!header || is_request(*header));
}

// Reads what has arrived from one sender. false when the sender is to be
// dropped: it closed or failed, or sent something that is no request.
bool read_arrived(Sender &in)
{
    const FrameReader::Status status = in.incoming().read(in.link->fd());
    return status != FrameReader::Status::closed && status != FrameReader::Status::failed && acceptable(in);
}

// The sender that gives way to a new one: the first idle one, or else the
// one served longest ago.
std::deque<Sender>::iterator sender_to_drop(std::deque<Sender> &senders)
{
    const auto idle = std::find_if(senders.begin(), senders.end(), [](const Sender &s) { return s.idle(); });
    return idle != senders.end() ? idle : senders.begin();
}

// Accepts every sender waiting on the queue's socket.
void accept_waiting(Queue &queue)
{
    for (std::size_t round = 0; round < kMaxSenders; ++round) {
        Fd connection(accept4(queue.listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (connection.get() < 0)
            return;
        if (queue.senders.size() == kMaxSenders)
            queue.senders.erase(sender_to_drop(queue.senders));
        queue.senders.emplace_back();
        queue.senders.back().link = std::make_shared<Link>(connection.release());
    }
}

// The message that has arrived whole, taken from its sender, whose link
// is kept for its next messages.
Message take_message(Sender &in)
{
    Message message = in.incoming().take();
    if (message->header.kind == static_cast<uint32_t>(Kind::request))
        message->reply_link = in.link;
    in.has_sent = true;
    return message;
}

// Hands out the first whole message; its sender then goes behind the
// others, so that no sender is served twice while another waits.
bool take_complete(Queue &queue, ipcq_msg_handle_t *msg)
{
    const auto whole = std::find_if(queue.senders.begin(), queue.senders.end(),
                                    [](const Sender &in) { return in.complete(); });
    if (whole == queue.senders.end())
        return false;
    replace_message(msg, take_message(*whole));
    Sender served = std::move(*whole);
    queue.senders.erase(whole);
    // Bytes that came with the message and begin no request end the link.
    if (acceptable(served))
        queue.senders.push_back(std::move(served));
    return true;
}

// Reads every sender poll found ready and drops the senders that failed,
// misbehaved or ran out of time.
void read_ready(Queue &queue, const std::vector<pollfd> &polled)
{
    std::size_t at = 0;
    for (std::size_t i = 1; i < polled.size(); ++i, ++at) {
        Sender &in = queue.senders[at];
        const bool ready = (polled[i].revents & (POLLIN | POLLHUP | POLLERR)) != 0;
        const bool late = !in.idle() && !in.complete() && in.deadline().remaining_ms() == 0;
        if ((ready && !read_arrived(in)) || late) {
            queue.senders.erase(queue.senders.begin() + static_cast<std::ptrdiff_t>(at));
            --at;
        }
    }
}

// The socket and every sender; the wait until the sooner of the deadline
// and the first sender's time running out.
std::vector<pollfd> poll_set(const Queue &queue, const Deadline &deadline, int &wait_ms)
{
    std::vector<pollfd> polled{{queue.listener.get(), POLLIN, 0}};
    wait_ms = deadline.remaining_ms();
    for (const Sender &in : queue.senders) {
        polled.push_back({in.link->fd(), POLLIN, 0});
        if (!in.idle())
            wait_ms = std::min(wait_ms, in.deadline().remaining_ms());
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

// Writes the frame on the kept link to the destination, or on a new one.
// A kept link that the receiver closed before taking any byte of the frame
// (it restarted, or let an idle link go) is replaced once: the receiver
// never saw the frame, so it is neither lost nor delivered twice.
std::shared_ptr<Link> deliver(Queue &queue, const Destination &to, const FrameHeader &header,
                              const void *payload, const Deadline &deadline)
{
    std::shared_ptr<Link> link = queue.kept_link(to);
    const bool kept = link != nullptr;
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!link && !(link = queue.new_link(to, deadline)))
            return nullptr;
        if (header.kind == static_cast<uint32_t>(Kind::request))
            link->expect(header.token);
        bool untouched = true;
        if (link->write_frame(header, payload, deadline, untouched))
            return link;
        const int error = errno;
        link->forget(header.token);
        queue.drop_link(link);
        link.reset();
        const bool retry = kept && attempt == 0 && untouched && (error == EPIPE || error == ECONNRESET);
        errno = error;
        if (!retry)
            break;
    }
    return nullptr;
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
    Message sent = msg ? ipcq_link::new_message(header) : nullptr;
    if (msg && !sent)
        return queue.fail(ENOMEM);
    const Deadline deadline(std::chrono::seconds(IPCQ_SEND_TIMEOUT_S));
    std::shared_ptr<Link> link = deliver(queue, {dest_address, dest_queue}, header, payload, deadline);
    if (!link)
        return queue.fail(errno);
    if (msg) {
        sent->header.length = 0; // the handle of a sent message keeps no copy of its payload
        queue.add_pending(token, std::move(link));
        replace_message(msg, std::move(sent));
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
        if (!message || !message->reply_link || (len > 0 && !payload))
            return queue->fail(EINVAL);
        if (len > IPCQ_MAX_PAYLOAD)
            return queue->fail(EMSGSIZE);
        const FrameHeader header =
            header_from(*queue, Kind::reply, message->header.opcode, message->header.token, len);
        const std::shared_ptr<Link> link = std::move(message->reply_link); // one reply per request
        bool untouched = true;
        if (!link->write_frame(header, payload, Deadline(std::chrono::seconds(IPCQ_SEND_TIMEOUT_S)),
                               untouched))
            return queue->fail(errno);
        return 0;
    });
}
