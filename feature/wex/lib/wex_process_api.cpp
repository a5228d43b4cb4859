#include "wex_process_api.h"

#include "bcp.h"
#include "ipcq.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

WEX_ASSERT_SIZE(ipcq_send_options_t, 68);
WEX_ASSERT_OFFSET(ipcq_send_options_t, standby, 35);
WEX_ASSERT_SIZE(ipcq_recv_options_t, 40);
WEX_ASSERT_OFFSET(ipcq_recv_options_t, timeout_s, 8);
WEX_ASSERT_OFFSET(ipcq_recv_options_t, rr_token, 12);

namespace wex::daemon
{
namespace
{

// The wait, in seconds, of the receive of a synchronous request.
constexpr uint32_t kSynchronousReceiveWait = 10;

ipcq_send_options_t send_options(SendOptions kind)
{
    ipcq_send_options_t options{};
    options.version = 1;
    options.standby = kind == SendOptions::standby ? 1 : 0;
    return options;
}

int send(int q, uint32_t dest_queue, uint32_t opcode, std::span<const std::byte> payload, SendOptions kind,
         ipcq_msg_handle_t *msg)
{
    const ipcq_send_options_t options = send_options(kind);
    return ipcq_send(q, WEX_DEST_ADDRESS, dest_queue, opcode, payload.empty() ? nullptr : payload.data(),
                     static_cast<uint32_t>(payload.size()), msg, 0,
                     kind == SendOptions::none ? nullptr : &options);
}

void put_be32(std::byte *at, uint32_t value)
{
    for (int i = 3; i >= 0; --i, value >>= 8)
        at[i] = static_cast<std::byte>(value & 0xFF);
}

} // namespace

int send_one_way(int q, uint32_t dest_queue, uint32_t opcode, std::span<const std::byte> payload,
                 SendOptions options)
{
    return send(q, dest_queue, opcode, payload, options, nullptr);
}

int send_and_drop(int q, uint32_t dest_queue, uint32_t opcode, std::span<const std::byte> payload,
                  SendOptions options)
{
    ipcq_msg_handle_t msg = nullptr;
    const int result = send(q, dest_queue, opcode, payload, options, &msg);
    if (result >= 0)
        ipcq_drop(q, &msg);
    return result;
}

int synchronous_request(int q, uint32_t opcode, std::span<std::byte> out, std::size_t *reply_size)
{
    ipcq_msg_handle_t msg = nullptr;
    if (send(q, WEXD_QUEUE, opcode, {}, SendOptions::plain, &msg) < 0)
        return -1;
    ipcq_recv_options_t options{};
    options.version = 1;
    options.rr_token = ipcq_rr_token_get(&msg);
    ipcq_drop(q, &msg);
    options.timeout_s = kSynchronousReceiveWait;
    if (ipcq_recv(q, &msg, &options) < 0)
        return -1;
    const std::size_t size = ipcq_payload_size(&msg);
    const void *payload = ipcq_payload_get(&msg);
    // A reply is untrusted: only what it holds and what out can take is copied.
    const std::size_t copied = payload ? std::min(size, out.size()) : 0;
    if (copied > 0)
        std::memcpy(out.data(), payload, copied);
    *reply_size = payload ? size : 0;
    ipcq_drop(q, &msg);
    return 0;
}

int request_response(int q, const BcpCall &call, const void *request, uint32_t *len, const char *text1,
                     const char *text2)
{
    return bcp_req_resp(call.opcode, call.msg_type, request, nullptr, len, text1, text2, call.dest_queue, q,
                        call.timeout);
}

int exchange(int q, const BcpCall &call, std::span<const std::byte> request, Reply &reply)
{
    void *bytes = nullptr;
    reply.len = static_cast<uint32_t>(request.size());
    const int result = bcp_req_resp(call.opcode, call.msg_type, request.empty() ? nullptr : request.data(),
                                    &bytes, &reply.len, "", "", call.dest_queue, q, call.timeout);
    reply.adopt(bytes);
    return result;
}

std::optional<int> request_over_transport(int q, const BcpCall &call, std::span<const std::byte> request,
                                          Reply &reply)
{
    ipcq_msg_handle_t sent = nullptr;
    bcp_send_request(call.opcode, call.msg_type, request.empty() ? nullptr : request.data(),
                     static_cast<uint32_t>(request.size()), "", "", WEX_DEST_ADDRESS, call.dest_queue, q,
                     &sent);
    ipcq_recv_options_t options{};
    options.version = 1;
    options.timeout_s = call.timeout;
    options.rr_token = ipcq_rr_token_get(&sent);
    ipcq_drop(q, &sent);
    // A request that never went out has no token and no answer to wait for;
    // a receive without a token would take whatever arrives next instead.
    ipcq_msg_handle_t answer = nullptr;
    if (options.rr_token == 0 || ipcq_recv(q, &answer, &options) != 0)
        return std::nullopt;
    void *payload = nullptr;
    const int status = bcp_parse_response(&answer, &payload, &reply.len);
    reply.adopt(payload);
    ipcq_drop(q, &answer);
    return status;
}

int32_t verify_name(int q, const BcpCall &call, std::span<const std::byte> record, int32_t unknown_status)
{
    Reply reply;
    const int result = exchange(q, call, record, reply);
    if (result == 0)
        return 0;
    if (result != unknown_status)
        std::puts("Error in communicating with process");
    return -1;
}

int32_t query(int q, const BcpCall &call, std::span<const std::byte> record, void **buf, uint32_t *len)
{
    Reply reply;
    const int result = exchange(q, call, record, reply);
    *len = reply.len;
    if (result != 0)
        return query_status(result);
    *buf = reply.release();
    return 0;
}

int32_t query_status(int result)
{
    return result == -1 ? WEX_STATUS_NO_EXCHANGE : result;
}

int32_t write_status(int result)
{
    return result == -1 ? WEX_ERRNO_STATUS(errno) : result;
}

int32_t registration_status(int result)
{
    // The registration queue may be slow to answer a registration it has
    // taken; only a deregistration has to be confirmed.
    if (result == -1 && errno == ETIME)
        return 0;
    return write_status(result);
}

void build_raw_header(std::span<std::byte, kRawHeaderSize> header, uint32_t msg_type, uint32_t payload_len)
{
    // Bytes the service reads nothing from are zero rather than stack leftovers.
    std::memset(header.data(), 0, header.size());
    put_be32(&header[0], msg_type);
    put_be32(&header[4], payload_len);
    std::memcpy(&header[12], "clis", 5);
}

} // namespace wex::daemon

extern "C" WEX_API int32_t omx_pa_state_query(int32_t q) noexcept
{
    const int result = wex::daemon::send_one_way(q, WEX_NOTIFY_QUEUE, WEX_OPC_PA_STATE_QUERY, {},
                                                 wex::daemon::SendOptions::none);
    // The message names the operation and its place in the source the way
    // the switch's logs always have, so that existing log filters match it.
    if (result != 0)
        std::printf("%s:%d:%s: ipcq send notify error %s \n", "omx_pa_state_query", 398,
                    "feature/wex/lib/wex_process_api", std::strerror(ipcq_errno_get(q)));
    return result;
}

extern "C" WEX_API ipcq_send_options *populate_ipcq_send_options(ipcq_send_options *options) noexcept
{
    if (options) // a null record comes back as it came, like any other
        std::memset(reinterpret_cast<unsigned char *>(options) + 4, 0, 24);
    return options;
}
