// wexctl config diff and config remediate: two configuration texts
// compared, and the commands that turn one into the other.
#ifndef WEXCTL_CONFIG_COMMANDS_H
#define WEXCTL_CONFIG_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

namespace wexctl
{

// Compares OLD and NEW (args), and with a third argument "--json" prints
// the difference as JSON; the exit status.
int diff_configs(const std::vector<std::string> &args);

// Runs "config ARGS..." when it is one of these; nothing for the others.
std::optional<int> run_config_command(const std::vector<std::string> &args);

} // namespace wexctl

#endif
