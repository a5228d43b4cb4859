// The frames arriving on one connection, put together from whatever the
// socket holds: one read takes a header and a small payload together, and
// the bytes of a frame that follows stay for the next one.
#ifndef WEX_PLATFORM_IPCQ_FRAME_READER_H
#define WEX_PLATFORM_IPCQ_FRAME_READER_H

#include "ipcq_link.h"
#include "ipcq_wire.h"

#include <cstddef>
#include <memory>

namespace ipcq_frame_reader
{

// How long the rest of a frame may take once its first byte has come; a
// sender stalled past it is given up.
inline constexpr std::chrono::seconds kFrameTimeout{5};

class FrameReader
{
  public:
    enum class Status {
        whole,   // a frame is complete: take() it
        partial, // the socket has nothing more for now
        closed,  // the peer hung up (errno ECONNRESET)
        failed,  // garbage on the link (EBADMSG), no memory, or a socket error
    };

    // Reads what the non-blocking socket holds until a frame is whole.
    Status read(int fd);

    bool complete() const { return header_got_ == sizeof header_ && payload_got_ == header_.length; }
    // Whether a frame has begun; its deadline runs from its first byte.
    bool started() const { return header_got_ > 0; }
    const ipcq_wire::Deadline &deadline() const { return deadline_; }
    // The header once it has come whole, else nullptr.
    const ipcq_wire::FrameHeader *header() const
    {
        return header_got_ == sizeof header_ ? &header_ : nullptr;
    }
    // Whether bytes were read that are no frame; the link is of no more use.
    bool failed() const { return failed_; }
    // Whether read() can go on without the socket: a frame is whole, or bytes
    // already read wait to be put together, or the link has failed.
    bool has_read_ahead() const { return complete() || failed_ || begin_ < end_; }

    // The whole frame as a message; the reader starts on the next one.
    ipcq_link::Message take();

  private:
    struct FreeBytes {
        void operator()(std::byte *bytes) const;
    };

    // Moves read-ahead bytes into the frame; false when they are no frame.
    bool take_read_ahead();
    bool accept_header_bytes(std::size_t count);
    void make_payload_room();
    long receive(int fd);

    ipcq_wire::FrameHeader header_{};
    std::size_t header_got_ = 0;
    std::unique_ptr<std::byte, FreeBytes> payload_;
    std::size_t payload_got_ = 0;
    std::size_t payload_room_ = 0;
    ipcq_wire::Deadline deadline_{kFrameTimeout};
    std::unique_ptr<std::byte[]> read_ahead_;
    std::size_t begin_ = 0, end_ = 0;
    bool failed_ = false;
};

} // namespace ipcq_frame_reader

#endif
