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

// Requests of the project's own to wexd-sim, outside the library's opcodes:
// the features that registered a tree, the roles of a user, and the shell's
// interactive sessions.
inline constexpr uint32_t kOpcFeatureTableGet = 0x57580010;
inline constexpr uint32_t kOpcUserRolesGet = 0x57580011;
inline constexpr uint32_t kOpcSessionOpen = 0x57580012;  // request: a SimSession
inline constexpr uint32_t kOpcSessionClose = 0x57580013; // request: the session's process id
inline constexpr uint32_t kOpcSessionList = 0x57580014;  // reply: a SimSession for each

// An interactive session of the shell, known by its process: wexd-sim
// forgets a session whose process is gone, and frees the CLI lock it held.
struct SimSession {
    uint32_t pid;
    uint32_t since; // seconds since the epoch
    char user[32];
    char terminal[32];
};
static_assert(sizeof(SimSession) == 72);

// One feature of the feature table: its module and the queue it registered
// its tree from, where its commands go.
struct SimFeatureEntry {
    char module[24];
    uint32_t queue;
};
static_assert(sizeof(SimFeatureEntry) == 28);

// A user's roles: asked by name, answered with one name record per role.
struct SimRoleName {
    char name[WEXD_ROLE_NAME_SIZE];
};

} // namespace wex_tools

#endif
