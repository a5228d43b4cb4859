// A session typed at a terminal: line editing and history through libedit,
// "?" help and TAB completion from the main tree, a prompt naming the
// switch and the mode, long output a page at a time, Ctrl-C abandoning the
// line or the output, Ctrl-D leaving the mode, and a clean end on SIGTERM
// or SIGHUP. The session is known to wexd while it lasts.
#ifndef WEX_SHELL_TERMINAL_H
#define WEX_SHELL_TERMINAL_H

#include "session.h"

#include <cstdint>
#include <string>
#include <string_view>

struct editline;
struct history;

namespace wex_shell
{

struct TerminalSetup {
    const MainTree *tree;
    std::string switch_name;
    std::string history_path; // "" keeps no history file
    uint32_t page_length;     // lines of a page; 0 pages nothing
};

class Terminal : public TerminalHooks
{
  public:
    explicit Terminal(TerminalSetup setup);
    ~Terminal() override;
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    // Reads and runs lines until the session ends: "exit" in exec mode,
    // Ctrl-D at an empty prompt in exec mode, SIGTERM or SIGHUP.
    void run(Session &session);

    void deliver(std::string_view output) override;
    std::string history_text() const override;
    void set_page_length(uint32_t lines) override { setup_.page_length = lines; }

  private:
    static unsigned char on_help(editline *el, int key);
    static unsigned char on_complete(editline *el, int key);
    static unsigned char on_interrupt(editline *el, int key);
    static char *prompt_of(editline *el);
    static Terminal &of(editline *el);

    std::string typed_before_cursor() const;
    void remember(const std::string &line);

    TerminalSetup setup_;
    editline *el_ = nullptr;
    struct history *history_ = nullptr;
    Session *session_ = nullptr;
    std::string prompt_;
    bool interrupted_ = false; // Ctrl-C abandoned the line being edited
};

} // namespace wex_shell

#endif
