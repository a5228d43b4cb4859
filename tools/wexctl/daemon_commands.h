// The daemon requests of wexctl: reads and writes of wexd's state, printed
// with the library's own show functions.
#ifndef WEXCTL_DAEMON_COMMANDS_H
#define WEXCTL_DAEMON_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

namespace wexctl
{

// How long a daemon command waits for wexd unless --timeout says otherwise.
inline constexpr unsigned kDefaultTimeout = 3;

// Runs the command when it is a daemon command, returning its exit status;
// nullopt when the name is no daemon command.
std::optional<int> run_daemon_command(const std::string &name, const std::vector<std::string> &args);

} // namespace wexctl

#endif
