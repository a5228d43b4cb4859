// wexctl tree: grammar texts compiled to .par images and images written
// back as text.
#ifndef WEXCTL_TREE_COMMANDS_H
#define WEXCTL_TREE_COMMANDS_H

#include <string>
#include <vector>

namespace wexctl
{

// Runs "tree ARGS..." and returns the exit status.
int run_tree_command(const std::vector<std::string> &args);

} // namespace wexctl

#endif
