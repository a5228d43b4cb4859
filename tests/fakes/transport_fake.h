// A recording stand-in for the transport and the request/response layer.
// Test programs that link it get its ipcq_* and bcp_* in place of the
// platform's: every call is recorded as one line naming each of its
// arguments, with a copy of the payload it was given, and answered with what
// the test scripted. Tests compare the whole list of lines at once.
//
// Line forms ("+msg": a message handle or reply pointer was given):
//   send q8 FE000000:37 op900 len604 flags0 opts(v1 standby) +msg
//   recv q4 opts(v1 f0 t10 tok7001)         drop   token   payload   size
//   errno q6
//   req_resp q9 37 op914 type1 len2352 t10 "text1" "text2" +msg
//   send_request q3 FE000000:296 op7655 type3 len88 "" "" +msg
//   parse_response
// An options record with any other byte set shows "junk"; NULL shows none.
#ifndef WEX_TEST_TRANSPORT_FAKE_H
#define WEX_TEST_TRANSPORT_FAKE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wex_fake
{

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

struct Call {
    std::string line;
    Bytes payload; // the request bytes a send or request carried
};

// The answer to one call: what the function returns (for ipcq_errno_get
// the error number), the errno it leaves, and the payload a receive or a
// response yields (nullopt: none at all).
struct Answer {
    int result = 0;
    int error = 0;
    std::optional<Bytes> reply;
};

inline Answer fails(int error, int result = -1)
{
    return Answer{result, error, std::nullopt};
}
inline Answer replies(Bytes payload, int result = 0)
{
    return Answer{result, 0, std::move(payload)};
}
inline Answer status(int result)
{
    return Answer{result, 0, std::nullopt};
}

class Transport
{
  public:
    // Forgets every call, script and message.
    void reset();
    // Queues the answer for the next call of function (its line's first
    // word) that has none left; unscripted calls return 0 and no reply.
    void script(const std::string &function, Answer answer);

    Lines lines() const;
    // The payloads of the calls that carried one, in order.
    std::vector<Bytes> payloads() const;
    // Messages handed out by send or receive and not dropped yet.
    int live_messages() const { return live_messages_; }

    // For the fake's own functions.
    Answer record(std::string line, Bytes payload = {});
    uint32_t next_token() { return ++token_; }
    void message_created() { ++live_messages_; }
    void message_dropped() { --live_messages_; }

  private:
    std::vector<Call> calls_;
    std::vector<std::pair<std::string, Answer>> scripted_;
    int live_messages_ = 0;
    uint32_t token_ = 0x7000; // the first sent message's token is 7001
};

Transport &transport();

} // namespace wex_fake

#endif
