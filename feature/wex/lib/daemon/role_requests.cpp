// Role requests to wexd: the verification of a role name, and the query of
// one role or of every role.
#include <wex/wexd_client.h>

#include "common/alloc.h"
#include "common/context.h"
#include "wex_process_api.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace frame = wex::daemon;

namespace
{

// Where a role reply names its role, for the next step of the walk.
constexpr std::size_t kReplyNameOffset = 4;
constexpr std::size_t kReplyNameEnd = kReplyNameOffset + WEXD_ROLE_NAME_SIZE;

wexd_perm_group_conf_cli_wrapper role_request(uint32_t query_kind, const char *name) noexcept
{
    wexd_perm_group_conf_cli_wrapper request;
    wexd_perm_group_conf_cli_wrapper_init(&request);
    request.query_kind = query_kind;
    robust_strncpy(request.name, name, sizeof request.name);
    return request;
}

// Built-in roles are known without asking wexd; the network roles belong to
// the default context only.
int32_t verify_static_role(const char *name) noexcept
{
    const bool network_role =
        std::strcmp(name, "network-admin") == 0 || std::strcmp(name, "network-operator") == 0;
    return network_role && wex::context_number() != 1 ? -1 : 0;
}

// Gathers every role, one reply per role, each request naming the role of
// the reply before it. Ends at the first reply without payload, or when the
// next reply would not fit the gathering limit.
int32_t gather_all_roles(int32_t q, uint32_t msg_type, wexd_perm_group_conf_cli_wrapper &request, void **buf,
                         uint32_t *len) noexcept
{
    // Without room to gather into, nothing could be handed out: as if no
    // exchange had happened.
    wex::MallocPtr<std::byte> gathered(static_cast<std::byte *>(wex::mem_alloc(WEXD_ROLE_GATHER_LIMIT)));
    if (!gathered)
        return WEX_STATUS_NO_EXCHANGE;
    *len = 0;
    const uint32_t next_type =
        msg_type == WEX_MSG_TYPE_ROLE_READ ? WEX_MSG_TYPE_ROLE_READ_NEXT : WEX_MSG_TYPE_READ_NEXT;
    for (;;) {
        frame::Reply reply;
        const int result = frame::exchange(q, frame::with_msg_type(frame::kRoleInfoGet, msg_type),
                                           frame::bytes_of(request), reply);
        const uint32_t reply_len = reply.len;
        if (result != 0)
            return frame::query_status(result);
        if (reply_len == 0)
            break;
        if (reply_len > WEXD_ROLE_GATHER_LIMIT - *len) {
            std::puts("Warning: the output may not have all the roles");
            break;
        }
        std::memcpy(gathered.get() + *len, reply.bytes.get(), reply_len);
        *len += reply_len;
        // A reply too short to name its role cannot lead to the next one.
        if (reply_len < kReplyNameEnd)
            break;
        robust_strncpy(request.name, reinterpret_cast<const char *>(reply.bytes.get() + kReplyNameOffset),
                       WEXD_ROLE_NAME_SIZE + 1);
        msg_type = next_type;
    }
    *buf = gathered.release();
    return 0;
}

} // namespace

extern "C" {

WEX_API int32_t wexd_perm_group_role_name_verify2(int32_t q, const char *name, uint32_t msg_type) noexcept
{
    if (!name || (msg_type != WEX_MSG_TYPE_READ && msg_type != WEX_MSG_TYPE_ROLE_READ))
        return -1;
    if (wex_lib_is_static_role(name))
        return verify_static_role(name);
    const wexd_perm_group_conf_cli_wrapper request = role_request(0, name);
    return frame::verify_name(q, frame::with_msg_type(frame::kRoleNameVerify, msg_type),
                              frame::bytes_of(request), WEX_STATUS_ROLE_UNKNOWN);
}

WEX_API int32_t wexd_perm_group_role_name_verify(int32_t q, const char *name) noexcept
{
    return wexd_perm_group_role_name_verify2(q, name, WEX_MSG_TYPE_READ);
}

WEX_API int32_t wexd_role_info_get(int32_t q, uint32_t msg_type, uint32_t query_kind, const char *name,
                                   void **buf, uint32_t *len) noexcept
{
    // Nowhere to hand the roles to: no request is worth sending.
    if (!buf || !len)
        return -1;
    wexd_perm_group_conf_cli_wrapper request = role_request(query_kind, name);
    if (query_kind == WEXD_ROLE_QUERY_ALL && !name)
        return gather_all_roles(q, msg_type, request, buf, len);
    return frame::query(q, frame::with_msg_type(frame::kRoleInfoGet, msg_type), frame::bytes_of(request), buf,
                        len);
}

} // extern "C"
