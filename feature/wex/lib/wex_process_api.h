// The frame every daemon request is built on: one-way sends, synchronous
// requests over the transport, request/response calls, and the statuses
// that failed exchanges become.
#ifndef WEX_LIB_WEX_PROCESS_API_H
#define WEX_LIB_WEX_PROCESS_API_H

#include <wex/wexd_client.h>

#include "common/alloc.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace wex::daemon
{

// Time-outs of the request/response calls, in the transport's seconds.
inline constexpr uint32_t kLockTimeout = 25;
inline constexpr uint32_t kWexdTimeout = 10;
inline constexpr uint32_t kRegisterTimeout = 3;
inline constexpr uint32_t kDeregisterTimeout = 15;

// The fixed part of a request/response call: what its opcode's row names.
struct BcpCall {
    uint32_t opcode;
    uint32_t msg_type;
    uint32_t dest_queue;
    uint32_t timeout;
};

inline constexpr BcpCall kRoleInfoGet{WEX_OPC_ROLE_INFO_GET, WEX_MSG_TYPE_READ, WEXD_QUEUE, kWexdTimeout};
inline constexpr BcpCall kRoleNameVerify{WEX_OPC_ROLE_NAME_VERIFY, WEX_MSG_TYPE_READ, WEXD_QUEUE,
                                         kWexdTimeout};
inline constexpr BcpCall kConfigGet{WEX_OPC_CONFIG_GET, WEX_MSG_TYPE_READ, WEXD_QUEUE, kWexdTimeout};
inline constexpr BcpCall kMainTreeGenerate{WEX_OPC_MAIN_TREE_GENERATE, WEX_MSG_TYPE_READ, WEXD_QUEUE,
                                           kWexdTimeout};
inline constexpr BcpCall kTreeTableGet{WEX_OPC_TREE_TABLE_GET, WEX_MSG_TYPE_READ, WEXD_QUEUE, kWexdTimeout};
inline constexpr BcpCall kCliLock{WEX_OPC_CLI_LOCK, WEX_MSG_TYPE_WRITE, WEXD_QUEUE, kLockTimeout};
inline constexpr BcpCall kParamSubtypeTableGet{WEX_OPC_PARAM_SUBTYPE_TABLE_GET, WEX_MSG_TYPE_READ, WEXD_QUEUE,
                                               kWexdTimeout};
inline constexpr BcpCall kParseTreeRegister{WEX_OPC_PARSE_TREE_REGISTER, WEX_MSG_TYPE_WRITE, PARSE_TREE_QUEUE,
                                            kRegisterTimeout};
inline constexpr BcpCall kParseTreeDeregister{WEX_OPC_PARSE_TREE_DEREGISTER, WEX_MSG_TYPE_WRITE,
                                              PARSE_TREE_QUEUE, kDeregisterTimeout};
inline constexpr BcpCall kDynamicParfileNameGet{WEX_OPC_DYNAMIC_PARFILE_NAME_GET, WEX_MSG_TYPE_READ,
                                                WEXD_QUEUE, kWexdTimeout};
inline constexpr BcpCall kLocaleNameVerify{WEX_OPC_LOCALE_NAME_VERIFY, WEX_MSG_TYPE_READ, WEXD_QUEUE,
                                           kWexdTimeout};
inline constexpr BcpCall kLocaleInfoGet{WEX_OPC_LOCALE_INFO_GET, WEX_MSG_TYPE_READ, WEXD_QUEUE, kWexdTimeout};
// Its answer is awaited with the transport's own wait (a time-out of 0).
inline constexpr BcpCall kFeaturePrivilegeGet{WEX_OPC_FEATURE_PRIVILEGE_GET, WEX_MSG_TYPE_READ, WEXD_QUEUE,
                                              0};

// A configuration write: the opcode names the setting (917, 935, 936, 7661,
// 7687, 7688).
constexpr BcpCall config_write(uint32_t opcode)
{
    return {opcode, WEX_MSG_TYPE_WRITE, WEXD_QUEUE, kWexdTimeout};
}

// The same call with the caller's message type (role and locale queries).
constexpr BcpCall with_msg_type(BcpCall call, uint32_t msg_type)
{
    call.msg_type = msg_type;
    return call;
}

// The view of a wire record as its bytes.
template <typename Record> std::span<const std::byte> bytes_of(const Record &record)
{
    return std::as_bytes(std::span(&record, 1));
}

enum class SendOptions {
    none,    // no options record
    plain,   // word 0 = 1, the rest zero
    standby, // the same, marked for the standby supervisor
};

// A message nobody waits a reply for: no message handle. Returns the
// ipcq_send result.
int send_one_way(int q, uint32_t dest_queue, uint32_t opcode, std::span<const std::byte> payload,
                 SendOptions options);

// A message sent with a handle that is released once the send succeeded.
// Returns the ipcq_send result.
int send_and_drop(int q, uint32_t dest_queue, uint32_t opcode, std::span<const std::byte> payload,
                  SendOptions options);

// A request without payload to wexd, answered over the transport: copies
// the reply's first bytes, up to out's size, into out and stores the
// reply's whole size. 0, or -1 when the send or the receive failed (and
// then no further transport call is made).
int synchronous_request(int q, uint32_t opcode, std::span<std::byte> out, std::size_t *reply_size);

// A request/response call that wants no reply; the two texts are empty
// unless the caller supplies its own. *len goes in as the request's length.
// Returns the bcp_req_resp result.
int request_response(int q, const BcpCall &call, const void *request, uint32_t *len, const char *text1 = "",
                     const char *text2 = "");

// A reply the library holds until it hands it on: its bytes (none when the
// reply carried none) and their length (0 then).
struct Reply {
    wex::MallocPtr<std::byte> bytes;
    uint32_t len = 0;

    // Takes over what the request/response layer handed out (NULL: none).
    void adopt(void *payload)
    {
        bytes.reset(static_cast<std::byte *>(payload));
        if (!payload)
            len = 0;
    }
    // Gives the bytes to a caller, who releases them with free().
    void *release() { return bytes.release(); }
};

// A request/response call whose reply lands in reply; request may be
// empty. Returns the bcp_req_resp result.
int exchange(int q, const BcpCall &call, std::span<const std::byte> request, Reply &reply);

// A name verification (roles, locales): asks wexd about the record that
// names it and releases the reply unread. 0 when wexd knows the name, -1
// otherwise; a failure other than unknown_status prints "Error in
// communicating with process".
int32_t verify_name(int q, const BcpCall &call, std::span<const std::byte> record, int32_t unknown_status);

// A query (roles, locales) that hands the reply on: *len goes in as the
// record's size and comes back as the reply's; on 0 *buf receives the
// reply (the caller's to free), otherwise the reply is released, *buf is
// untouched and the result is query_status of the exchange.
int32_t query(int q, const BcpCall &call, std::span<const std::byte> record, void **buf, uint32_t *len);

// A request with a request/response header sent and answered over the
// transport itself: the reply's payload lands in reply. The reply's status
// (-1 when it is no well-formed reply), or nothing when the request did not
// go out or no reply came.
std::optional<int> request_over_transport(int q, const BcpCall &call, std::span<const std::byte> request,
                                          Reply &reply);

// The result of a query: -1 (no exchange) becomes WEX_STATUS_NO_EXCHANGE,
// wexd's statuses pass through.
int32_t query_status(int result);

// The result of a write: -1 becomes WEX_ERRNO_STATUS of errno.
int32_t write_status(int result);

// The result of a registration: a time-out counts as success, other
// failures become WEX_ERRNO_STATUS.
int32_t registration_status(int result);

// The header that stands in front of a request/response payload that the
// library sends through the transport itself.
inline constexpr std::size_t kRawHeaderSize = 112;
void build_raw_header(std::span<std::byte, kRawHeaderSize> header, uint32_t msg_type, uint32_t payload_len);

} // namespace wex::daemon

#endif
