// The roles and locales the simulator serves, read from a small text file:
//
//   # comment
//   role ops Operators of the fabric
//   rule 1 permit show all
//   rule 3 deny config feature zone
//   locale fr_FR
//   user alice ops audit
//
// A rule belongs to the role above it; rule numbers run from 1 to 16 and
// the numbers left out are absent slots. A user holds the roles named,
// defined above or built in; a user not named holds network-admin.
#ifndef WEXD_SIM_ROLE_CONFIG_H
#define WEXD_SIM_ROLE_CONFIG_H

#include <wex/wexd_client.h>

#include <istream>
#include <map>
#include <string>
#include <vector>

namespace wexd_sim
{

// What one file may define: every reply that lists them stays small.
inline constexpr std::size_t kMaxRoles = 1024;
inline constexpr std::size_t kMaxLocales = 1024;
inline constexpr std::size_t kMaxUsers = 1024;
inline constexpr std::size_t kMaxRolesPerUser = 16;

struct RoleConfig {
    std::vector<wexd_perm_group_entry> roles;
    std::vector<std::string> locales;
    std::map<std::string, std::vector<std::string>> users; // each user's roles
};

// Reads the file's text; on a line it cannot use, stores "line N: why" in
// error and returns false.
bool read_role_config(std::istream &in, RoleConfig &config, std::string &error);

} // namespace wexd_sim

#endif
