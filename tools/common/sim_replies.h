// The replies wexd-sim gives where a real wexd's layout is its own: written
// once, for the simulator that sends them and the tools that read them.
#ifndef WEX_TOOLS_SIM_REPLIES_H
#define WEX_TOOLS_SIM_REPLIES_H

#include <wex/wexd_client.h>

#include <cstddef>
#include <cstdint>

namespace wex_tools
{

// One role of a role query: its number and name (where the library's walk
// reads the name), then the role entry.
struct SimRoleReply {
    uint32_t number;
    char name[WEXD_ROLE_NAME_SIZE];
    wexd_perm_group_entry role;
};
static_assert(sizeof(SimRoleReply) == 912);
static_assert(offsetof(SimRoleReply, role) == 36);

// The answer to a read (message type WEX_MSG_TYPE_READ) of the CLI lock.
struct SimLockHolder {
    uint32_t locked; // 1 held, 0 free
    uint32_t requester;
};

} // namespace wex_tools

#endif
