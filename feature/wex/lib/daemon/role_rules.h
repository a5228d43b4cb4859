// The rule slots of a role, shared by the lookups and the display.
#ifndef WEX_DAEMON_ROLE_RULES_H
#define WEX_DAEMON_ROLE_RULES_H

#include <wex/wexd_client.h>

#include <algorithm>

namespace wex::daemon
{

// The rule slots a role uses: a count from another process is held to the
// 16 slots the entry has.
inline int32_t rules_in_use(const wexd_perm_group_entry &role) noexcept
{
    return std::clamp<int32_t>(role.rule_count, 0, WEXD_ROLE_MAX_RULES);
}

} // namespace wex::daemon

#endif
