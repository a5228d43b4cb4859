// wexctl config diff and config remediate: two configuration texts
// compared, and the commands that turn one into the other.
#ifndef WEXCTL_CONFIG_COMMANDS_H
#define WEXCTL_CONFIG_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

namespace wexctl
{

// Runs "config ARGS..." when it is one of these; nothing for the others.
std::optional<int> run_config_command(const std::vector<std::string> &args);

} // namespace wexctl

#endif
