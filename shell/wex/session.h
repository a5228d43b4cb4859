// One run of the shell: lines matched in the current mode, authorized,
// then run by the shell itself (modes, the running configuration) or sent
// to the feature that owns them, in batches while nothing waits on their
// answer.
#ifndef WEX_SHELL_SESSION_H
#define WEX_SHELL_SESSION_H

#include "authorization.h"
#include "daemon_queries.h"
#include "command_record.h"
#include "feature_protocol.h"
#include "options.h"
#include "output_filter.h"

#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace wex_shell
{

// What a session at a terminal adds to the shell: its output paged, its
// history, its page length.
class TerminalHooks
{
  public:
    virtual ~TerminalHooks() = default;
    // A command's whole output, to be shown a page at a time.
    virtual void deliver(std::string_view output) = 0;
    virtual std::string history_text() const = 0;
    virtual void set_page_length(uint32_t lines) = 0;
};

struct ShellSetup {
    const MainTree *tree;
    std::string tree_path; // the startup configuration is kept beside it
    int q;                 // this process's queue
    Options options;
    SessionContext context;
    Authorization authorization;
    std::map<std::string, uint32_t> features; // module -> its queue
    // Set for a session at a terminal: every command's output is captured
    // and delivered there instead of written as it comes, and entering
    // configuration mode takes the CLI lock until the session leaves it.
    TerminalHooks *terminal = nullptr;
};

class Session
{
  public:
    explicit Session(ShellSetup setup);

    // Runs one line (number counts from 1, 0 for a line typed at once);
    // false when the run must stop.
    bool run_line(std::string_view line, std::size_t number);
    // Sends what is still waiting for its feature; false when the run must
    // stop.
    bool flush();
    bool failed() const { return failures_ > 0; }
    // Whether "exit" in exec mode ended the session.
    bool ended() const { return ended_; }
    // The node of the current mode, and its prompt ("" in exec mode,
    // "config", "config-zone").
    std::size_t mode_node() const { return modes_.back().node; }
    const std::string &mode_prompt() const { return modes_.back().prompt; }
    // Leaves the current mode for the one above it; false in exec mode.
    bool leave_mode();
    // Gives back the CLI lock when this session holds it.
    void release_lock();

  private:
    struct Mode {
        std::size_t node;
        std::string prompt;
    };
    struct Pending {
        std::size_t number;
        std::string line;
    };

    bool run_indented(std::string_view line, std::size_t number);
    bool run_captured(const Match &match, const CommandLine &parts, const std::optional<OutputFilter> &filter,
                      std::size_t number);
    bool run_match(const Match &match, std::string_view line, std::size_t number, FILE *out);
    bool run_built_in(const std::string &function, const Match &match, FILE *out);
    bool run_checkpoint(const std::string &action, const Match &match, FILE *out);
    bool dispatch(const Match &match, std::string_view line, std::size_t number, FILE *out);
    bool send_batch(const std::string &module, const BatchWriter &batch, std::vector<Pending> lines,
                    FILE *out);
    bool show_running(const std::string &excluded, FILE *out);
    std::optional<std::string> running_config(const std::string &excluded);
    bool enter_configuration();
    std::string lock_holder_text(const std::optional<wex_tools::SimLockHolder> &holder) const;
    void enter(std::size_t node);
    void leave_to(std::size_t depth);
    bool show_users(FILE *out) const;
    bool report(std::size_t number, std::string_view line, const std::string &message);
    std::string startup_path() const;
    bool batching() const
    {
        return setup_.options.source == Source::script || setup_.options.source == Source::configuration;
    }

    ShellSetup setup_;
    std::vector<Mode> modes_;  // exec at the bottom
    std::size_t failures_ = 0; // commands that failed so far
    std::string pending_module_;
    BatchWriter pending_;
    std::vector<Pending> pending_lines_;
    std::optional<std::size_t> skip_under_; // the indentation of the last line that failed
    bool ended_ = false;
    bool holds_lock_ = false;
};

} // namespace wex_shell

#endif
