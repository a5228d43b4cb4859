#include "ipcq_link.h"

#include "ipcq.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <unistd.h>

namespace ipcq_link
{
namespace
{

using ipcq_wire::Deadline;
using ipcq_wire::FrameHeader;
using ipcq_wire::Kind;

// How long the rest of a frame may take once its first bytes are readable.
constexpr std::chrono::seconds kFrameTimeout{5};
// How long a receiver gives a sender to take word that its request will not
// be answered.
constexpr std::chrono::seconds kUnansweredTimeout{1};

bool is_reply(const FrameHeader &header)
{
    return header.kind == static_cast<uint32_t>(Kind::reply) ||
           header.kind == static_cast<uint32_t>(Kind::unanswered);
}

// A request dropped unanswered: its sender learns at once that no reply
// will come, as it would if the request had a connection of its own.
void tell_unanswered(Link &link, const FrameHeader &request)
{
    FrameHeader header = request;
    header.kind = static_cast<uint32_t>(Kind::unanswered);
    header.length = 0;
    bool untouched = true;
    link.write_frame(header, nullptr, Deadline(kUnansweredTimeout), untouched);
}

} // namespace

void MessageFree::operator()(ipcq_msg *message) const
{
    if (message->reply_link)
        tell_unanswered(*message->reply_link, message->header);
    std::free(message->payload);
    delete message;
}

Message new_message(const FrameHeader &header)
{
    Message message(new (std::nothrow) ipcq_msg);
    if (message)
        message->header = header;
    return message;
}

Message read_message(int fd, const Deadline &deadline)
{
    FrameHeader header{};
    if (!ipcq_wire::read_exact(fd, &header, sizeof header, deadline))
        return nullptr;
    if (header.magic != ipcq_wire::kMagic || header.length > IPCQ_MAX_PAYLOAD) {
        errno = EBADMSG;
        return nullptr;
    }
    Message message = new_message(header);
    if (message && header.length > 0)
        message->payload = std::malloc(header.length);
    if (!message || (header.length > 0 && !message->payload)) {
        errno = ENOMEM;
        return nullptr;
    }
    if (!ipcq_wire::read_exact(fd, message->payload, header.length, deadline))
        return nullptr;
    return message;
}

Link::~Link()
{
    close(fd_);
}

bool Link::write_frame(const FrameHeader &header, const void *payload, const Deadline &deadline,
                       bool &untouched)
{
    const std::lock_guard lock(write_mutex_);
    return ipcq_wire::write_frame(fd_, header, payload, deadline, untouched);
}

bool Link::broken()
{
    const std::lock_guard lock(read_mutex_);
    return broken_ != 0;
}

void Link::expect(uint32_t token)
{
    const std::lock_guard lock(read_mutex_);
    expected_.insert(token);
}

void Link::forget(uint32_t token)
{
    const std::lock_guard lock(read_mutex_);
    expected_.erase(token);
    arrived_.erase(token);
}

bool Link::read_next(const Deadline &deadline)
{
    const int ready = ipcq_wire::wait_readable(fd_, deadline, false);
    if (ready <= 0) {
        if (ready == 0)
            errno = ETIME;
        return false;
    }
    Message reply = read_message(fd_, Deadline(kFrameTimeout));
    if (!reply)
        return false;
    if (!is_reply(reply->header)) {
        errno = EBADMSG;
        return false;
    }
    const std::lock_guard lock(read_mutex_);
    if (expected_.count(reply->header.token))
        arrived_[reply->header.token] = std::move(reply);
    return true;
}

Message Link::await_reply(uint32_t token, const Deadline &deadline)
{
    std::unique_lock lock(read_mutex_);
    for (;;) {
        if (const auto it = arrived_.find(token); it != arrived_.end()) {
            Message reply = std::move(it->second);
            arrived_.erase(it);
            expected_.erase(token);
            if (reply->header.kind == static_cast<uint32_t>(Kind::unanswered)) {
                errno = ECONNRESET;
                return nullptr;
            }
            return reply;
        }
        if (broken_ != 0 || deadline.remaining_ms() == 0) {
            expected_.erase(token);
            errno = broken_ != 0 ? broken_ : ETIME;
            return nullptr;
        }
        if (reading_) {
            arrived_changed_.wait_for(lock, std::chrono::milliseconds(deadline.remaining_ms()));
            continue;
        }
        reading_ = true;
        lock.unlock();
        const bool read = read_next(deadline);
        const int error = errno;
        lock.lock();
        reading_ = false;
        if (!read && error != ETIME)
            broken_ = error == 0 ? ECONNRESET : error;
        arrived_changed_.notify_all();
    }
}

} // namespace ipcq_link
