// A connection between two queues, kept for as long as both are open: the
// sender writes its frames on it, one after another, and the receiver's
// replies come back on it, matched to their requests by token.
#ifndef WEX_PLATFORM_IPCQ_LINK_H
#define WEX_PLATFORM_IPCQ_LINK_H

#include "ipcq_wire.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>

namespace ipcq_link
{
class Link;
}
namespace ipcq_frame_reader
{
class FrameReader;
}

// A message: sent, received, or a reply. A received request keeps the
// link of its sender until it is answered.
struct ipcq_msg {
    ipcq_wire::FrameHeader header{};
    void *payload = nullptr; // malloc'd, header.length bytes
    std::shared_ptr<ipcq_link::Link> reply_link;
};

namespace ipcq_link
{

struct MessageFree {
    void operator()(ipcq_msg *message) const;
};
using Message = std::unique_ptr<ipcq_msg, MessageFree>;

// A new message with the header; nullptr when memory is short.
Message new_message(const ipcq_wire::FrameHeader &header);

class Link
{
  public:
    explicit Link(int fd);
    ~Link();
    Link(const Link &) = delete;
    Link &operator=(const Link &) = delete;

    int fd() const { return fd_; }
    // The frames coming in on the link, for its one reader: the receiver
    // of a queue for its senders' requests, await_reply for replies.
    ipcq_frame_reader::FrameReader &incoming() { return *reader_; }

    // Writes one frame whole. On failure errno says why, and untouched
    // tells whether the peer may have seen any of it.
    bool write_frame(const ipcq_wire::FrameHeader &header, const void *payload,
                     const ipcq_wire::Deadline &deadline, bool &untouched);

    // Whether the link failed for good: its peer hung up or sent garbage.
    bool broken();

    // The reply with token is wanted: keep it when another waiter reads it.
    void expect(uint32_t token);
    // Nobody waits for it any more: it is dropped when it comes.
    void forget(uint32_t token);
    // Waits for the reply to the request with token. Any waiter reads the
    // replies that arrive and keeps them for theirs, so no waiter holds up
    // another. nullptr with errno: ETIME when the deadline passed,
    // ECONNRESET when the peer went away or dropped the request unanswered,
    // EBADMSG when the peer sent something that is no reply.
    Message await_reply(uint32_t token, const ipcq_wire::Deadline &deadline);

  private:
    // Reads the next frame as this link's reader; false with errno when the
    // link is of no further use (nothing read before the deadline: ETIME,
    // and the link stays usable).
    bool read_next(const ipcq_wire::Deadline &deadline);

    int fd_;
    std::unique_ptr<ipcq_frame_reader::FrameReader> reader_;
    std::mutex write_mutex_;
    std::mutex read_mutex_;
    std::condition_variable arrived_changed_;
    bool reading_ = false;
    int broken_ = 0;
    std::set<uint32_t> expected_;
    std::map<uint32_t, Message> arrived_;
};

} // namespace ipcq_link

#endif
