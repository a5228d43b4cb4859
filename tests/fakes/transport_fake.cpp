#include "fakes/transport_fake.h"

#include "bcp.h"
#include "ipcq.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

// The fake's messages: a token and the payload a receive put in.
struct ipcq_msg {
    uint32_t token = 0;
    std::optional<wex_fake::Bytes> payload;
};

namespace wex_fake
{

void Transport::reset()
{
    calls_.clear();
    scripted_.clear();
    live_messages_ = 0;
    token_ = 0x7000;
}

void Transport::script(const std::string &function, Answer answer)
{
    scripted_.emplace_back(function, answer);
}

std::vector<std::string> Transport::call_names() const
{
    std::vector<std::string> names;
    for (const Call &call : calls_)
        names.push_back(call.function);
    return names;
}

std::vector<Call> Transport::calls_of(const std::string &function) const
{
    std::vector<Call> matching;
    for (const Call &call : calls_) {
        if (call.function == function)
            matching.push_back(call);
    }
    return matching;
}

Call &Transport::record(Call call)
{
    calls_.push_back(std::move(call));
    return calls_.back();
}

Answer Transport::answer(const std::string &function)
{
    for (auto it = scripted_.begin(); it != scripted_.end(); ++it) {
        if (it->first == function) {
            Answer answer = it->second;
            scripted_.erase(it);
            return answer;
        }
    }
    return Answer{};
}

Transport &transport()
{
    static Transport instance;
    return instance;
}

} // namespace wex_fake

namespace
{

using wex_fake::Answer;
using wex_fake::Bytes;
using wex_fake::Call;
using wex_fake::transport;

Bytes copy_bytes(const void *data, std::size_t size)
{
    const auto *bytes = static_cast<const uint8_t *>(data);
    return data ? Bytes(bytes, bytes + size) : Bytes{};
}

template <typename Record> std::optional<Bytes> copy_record(const Record *record)
{
    return record ? std::optional<Bytes>(copy_bytes(record, sizeof *record)) : std::nullopt;
}

void *malloc_copy(const Bytes &bytes)
{
    if (bytes.empty())
        return nullptr;
    void *block = std::malloc(bytes.size());
    std::memcpy(block, bytes.data(), bytes.size());
    return block;
}

// Puts a new message into *msg, releasing what it held.
void hand_out(ipcq_msg_handle_t *msg, std::optional<Bytes> payload)
{
    if (*msg) {
        delete *msg;
        transport().message_dropped();
    }
    *msg = new ipcq_msg{transport().next_token(), std::move(payload)};
    transport().message_created();
}

// Records the call, then answers it: errno and the scripted result.
Answer recorded(Call call)
{
    const std::string function = call.function;
    transport().record(std::move(call));
    Answer answer = transport().answer(function);
    errno = answer.error;
    return answer;
}

Call new_call(const char *function, int q = 0)
{
    Call call;
    call.function = function;
    call.q = q;
    return call;
}

// A call that names a destination: a send or a request.
Call addressed_call(const char *function, int q, uint32_t address, uint32_t dest_queue, uint32_t opcode,
                    uint32_t msg_type = 0)
{
    Call call = new_call(function, q);
    call.address = address;
    call.dest_queue = dest_queue;
    call.opcode = opcode;
    call.msg_type = msg_type;
    return call;
}

Call handle_call(const char *function, const ipcq_msg_handle_t *msg)
{
    Call call = new_call(function);
    call.handle_given = msg != nullptr;
    return call;
}

const ipcq_msg *message_of(const ipcq_msg_handle_t *msg)
{
    return msg ? *msg : nullptr;
}

} // namespace

extern "C" int ipcq_send(int q, uint32_t dest_address, uint32_t dest_queue, uint32_t opcode,
                         const void *payload, uint32_t len, ipcq_msg_handle_t *msg, uint32_t flags,
                         const ipcq_send_options_t *options)
{
    Call call = addressed_call("ipcq_send", q, dest_address, dest_queue, opcode);
    call.flags = flags;
    call.length = len;
    call.payload = copy_bytes(payload, len);
    call.payload_null = payload == nullptr;
    call.options = copy_record(options);
    call.handle_given = msg != nullptr;
    const Answer answer = recorded(std::move(call));
    if (msg && answer.result >= 0)
        hand_out(msg, std::nullopt);
    return answer.result;
}

extern "C" int ipcq_recv(int q, ipcq_msg_handle_t *msg, const ipcq_recv_options_t *options)
{
    Call call = handle_call("ipcq_recv", msg);
    call.q = q;
    call.options = copy_record(options);
    const Answer answer = recorded(std::move(call));
    if (msg && answer.result >= 0)
        hand_out(msg, answer.reply);
    return answer.result;
}

extern "C" int ipcq_drop(int q, ipcq_msg_handle_t *msg)
{
    Call call = handle_call("ipcq_drop", msg);
    call.q = q;
    const Answer answer = recorded(std::move(call));
    if (msg && *msg) {
        delete *msg;
        *msg = nullptr;
        transport().message_dropped();
    }
    return answer.result;
}

extern "C" uint32_t ipcq_rr_token_get(const ipcq_msg_handle_t *msg)
{
    recorded(handle_call("ipcq_rr_token_get", msg));
    const ipcq_msg *message = message_of(msg);
    return message ? message->token : 0;
}

extern "C" void *ipcq_payload_get(const ipcq_msg_handle_t *msg)
{
    recorded(handle_call("ipcq_payload_get", msg));
    const ipcq_msg *message = message_of(msg);
    if (!message || !message->payload || message->payload->empty())
        return nullptr;
    return const_cast<uint8_t *>(message->payload->data());
}

extern "C" uint32_t ipcq_payload_size(const ipcq_msg_handle_t *msg)
{
    recorded(handle_call("ipcq_payload_size", msg));
    const ipcq_msg *message = message_of(msg);
    return message && message->payload ? static_cast<uint32_t>(message->payload->size()) : 0;
}

extern "C" int ipcq_errno_get(int q)
{
    return recorded(new_call("ipcq_errno_get", q)).result;
}

extern "C" int bcp_req_resp(uint32_t opcode, uint32_t msg_type, const void *req, void **reply, uint32_t *len,
                            const char *text1, const char *text2, uint32_t dest_queue, int q,
                            uint32_t timeout_s)
{
    Call call = addressed_call("bcp_req_resp", q, 0, dest_queue, opcode, msg_type);
    call.timeout = timeout_s;
    call.length = len ? *len : 0;
    call.payload = copy_bytes(req, call.length);
    call.payload_null = req == nullptr;
    call.handle_given = reply != nullptr;
    call.text1 = text1 ? text1 : "<null>";
    call.text2 = text2 ? text2 : "<null>";
    const Answer answer = recorded(std::move(call));
    if (answer.result >= 0 && len) {
        const Bytes payload = answer.reply.value_or(Bytes{});
        *len = static_cast<uint32_t>(payload.size());
        if (reply)
            *reply = malloc_copy(payload);
    }
    return answer.result;
}

extern "C" int bcp_send_request(uint32_t opcode, uint32_t msg_type, const void *req, uint32_t len,
                                const char *text1, const char *text2, uint32_t dest_address,
                                uint32_t dest_queue, int q, ipcq_msg_handle_t *msg)
{
    Call call = addressed_call("bcp_send_request", q, dest_address, dest_queue, opcode, msg_type);
    call.length = len;
    call.payload = copy_bytes(req, len);
    call.payload_null = req == nullptr;
    call.handle_given = msg != nullptr;
    call.text1 = text1 ? text1 : "<null>";
    call.text2 = text2 ? text2 : "<null>";
    const Answer answer = recorded(std::move(call));
    if (msg && answer.result >= 0)
        hand_out(msg, std::nullopt);
    return answer.result;
}

extern "C" int bcp_parse_response(const ipcq_msg_handle_t *msg, void **payload, uint32_t *len)
{
    const Answer answer = recorded(handle_call("bcp_parse_response", msg));
    if (answer.result >= 0 && payload && len) {
        const Bytes bytes = answer.reply.value_or(Bytes{});
        *payload = malloc_copy(bytes);
        *len = static_cast<uint32_t>(bytes.size());
    }
    return answer.result;
}
