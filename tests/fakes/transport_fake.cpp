#include "fakes/transport_fake.h"

#include "bcp.h"
#include "ipcq.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
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
    *this = Transport{};
}

void Transport::script(const std::string &function, Answer answer)
{
    scripted_.emplace_back(function, std::move(answer));
}

Lines Transport::lines() const
{
    Lines lines;
    for (const Call &call : calls_)
        lines.push_back(call.line);
    return lines;
}

std::vector<Bytes> Transport::payloads() const
{
    std::vector<Bytes> payloads;
    for (const Call &call : calls_)
        if (!call.payload.empty())
            payloads.push_back(call.payload);
    return payloads;
}

Answer Transport::record(std::string line, Bytes payload)
{
    const std::string function = line.substr(0, line.find(' '));
    calls_.push_back({std::move(line), std::move(payload)});
    const auto scripted = std::find_if(scripted_.begin(), scripted_.end(),
                                       [&](const auto &entry) { return entry.first == function; });
    Answer answer;
    if (scripted != scripted_.end()) {
        answer = scripted->second;
        scripted_.erase(scripted);
    }
    errno = answer.error;
    return answer;
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
using wex_fake::transport;

__attribute__((format(printf, 1, 2))) std::string format(const char *pattern, ...)
{
    char text[256];
    va_list args;
    va_start(args, pattern);
    std::vsnprintf(text, sizeof text, pattern, args);
    va_end(args);
    return text;
}

Bytes copy_bytes(const void *data, std::size_t size)
{
    const auto *bytes = static_cast<const uint8_t *>(data);
    return data ? Bytes(bytes, bytes + size) : Bytes{};
}

// True when any byte of a reserved field is set.
template <std::size_t N> bool has_junk(const uint8_t (&reserved)[N])
{
    return std::any_of(reserved, reserved + N, [](uint8_t b) { return b != 0; });
}

std::string send_options(const ipcq_send_options_t *o)
{
    if (!o)
        return "";
    const bool junk = has_junk(o->reserved1) || has_junk(o->reserved2);
    return format(" opts(v%u%s%s)", o->version, o->standby ? " standby" : "", junk ? " junk" : "");
}

std::string recv_options(const ipcq_recv_options_t *o)
{
    if (!o)
        return "";
    const bool junk = has_junk(o->reserved);
    return format(" opts(v%u f%u t%u tok%X%s)", o->version, o->flags, o->timeout_s, o->rr_token,
                  junk ? " junk" : "");
}

std::string texts(const char *text1, const char *text2)
{
    return format(" \"%s\" \"%s\"", text1 ? text1 : "<null>", text2 ? text2 : "<null>");
}

const char *handle(const void *given)
{
    return given ? " +msg" : "";
}

void *malloc_copy(const Bytes &bytes)
{
    if (bytes.empty())
        return nullptr;
    void *block = std::malloc(bytes.size());
    std::memcpy(block, bytes.data(), bytes.size());
    return block;
}

void drop_message(ipcq_msg_handle_t *msg)
{
    if (*msg) {
        delete *msg;
        *msg = nullptr;
        transport().message_dropped();
    }
}

// Puts a new message into *msg, releasing what it held.
void hand_out(ipcq_msg_handle_t *msg, std::optional<Bytes> payload)
{
    drop_message(msg);
    *msg = new ipcq_msg{transport().next_token(), std::move(payload)};
    transport().message_created();
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
    const Answer answer = transport().record(
        format("send q%d %X:%u op%u len%u flags%u", q, dest_address, dest_queue, opcode, len, flags) +
            send_options(options) + handle(msg),
        copy_bytes(payload, len));
    if (msg && answer.result >= 0)
        hand_out(msg, std::nullopt);
    return answer.result;
}

extern "C" int ipcq_recv(int q, ipcq_msg_handle_t *msg, const ipcq_recv_options_t *options)
{
    const Answer answer = transport().record(format("recv q%d", q) + recv_options(options));
    if (msg && answer.result >= 0)
        hand_out(msg, answer.reply);
    return answer.result;
}

extern "C" int ipcq_drop(int, ipcq_msg_handle_t *msg)
{
    const Answer answer = transport().record("drop");
    if (msg)
        drop_message(msg);
    return answer.result;
}

extern "C" uint32_t ipcq_rr_token_get(const ipcq_msg_handle_t *msg)
{
    transport().record("token");
    const ipcq_msg *message = message_of(msg);
    return message ? message->token : 0;
}

extern "C" void *ipcq_payload_get(const ipcq_msg_handle_t *msg)
{
    transport().record("payload");
    const ipcq_msg *message = message_of(msg);
    if (!message || !message->payload || message->payload->empty())
        return nullptr;
    return const_cast<uint8_t *>(message->payload->data());
}

extern "C" uint32_t ipcq_payload_size(const ipcq_msg_handle_t *msg)
{
    transport().record("size");
    const ipcq_msg *message = message_of(msg);
    return message && message->payload ? static_cast<uint32_t>(message->payload->size()) : 0;
}

extern "C" int ipcq_errno_get(int q)
{
    return transport().record(format("errno q%d", q)).result;
}

extern "C" int bcp_req_resp(uint32_t opcode, uint32_t msg_type, const void *req, void **reply, uint32_t *len,
                            const char *text1, const char *text2, uint32_t dest_queue, int q,
                            uint32_t timeout_s)
{
    const uint32_t req_len = len ? *len : 0;
    const Answer answer = transport().record(
        format("req_resp q%d %u op%u type%u len%u t%u", q, dest_queue, opcode, msg_type, req_len, timeout_s) +
            texts(text1, text2) + handle(reply),
        copy_bytes(req, req_len));
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
    const Answer answer = transport().record(format("send_request q%d %X:%u op%u type%u len%u", q,
                                                    dest_address, dest_queue, opcode, msg_type, len) +
                                                 texts(text1, text2) + handle(msg),
                                             copy_bytes(req, len));
    if (msg && answer.result >= 0)
        hand_out(msg, std::nullopt);
    return answer.result;
}

extern "C" int bcp_parse_response(const ipcq_msg_handle_t *, void **payload, uint32_t *len)
{
    const Answer answer = transport().record("parse_response");
    if (answer.result >= 0 && payload && len) {
        const Bytes bytes = answer.reply.value_or(Bytes{});
        *payload = malloc_copy(bytes);
        *len = static_cast<uint32_t>(bytes.size());
    }
    return answer.result;
}
