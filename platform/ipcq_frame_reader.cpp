#include "ipcq_frame_reader.h"

#include "ipcq.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/socket.h>

namespace ipcq_frame_reader
{
namespace
{

// One read takes up to this much: a header and the payloads of the
// transport's usual requests and replies, a few hundred bytes each.
constexpr std::size_t kReadAhead = 4096;
// A payload is given memory as its bytes arrive, at least this much at once,
// so a header that declares a huge length costs nothing until the bytes come.
constexpr std::size_t kPayloadChunk = 64 * 1024;

} // namespace

void FrameReader::FreeBytes::operator()(std::byte *bytes) const
{
    std::free(bytes);
}

FrameReader::Status FrameReader::read(int fd)
{
    for (;;) {
        if (!take_read_ahead()) {
            errno = EBADMSG;
            return Status::failed;
        }
        if (complete())
            return Status::whole;
        const long got = receive(fd);
        if (got == 0) {
            errno = ECONNRESET;
            return Status::closed;
        }
        if (got < 0)
            return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? Status::partial
                                                                             : Status::failed;
    }
}

// Large payloads go straight to their memory; everything else through the
// read-ahead, which is empty whenever the frame is not complete.
long FrameReader::receive(int fd)
{
    if (header() && header_.length - payload_got_ >= kReadAhead) {
        make_payload_room();
        const ssize_t got =
            recv(fd, payload_.get() + payload_got_, payload_room_ - payload_got_, MSG_DONTWAIT);
        if (got > 0)
            payload_got_ += static_cast<std::size_t>(got);
        return got;
    }
    if (!read_ahead_)
        read_ahead_.reset(new std::byte[kReadAhead]);
    const ssize_t got = recv(fd, read_ahead_.get(), kReadAhead, MSG_DONTWAIT);
    begin_ = 0;
    end_ = got > 0 ? static_cast<std::size_t>(got) : 0;
    return got;
}

bool FrameReader::take_read_ahead()
{
    while (!failed_ && begin_ < end_ && !complete()) {
        const std::size_t available = end_ - begin_;
        if (!header()) {
            const std::size_t count = std::min(available, sizeof header_ - header_got_);
            std::memcpy(reinterpret_cast<std::byte *>(&header_) + header_got_, read_ahead_.get() + begin_,
                        count);
            begin_ += count;
            failed_ = !accept_header_bytes(count);
            continue;
        }
        make_payload_room();
        const std::size_t count = std::min(available, payload_room_ - payload_got_);
        std::memcpy(payload_.get() + payload_got_, read_ahead_.get() + begin_, count);
        begin_ += count;
        payload_got_ += count;
    }
    return !failed_;
}

bool FrameReader::accept_header_bytes(std::size_t count)
{
    if (header_got_ == 0)
        deadline_ = ipcq_wire::Deadline(kFrameTimeout);
    header_got_ += count;
    return !header() || (header_.magic == ipcq_wire::kMagic && header_.length <= IPCQ_MAX_PAYLOAD);
}

// Room for the next bytes of the payload, grown by at least a chunk and at
// most to the declared length.
void FrameReader::make_payload_room()
{
    if (payload_room_ > payload_got_)
        return;
    const std::size_t room =
        std::min<std::size_t>(header_.length, std::max(payload_room_ * 2, payload_got_ + kPayloadChunk));
    void *grown = std::realloc(payload_.get(), room);
    if (!grown)
        throw std::bad_alloc();
    (void)payload_.release();
    payload_.reset(static_cast<std::byte *>(grown));
    payload_room_ = room;
}

ipcq_link::Message FrameReader::take()
{
    ipcq_link::Message message = ipcq_link::new_message(header_);
    if (!message)
        throw std::bad_alloc();
    message->payload = payload_.release();
    header_ = ipcq_wire::FrameHeader{};
    header_got_ = payload_got_ = payload_room_ = 0;
    take_read_ahead();
    return message;
}

} // namespace ipcq_frame_reader
