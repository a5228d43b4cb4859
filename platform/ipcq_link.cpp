#include "ipcq_link.h"

#include "ipcq_frame_reader.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <unistd.h>

namespace ipcq_link
{
namespace
{

using ipcq_frame_reader::FrameReader;
using ipcq_wire::Deadline;
using ipcq_wire::FrameHeader;
using ipcq_wire::Kind;
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

Link::Link(int fd) : fd_(fd), reader_(std::make_unique<FrameReader>()) {}

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
    for (;;) {
        // Bytes already read need no wait. A peer that stopped in the middle
        // of a reply for longer than a frame may take is given up.
        if (!reader_->has_read_ahead()) {
            if (reader_->started() && reader_->deadline().remaining_ms() == 0) {
                errno = ECONNRESET;
                return false;
            }
            const int ready = ipcq_wire::wait_readable(fd_, deadline, false);
            if (ready <= 0) {
                if (ready == 0)
                    errno = ETIME;
                return false;
            }
        }
        const FrameReader::Status status = reader_->read(fd_);
        if (status == FrameReader::Status::partial)
            continue;
        if (status != FrameReader::Status::whole)
            return false;
        Message reply = reader_->take();
        if (!is_reply(reply->header)) {
            errno = EBADMSG;
            return false;
        }
        const std::lock_guard lock(read_mutex_);
        if (expected_.count(reply->header.token))
            arrived_[reply->header.token] = std::move(reply);
        return true;
    }
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
