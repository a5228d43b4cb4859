// Whether a user may run a command: the rules of the user's roles, by the
// command's class (show, config, exec, clear, debug) and owning feature.
#ifndef WEX_SHELL_AUTHORIZATION_H
#define WEX_SHELL_AUTHORIZATION_H

#include <wex/wexd_client.h>

#include <optional>
#include <string>
#include <vector>

namespace wex_shell
{

class Authorization
{
  public:
    // The roles of user, each with its rules fetched from wexd; nothing
    // when wexd does not answer, with why set.
    static std::optional<Authorization> fetch(int q, const std::string &user, std::string &why);

    // Nothing when allowed; otherwise why not, naming the rule or role.
    std::optional<std::string> refusal(int32_t command_class, const std::string &feature) const;

  private:
    struct Role {
        std::string name;
        bool built_in_admin = false;  // a built-in role that may run everything
        bool built_in_viewer = false; // a built-in role that may only show
        wexd_perm_group_entry entry{};
    };
    std::vector<Role> roles_;
};

// The class of a command from its first keyword, or config for a command of
// a configuration mode.
int32_t command_class(const std::string &first_word, bool in_configuration);

} // namespace wex_shell

#endif
