#include "daemon_queries.h"
#include "field_text.h"

#include "bcp.h"
#include "ipcq.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace wex_tools
{
namespace
{

// How long a read may take, in the transport's seconds, as every other
// request to wexd.
constexpr uint32_t kReadTimeout = 10;

// A read whose reply is a whole number of records: the records, or nothing.
template <typename Record>
std::optional<std::vector<Record>> read_records(int q, uint32_t opcode, const void *query, uint32_t query_len,
                                                int &status)
{
    void *reply = nullptr;
    uint32_t len = query_len;
    status =
        bcp_req_resp(opcode, WEX_MSG_TYPE_READ, query, &reply, &len, "", "", WEXD_QUEUE, q, kReadTimeout);
    std::optional<std::vector<Record>> records;
    if (status == 0 && len % sizeof(Record) == 0) {
        records.emplace(len / sizeof(Record));
        if (len > 0)
            std::memcpy(records->data(), reply, len);
    }
    std::free(reply);
    return records;
}

} // namespace

int open_client_queue()
{
    for (uint32_t attempt = 0; attempt < 16; ++attempt) {
        const int q =
            ipcq_open(WEX_DEST_ADDRESS, 20000 + (static_cast<uint32_t>(getpid()) + attempt) % 40000);
        if (q >= 0 || errno != EADDRINUSE)
            return q;
    }
    return -1;
}

std::optional<SimLockHolder> lock_holder(int q)
{
    wexd_cli_lock_req query{};
    int status = 0;
    const auto holders = read_records<SimLockHolder>(q, WEX_OPC_CLI_LOCK, &query, sizeof query, status);
    return holders && holders->size() == 1 ? std::optional(holders->front()) : std::nullopt;
}

std::string holder_text(const std::optional<SimLockHolder> &holder)
{
    if (!holder)
        return "wexd does not say who holds it";
    return holder->locked ? "held by requester " + std::to_string(holder->requester) : "not held";
}

std::optional<std::vector<SimFeatureEntry>> feature_table(int q, int &status)
{
    return read_records<SimFeatureEntry>(q, kOpcFeatureTableGet, nullptr, 0, status);
}

std::optional<std::vector<std::string>> user_roles(int q, const std::string &user, int &status)
{
    char name[sizeof(pinfo::username)] = {};
    robust_strncpy(name, user.c_str(), sizeof name);
    const auto records = read_records<SimRoleName>(q, kOpcUserRolesGet, name, sizeof name, status);
    if (!records)
        return std::nullopt;
    std::vector<std::string> roles;
    for (const SimRoleName &role : *records)
        roles.push_back(field_text(role.name));
    return roles;
}

int open_session(int q, const SimSession &session)
{
    void *reply = nullptr;
    uint32_t len = sizeof session;
    const int status = bcp_req_resp(kOpcSessionOpen, WEX_MSG_TYPE_WRITE, &session, &reply, &len, "", "",
                                    WEXD_QUEUE, q, kReadTimeout);
    std::free(reply);
    return status;
}

void close_session(int q, uint32_t pid)
{
    void *reply = nullptr;
    uint32_t len = sizeof pid;
    (void)bcp_req_resp(kOpcSessionClose, WEX_MSG_TYPE_WRITE, &pid, &reply, &len, "", "", WEXD_QUEUE, q,
                       kReadTimeout); // a wexd that is gone has forgotten the session anyway
    std::free(reply);
}

std::optional<std::vector<SimSession>> sessions(int q)
{
    int status = 0;
    return read_records<SimSession>(q, kOpcSessionList, nullptr, 0, status);
}

} // namespace wex_tools
