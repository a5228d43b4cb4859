// wex: the switch's command shell, run on commands from its arguments, a
// script, a configuration file or standard input. Started as "wexboot", it
// is the same shell with the boot image's name in its messages.
#include "completion.h"
#include "daemon_queries.h"
#include "input_file.h"
#include "program.h"
#include "session.h"
#include "terminal.h"

#include <wex/wex.h>

#include "ipcq.h"

#include <cerrno>
#include <clocale>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pwd.h>
#include <unistd.h>

namespace
{

// The most a script or configuration may hold: far past any switch's.
constexpr std::size_t kMaxInput = 256u << 20;
constexpr std::string_view kSeparator = " ; ";

std::string program_name(const char *argv0)
{
    const std::string path = argv0 ? argv0 : "wex";
    const std::string name = path.substr(path.rfind('/') + 1);
    return name == "wexboot" ? name : "wex";
}

wex_shell::SessionContext session_context(const std::string &program, int q)
{
    wex_shell::SessionContext context;
    context.program = program;
    context.shell_type = program == "wexboot" ? WEX_IMAGE_BOOT : WEX_IMAGE_MAIN;
    const char *user = std::getenv("USER");
    const passwd *entry = user ? nullptr : getpwuid(getuid());
    context.user = user ? user : entry ? entry->pw_name : "admin";
    const char *terminal = ttyname(STDIN_FILENO);
    context.terminal = terminal ? terminal : "console";
    context.session_id = std::to_string(getpid());
    context.ipcq_q = q;
    return context;
}

// Everything the session needs from wexd: the main tree, the features
// that registered commands, the user's roles. False after a line saying
// what is missing.
bool set_up(const std::string &program, int q, wex_shell::ShellSetup &setup,
            std::optional<wex_shell::MainTree> &tree)
{
    char path[WEX_FILE_NAME_SIZE] = "";
    if (wexd_wex_dynamic_parfile_name_get(q, path) != 0) {
        std::fprintf(stderr, "%s: wexd did not name the main tree\n", program.c_str());
        wex_tools::on_standard_error(wex_print_communication_failure_message);
        return false;
    }
    std::string why;
    tree = wex_shell::MainTree::load(path, why);
    if (!tree) {
        std::fprintf(stderr, "%s: %s\n", program.c_str(), why.c_str());
        return false;
    }
    tree->make_root();
    int status = 0;
    const auto features = wex_tools::feature_table(q, status);
    auto authorization = wex_shell::Authorization::fetch(q, setup.context.user, why);
    if (!features || !authorization) {
        std::fprintf(stderr, "%s: %s\n", program.c_str(),
                     features ? why.c_str() : "wexd did not list the features");
        return false;
    }
    for (const wex_tools::SimFeatureEntry &entry : *features)
        setup.features[wex_shell::field_text(entry.module)] = entry.queue;
    setup.tree = &*tree;
    setup.tree_path = path;
    setup.authorization = std::move(*authorization);
    return true;
}

// Runs the lines of text in order, numbered from 1 unless they came as one
// command line; stops when the session says so.
void run_lines(wex_shell::Session &session, std::string_view text, std::string_view separator, bool numbered)
{
    std::size_t number = 0;
    while (!text.empty()) {
        const std::size_t end = text.find(separator);
        ++number;
        if (!session.run_line(text.substr(0, end), numbered ? number : 0))
            return;
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + separator.size());
    }
    session.flush();
}

// The user's history file, in the home directory.
std::string history_path()
{
    const char *home = std::getenv("HOME");
    const passwd *entry = home ? nullptr : getpwuid(getuid());
    const std::string directory = home ? home : entry ? entry->pw_dir : "";
    return directory.empty() ? "" : directory + "/.wex_history";
}

// A session typed at the terminal, known to wexd while it lasts.
int run_terminal(const std::string &program, int q, wex_shell::ShellSetup setup)
{
    // Lines are edited as UTF-8 whatever locale the user started with.
    if (const char *locale = std::setlocale(LC_CTYPE, "");
        !locale || std::strcmp(locale, "C") == 0 || std::strcmp(locale, "POSIX") == 0)
        std::setlocale(LC_CTYPE, "C.UTF-8");
    wex_tools::SimSession known{};
    known.pid = static_cast<uint32_t>(getpid());
    known.since = static_cast<uint32_t>(std::time(nullptr));
    robust_strncpy(known.user, setup.context.user.c_str(), sizeof known.user);
    robust_strncpy(known.terminal, setup.context.terminal.c_str(), sizeof known.terminal);
    if (const int status = wex_tools::open_session(q, known); status != 0) {
        std::fprintf(stderr, "%s: wexd refused a new session (%s)\n", program.c_str(),
                     status > 0 ? "every session it allows is in use" : "no answer");
        return 2;
    }
    wexd_wex_config config{};
    robust_strncpy(config.switchname, "switch", sizeof config.switchname);
    config.term_length = 24;
    wexd_wex_config_info_get(q, &config); // the defaults above stand when wexd does not say
    wex_shell::Terminal terminal(
        {setup.tree, wex_shell::field_text(config.switchname), history_path(), config.term_length});
    setup.terminal = &terminal;
    wex_shell::Session session(std::move(setup));
    terminal.run(session);
    session.release_lock();
    wex_tools::close_session(q, known.pid);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string program = program_name(argv[0]);
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (wex_tools::print_version_if_asked(program.c_str(), args))
        return wex_tools::finish_output(program.c_str(), 0);
    if (wex_tools::wants_help(args)) {
        std::fputs(wex_shell::kUsage, stdout);
        return wex_tools::finish_output(program.c_str(), 0);
    }
    std::string why;
    std::optional<wex_shell::Options> options = wex_shell::parse_options(args, why);
    if (!options)
        return wex_tools::usage_error(program.c_str(), why, wex_shell::kUsage);
    if (options->source == wex_shell::Source::configuration && options->text.empty() && isatty(STDIN_FILENO))
        options->source = wex_shell::Source::terminal;
    std::optional<std::string> input;
    if (options->source == wex_shell::Source::configuration || options->source == wex_shell::Source::script) {
        input =
            wex_tools::read_input(program.c_str(), options->text.empty() ? "-" : options->text, kMaxInput);
        if (!input)
            return 2;
    }
    if (options->output == wex_shell::Output::discarded)
        (void)!std::freopen("/dev/null", "w", stdout);
    else if (options->output == wex_shell::Output::standard_error)
        dup2(STDERR_FILENO, STDOUT_FILENO);

    const int q = wex_tools::open_client_queue();
    if (q < 0) {
        std::fprintf(stderr, "%s: cannot open a queue on the transport: %s\n", program.c_str(),
                     std::strerror(errno));
        return 2;
    }
    wex_shell::ShellSetup setup{nullptr, "", q, *options, session_context(program, q), {}, {}, {}};
    std::optional<wex_shell::MainTree> tree;
    if (!set_up(program, q, setup, tree)) {
        ipcq_close(q);
        return 2;
    }
    if (options->source == wex_shell::Source::completion) {
        for (const std::string &word : wex_shell::command_line_completions(*tree, options->text, kSeparator))
            std::printf("%s\n", word.c_str());
        ipcq_close(q);
        return wex_tools::finish_output(program.c_str(), 0);
    }
    if (options->source == wex_shell::Source::terminal) {
        const int status = run_terminal(program, q, std::move(setup));
        ipcq_close(q);
        return status;
    }
    wex_shell::Session session(std::move(setup));
    if (options->source == wex_shell::Source::command_line)
        run_lines(session, options->text, kSeparator, false);
    else
        run_lines(session, *input, "\n", true);
    ipcq_close(q);
    return wex_tools::finish_output(program.c_str(), session.failed() ? 1 : 0);
}
