// Checkpoints: running configurations saved by name beside the main tree,
// listed, shown, compared with the running configuration as the commands
// that would restore them, and restored through a child shell.
#ifndef WEX_SHELL_CHECKPOINTS_H
#define WEX_SHELL_CHECKPOINTS_H

#include "main_tree.h"

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace wex_shell
{

// How a restore treats a command that fails.
enum class RestoreMode {
    all_or_nothing,    // stop, and put the running configuration back as it was
    stop_on_error,     // stop there, keeping what was done
    continue_on_error, // run every command
};

class Checkpoints
{
  public:
    // The running configuration as the shell shows it, or nothing when a
    // feature did not give its part (said already).
    using RunningConfig = std::function<std::optional<std::string>()>;

    Checkpoints(std::string directory, const MainTree &tree, RunningConfig running);

    // Each returns false after saying on the complaints stream why it failed.
    bool save(const std::string &name);
    bool list(FILE *out) const;
    bool show(const std::string &name, FILE *out) const;
    bool remove(const std::string &name);
    bool diff(const std::string &name, FILE *out) const;
    bool restore(const std::string &name, RestoreMode mode);

  private:
    struct Restoration {
        std::string before;                // the running configuration
        std::vector<std::string> commands; // from it to the checkpoint
    };

    std::optional<Restoration> restoration(const std::string &name) const;
    std::vector<std::string> names() const;
    // The text of checkpoint name, whose name is well formed.
    std::optional<std::string> read(const std::string &name) const;
    // The text of checkpoint name, or nothing after saying why.
    std::optional<std::string> text_of(const std::string &name) const;
    std::optional<std::vector<std::string>> plan(const std::string &running, const std::string &wanted,
                                                 const std::string &wanted_name) const;
    bool apply(const std::vector<std::string> &commands, bool stop_on_error) const;
    bool put_back(const std::string &before) const;
    std::string path_of(const std::string &name) const { return directory_ + "/" + name; }

    std::string directory_;
    const MainTree &tree_;
    RunningConfig running_;
};

// The restore mode a keyword names; all-or-nothing for none.
std::optional<RestoreMode> restore_mode(const std::string &keyword);

} // namespace wex_shell

#endif
