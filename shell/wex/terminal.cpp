#include "terminal.h"

#include "completion.h"
#include "output_filter.h"

#include <histedit.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace wex_shell
{
namespace
{

// A history file keeps this many lines at most.
constexpr int kHistoryLines = 1000;
constexpr char kInterruptKey = 0x03;
constexpr std::string_view kMore = "--More--";

// Signals reach the editing loop through a pipe, so that a wait for a key
// ends at once: 'i' for SIGINT, 't' for SIGTERM and SIGHUP.
int g_signal_pipe[2] = {-1, -1};
volatile sig_atomic_t g_interrupted = 0;
volatile sig_atomic_t g_ending = 0;

void on_signal(int signal)
{
    const int saved = errno;
    const char note = signal == SIGINT ? 'i' : 't';
    if (signal == SIGINT)
        g_interrupted = 1;
    else
        g_ending = 1;
    (void)!write(g_signal_pipe[1], &note, 1);
    errno = saved;
}

void catch_signals()
{
    if (pipe2(g_signal_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        g_signal_pipe[0] = g_signal_pipe[1] = -1;
    struct sigaction action {
    };
    action.sa_handler = on_signal; // no SA_RESTART: a wait for a key ends
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

// Forgets a Ctrl-C that came before the next command.
void clear_interrupt()
{
    char notes[64];
    while (g_signal_pipe[0] >= 0 && read(g_signal_pipe[0], notes, sizeof notes) > 0) {
    }
    g_interrupted = 0;
}

// The next byte from the terminal, kInterruptKey for SIGINT, or -1 at the
// end of input or on SIGTERM and SIGHUP.
int next_byte(int fd)
{
    while (!g_ending) {
        pollfd ready[2] = {{fd, POLLIN, 0}, {g_signal_pipe[0], POLLIN, 0}};
        if (poll(ready, g_signal_pipe[0] >= 0 ? 2 : 1, -1) < 0) {
            if (errno == EINTR)
                continue;
            return -1;
        }
        if (ready[1].revents & POLLIN) {
            clear_interrupt();
            if (!g_ending)
                return kInterruptKey;
            continue;
        }
        unsigned char byte = 0;
        const ssize_t got = read(fd, &byte, 1);
        if (got == 1)
            return byte;
        if (got < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        return -1;
    }
    return -1;
}

// Reads one character for the line editor, decoding UTF-8 itself: a byte
// that starts no valid sequence stands for U+FFFD, so no input can stop
// the editing.
int read_character(EditLine *el, wchar_t *character)
{
    FILE *in = nullptr;
    el_get(el, EL_GETFP, 0, &in);
    const int fd = in ? fileno(in) : STDIN_FILENO;
    const int first = next_byte(fd);
    if (first < 0)
        return g_ending ? -1 : 0;
    int more = first < 0x80                    ? 0
               : first >= 0xf0 && first < 0xf8 ? 3
               : first >= 0xe0                 ? 2
               : first >= 0xc0                 ? 1
                                               : -1;
    if (more < 0) {
        *character = 0xfffd;
        return 1;
    }
    uint32_t code = more == 0 ? first : static_cast<uint32_t>(first) & (0x3f >> more);
    for (; more > 0; --more) {
        const int next = next_byte(fd);
        if (next < 0 || (next & 0xc0) != 0x80) {
            *character = 0xfffd;
            return next < 0 && g_ending ? -1 : 1;
        }
        code = (code << 6) | (static_cast<uint32_t>(next) & 0x3f);
    }
    *character = static_cast<wchar_t>(code);
    return 1;
}

// One key pressed at the --More-- prompt, read without echo.
int read_key()
{
    termios saved{};
    const bool raw = tcgetattr(STDIN_FILENO, &saved) == 0;
    if (raw) {
        termios keys = saved;
        keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
        keys.c_cc[VMIN] = 1;
        keys.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSANOW, &keys);
    }
    const int key = next_byte(STDIN_FILENO);
    if (raw)
        tcsetattr(STDIN_FILENO, TCSANOW, &saved);
    return key;
}

} // namespace

Terminal::Terminal(TerminalSetup setup) : setup_(std::move(setup))
{
    catch_signals();
    el_ = el_init("wex", stdin, stdout, stderr);
    history_ = history_init();
    HistEvent event;
    ::history(history_, &event, H_SETSIZE, kHistoryLines);
    ::history(history_, &event, H_SETUNIQUE, 1);
    if (!setup_.history_path.empty())
        ::history(history_, &event, H_LOAD, setup_.history_path.c_str());
    el_set(el_, EL_CLIENTDATA, this);
    el_set(el_, EL_EDITOR, "emacs");
    // Ctrl-C while a line is edited comes as a key, in turn with the keys
    // around it, rather than as a signal that may overtake them.
    el_set(el_, EL_SETTY, "-d", "-isig", nullptr);
    el_set(el_, EL_HIST, ::history, history_);
    el_set(el_, EL_PROMPT, prompt_of);
    el_set(el_, EL_GETCFN, read_character);
    // Wide names are kept as given; narrow ones would be copied, and the
    // copies never freed.
    el_wset(el_, EL_ADDFN, L"wex-help", L"Show what may come next", on_help);
    el_wset(el_, EL_ADDFN, L"wex-complete", L"Complete the word", on_complete);
    el_wset(el_, EL_ADDFN, L"wex-interrupt", L"Abandon the line", on_interrupt);
    el_set(el_, EL_BIND, "?", "wex-help", nullptr);
    el_set(el_, EL_BIND, "^I", "wex-complete", nullptr);
    el_set(el_, EL_BIND, "^C", "wex-interrupt", nullptr);
    // The arrows in both forms terminals send, whatever $TERM says.
    static constexpr const char *kArrows[][2] = {{"\\e[A", "ed-prev-history"}, {"\\eOA", "ed-prev-history"},
                                                 {"\\e[B", "ed-next-history"}, {"\\eOB", "ed-next-history"},
                                                 {"\\e[C", "ed-next-char"},    {"\\eOC", "ed-next-char"},
                                                 {"\\e[D", "ed-prev-char"},    {"\\eOD", "ed-prev-char"}};
    for (const auto &arrow : kArrows)
        el_set(el_, EL_BIND, arrow[0], arrow[1], nullptr);
}

Terminal::~Terminal()
{
    el_end(el_);
    history_end(history_);
}

Terminal &Terminal::of(EditLine *el)
{
    void *self = nullptr;
    el_get(el, EL_CLIENTDATA, &self);
    return *static_cast<Terminal *>(self);
}

char *Terminal::prompt_of(EditLine *el)
{
    Terminal &terminal = of(el);
    const std::string &mode = terminal.session_->mode_prompt();
    terminal.prompt_ = terminal.setup_.switch_name + (mode.empty() ? "" : "(" + mode + ")") + "# ";
    return terminal.prompt_.data();
}

std::string Terminal::typed_before_cursor() const
{
    const LineInfo *line = el_line(el_);
    return std::string(line->buffer, static_cast<std::size_t>(line->cursor - line->buffer));
}

unsigned char Terminal::on_help(EditLine *el, int)
{
    Terminal &terminal = of(el);
    const std::string typed = terminal.typed_before_cursor();
    const std::string help =
        describe_choices(typed, choices_at(*terminal.setup_.tree, terminal.session_->mode_node(), typed));
    std::fprintf(stdout, "?\n%s", help.c_str());
    std::fflush(stdout);
    return CC_REDISPLAY;
}

unsigned char Terminal::on_complete(EditLine *el, int)
{
    Terminal &terminal = of(el);
    const Completion completion =
        complete_at(*terminal.setup_.tree, terminal.session_->mode_node(), terminal.typed_before_cursor());
    if (!completion.insert.empty()) {
        el_insertstr(el, completion.insert.c_str());
        return CC_REFRESH;
    }
    if (completion.candidates.empty())
        return CC_REFRESH_BEEP;
    std::string listed;
    for (const std::string &candidate : completion.candidates)
        listed += (listed.empty() ? "" : "  ") + candidate;
    std::fprintf(stdout, "\n%s\n", listed.c_str());
    std::fflush(stdout);
    return CC_REDISPLAY;
}

unsigned char Terminal::on_interrupt(EditLine *el, int)
{
    of(el).interrupted_ = true;
    std::fputs("^C", stdout);
    return CC_NEWLINE;
}

void Terminal::remember(const std::string &line)
{
    HistEvent event;
    ::history(history_, &event, H_ENTER, line.c_str());
    if (setup_.history_path.empty())
        return;
    // The history may hold what the user would not show others.
    const mode_t saved = umask(077);
    ::history(history_, &event, H_SAVE, setup_.history_path.c_str());
    umask(saved);
}

std::string Terminal::history_text() const
{
    std::vector<std::string> lines;
    HistEvent event;
    for (int found = ::history(history_, &event, H_FIRST); found == 0;
         found = ::history(history_, &event, H_NEXT))
        lines.emplace_back(event.str);
    std::string text;
    for (std::size_t i = lines.size(); i > 0; --i) {
        std::string line = lines[i - 1];
        if (!line.empty() && line.back() == '\n')
            line.pop_back();
        text += std::to_string(lines.size() - i + 1) + "  " + line + "\n";
    }
    return text;
}

// A page at a time when pages are set: at --More--, the space bar shows
// the next page, Enter the next line, anything else (q, Ctrl-C) stops.
void Terminal::deliver(std::string_view output)
{
    const std::vector<std::string_view> lines = lines_of(output);
    const std::size_t page = setup_.page_length > 1 ? setup_.page_length - 1 : 0;
    std::size_t allowed = page == 0 ? lines.size() : page;
    for (std::size_t i = 0; i < lines.size() && !g_interrupted && !g_ending; ++i) {
        if (i == allowed) {
            std::fwrite(kMore.data(), 1, kMore.size(), stdout);
            std::fflush(stdout);
            const int key = read_key();
            std::printf("\r%*s\r", static_cast<int>(kMore.size()), "");
            if (key == ' ')
                allowed += page;
            else if (key == '\r' || key == '\n')
                allowed += 1;
            else
                break;
        }
        std::fwrite(lines[i].data(), 1, lines[i].size(), stdout);
    }
    std::fflush(stdout);
}

void Terminal::run(Session &session)
{
    session_ = &session;
    while (!g_ending && !session.ended()) {
        int count = 0;
        interrupted_ = false;
        const char *typed = el_gets(el_, &count);
        if (g_ending)
            break;
        if (interrupted_)
            continue;
        if (!typed) {
            // Ctrl-D at an empty prompt leaves the mode, or the session.
            std::fputs("\n", stdout);
            if (count < 0 || !session.leave_mode())
                break;
            continue;
        }
        std::string line(typed, static_cast<std::size_t>(count));
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
            line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos)
            continue;
        remember(line);
        clear_interrupt();
        session.run_line(line, 0);
        session.flush();
    }
}

} // namespace wex_shell
