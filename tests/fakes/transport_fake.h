// A recording stand-in for the transport and the request/response layer.
// Test programs that link it get its ipcq_* and bcp_* in place of the
// platform's: every call is recorded with its arguments and copies of the
// bytes it was given, and answered with what the test scripted.
#ifndef WEX_TEST_TRANSPORT_FAKE_H
#define WEX_TEST_TRANSPORT_FAKE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wex_fake
{

using Bytes = std::vector<uint8_t>;

struct Call {
    std::string function;
    int q = 0;
    uint32_t address = 0;    // ipcq_send, bcp_send_request
    uint32_t dest_queue = 0; // ipcq_send, bcp_*
    uint32_t opcode = 0;
    uint32_t msg_type = 0; // bcp_*
    uint32_t flags = 0;    // ipcq_send's eighth argument
    uint32_t timeout = 0;  // bcp_req_resp
    uint32_t length = 0;   // the request length given (bcp_req_resp: *len on entry)
    Bytes payload;         // the request bytes (length bytes of the pointer given)
    bool payload_null = false;
    std::optional<Bytes> options; // send or receive options bytes; nullopt for NULL
    bool handle_given = false;    // a message handle, or bcp_req_resp's reply pointer
    std::string text1, text2;     // bcp_*
};

// The answer to one call. result is what the function returns (for
// ipcq_rr_token_get the token, for ipcq_errno_get the error number); error
// is stored in errno; reply is the payload that a receive or a response
// yields (nullopt: none at all).
struct Answer {
    int result = 0;
    int error = 0;
    std::optional<Bytes> reply;
};

// A failure with errno error.
inline Answer fails(int error, int result = -1)
{
    return Answer{result, error, std::nullopt};
}
// A success (result) that yields the payload.
inline Answer replies(Bytes payload, int result = 0)
{
    return Answer{result, 0, std::move(payload)};
}

class Transport
{
  public:
    // Forgets every call, script and message.
    void reset();
    // Queues the answer for the next call of function that has none left;
    // unscripted calls return 0 (tokens: 0x7001, 0x7002, ...) and no reply.
    void script(const std::string &function, Answer answer);

    const std::vector<Call> &calls() const { return calls_; }
    std::vector<std::string> call_names() const;
    // The calls of one function, in order.
    std::vector<Call> calls_of(const std::string &function) const;
    // Messages handed out by send or receive and not dropped yet.
    int live_messages() const { return live_messages_; }

    // For the fake's own functions.
    Call &record(Call call);
    Answer answer(const std::string &function);
    uint32_t next_token() { return ++token_; }
    void message_created() { ++live_messages_; }
    void message_dropped() { --live_messages_; }

  private:
    std::vector<Call> calls_;
    std::vector<std::pair<std::string, Answer>> scripted_;
    int live_messages_ = 0;
    uint32_t token_ = 0x7000;
};

Transport &transport();

} // namespace wex_fake

#endif
