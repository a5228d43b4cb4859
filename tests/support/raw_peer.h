// A sender on a queue's socket that writes what it likes, as words in host
// order, and reads what comes back byte by byte.
#ifndef WEX_TEST_RAW_PEER_H
#define WEX_TEST_RAW_PEER_H

#include <cstdint>
#include <initializer_list>
#include <string>

namespace wex_test
{

class RawPeer
{
  public:
    // Connects to queue `queue` of address 0xfe000000 under the runtime directory.
    RawPeer(const std::string &dir, uint32_t queue);
    ~RawPeer();
    RawPeer(const RawPeer &) = delete;
    RawPeer &operator=(const RawPeer &) = delete;

    bool connected() const { return connected_; }
    // Writes all the words in one call.
    void send_words(std::initializer_list<uint32_t> words) const;
    // The next size bytes, or fewer when the queue hangs up or three seconds pass.
    std::string receive(std::size_t size) const;
    // Whether the queue hangs up on the sender, rather than answering or
    // leaving it waiting (for three seconds here).
    bool hung_up() const;

  private:
    int fd_ = -1;
    bool connected_ = false;
};

} // namespace wex_test

#endif
