#include "support/raw_peer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace wex_test
{

RawPeer::RawPeer(const std::string &dir, uint32_t queue)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s/fe000000.%u", dir.c_str(), queue);
    fd_ = socket(AF_UNIX, SOCK_STREAM, 0);
    connected_ = connect(fd_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    const timeval wait{3, 0};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
}

RawPeer::~RawPeer()
{
    close(fd_);
}

void RawPeer::send_words(std::initializer_list<uint32_t> words) const
{
    const std::vector<uint32_t> bytes(words);
    EXPECT_EQ(write(fd_, bytes.data(), bytes.size() * 4), static_cast<ssize_t>(bytes.size() * 4));
}

std::string RawPeer::receive(std::size_t size) const
{
    std::string bytes(size, '\0');
    std::size_t got = 0;
    for (ssize_t n; got < size && (n = recv(fd_, bytes.data() + got, size - got, 0)) > 0;)
        got += static_cast<std::size_t>(n);
    bytes.resize(got);
    return bytes;
}

bool RawPeer::hung_up() const
{
    char byte;
    const ssize_t got = recv(fd_, &byte, 1, 0);
    return got == 0 || (got < 0 && errno == ECONNRESET);
}

} // namespace wex_test
