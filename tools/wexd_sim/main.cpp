// wexd-sim: a simulated wexd and parse-tree registration service on the
// platform transport, for running features and the library off the switch.
#include "handlers.h"
#include "input_file.h"
#include "main_tree.h"
#include "message_log.h"
#include "program.h"
#include "sim_setup.h"
#include "sim_state.h"

#include "ipcq.h"
#include "ipcq_serve.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr const char *kProgram = "wexd-sim";
volatile sig_atomic_t g_stop = 0;
volatile sig_atomic_t g_reload = 0;

constexpr const char *kUsage =
    "usage: wexd-sim [--config FILE] [--log-level events|messages] [--par-dir DIR]\n"
    "Serves wexd (queue 37), parse-tree registration (296), the configuration server (76)\n"
    "and notifications (0) at address fe000000 on the transport under $IPCQ_RUNTIME_DIR,\n"
    "logging one line per message (--log-level events: only starting, reloading and\n"
    "stopping), until SIGTERM or SIGINT; SIGHUP reads FILE again.\n"
    "FILE holds the roles, rules and locales to serve:\n"
    "  role ops Operators of the fabric\n"
    "  rule 1 permit show all\n"
    "  rule 3 deny config feature zone\n"
    "  locale fr_FR\n"
    "  user alice ops       (a user not named holds network-admin)\n"
    "DIR holds exec.par and each registered module's <module>.par; a main-tree request merges\n"
    "them into the next main_tree<N>.par there (the highest one found at start is removed).\n";

// The shell learns the main tree's path through a name field of
// WEX_FILE_NAME_SIZE bytes, so the directory must leave room for the
// longest name the numbering can reach.
constexpr std::size_t kMaxParDirBytes = WEX_FILE_NAME_SIZE - sizeof "/main_tree4294967295.par";

// The roles file is read whole, and refused unless it is a regular file.
constexpr std::size_t kMaxConfigBytes = 1u << 20;

bool load_config(const std::string &path, wexd_sim::SimState &state)
{
    const std::optional<std::string> text = wex_tools::read_input(kProgram, path, kMaxConfigBytes);
    if (!text)
        return false;
    std::string error;
    if (!wexd_sim::load_roles(*text, state, error)) {
        std::fprintf(stderr, "wexd-sim: %s: %s\n", path.c_str(), error.c_str());
        return false;
    }
    return true;
}

// SIGHUP: the roles file once more; a file that no longer reads keeps what
// is served.
void reload_config(const std::string &path, wexd_sim::SimState &state)
{
    if (path.empty())
        return;
    if (load_config(path, state))
        wexd_sim::log_event("wexd-sim: reloaded " + path + " (" + std::to_string(state.roles.size()) +
                            " roles, " + std::to_string(state.locales.size()) + " locales)");
    else
        wexd_sim::log_event("wexd-sim: kept the roles served: " + path + " does not load");
}

std::optional<wexd_sim::LogLevel> log_level_of(const std::string &word)
{
    if (word == "events")
        return wexd_sim::LogLevel::events;
    if (word == "messages")
        return wexd_sim::LogLevel::messages;
    return std::nullopt;
}

void on_signal(int signal)
{
    if (signal == SIGHUP)
        g_reload = 1;
    else
        g_stop = 1;
}

void handle_signals()
{
    struct sigaction action {
    };
    action.sa_handler = on_signal;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaction(signal, &action, nullptr);
}

// A shell started before any feature registers finds the base commands.
void make_first_main_tree(wexd_sim::SimState &state)
{
    if (state.par_dir.empty())
        return;
    const wexd_sim::GeneratedTree tree = wexd_sim::generate_main_tree(state);
    if (tree.number)
        state.dynamic_parfile = state.par_dir + "/" + wexd_get_current_dynamic_parfile_name();
    wexd_sim::log_event("wexd-sim: main tree " + tree.report);
}

// Opens every queue, or none, saying which one could not be opened.
bool open_queues(std::vector<wexd_sim::ServedQueue> &served, wexd_sim::SimState &state)
{
    const std::optional<uint32_t> failed = wexd_sim::open_served_queues(state, served);
    if (failed) {
        const int error = errno;
        std::fprintf(stderr, "wexd-sim: cannot open queue %u at %08x: %s%s\n", *failed, WEX_DEST_ADDRESS,
                     std::strerror(error), error == EADDRINUSE ? " (is another wexd running?)" : "");
    }
    return !failed;
}

} // namespace

int main(int argc, char **argv)
{
    auto state = std::make_unique<wexd_sim::SimState>();
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (wex_tools::print_version_if_asked(kProgram, args))
        return wex_tools::finish_output(kProgram, 0);
    std::string config_path;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--help" || args[i] == "-h") {
            std::fputs(kUsage, stdout);
            return wex_tools::finish_output(kProgram, 0);
        }
        if (args[i] == "--log-level" && i + 1 < args.size() && log_level_of(args[i + 1])) {
            wexd_sim::set_log_level(*log_level_of(args[++i]));
            continue;
        }
        if (args[i] == "--par-dir" && i + 1 < args.size()) {
            state->par_dir = args[++i];
            if (state->par_dir.size() > kMaxParDirBytes) {
                std::fprintf(stderr, "wexd-sim: %s: longer than %zu bytes, too long for a main tree's name\n",
                             state->par_dir.c_str(), kMaxParDirBytes);
                return 1;
            }
            wexd_dynamic_parfile_init(state->par_dir.c_str());
            continue;
        }
        if (args[i] == "--config" && i + 1 < args.size()) {
            config_path = args[++i];
            if (!load_config(config_path, *state))
                return 1;
            continue;
        }
        return wex_tools::usage_error(kProgram, "unknown argument '" + args[i] + "'", kUsage);
    }
    handle_signals();
    make_first_main_tree(*state);
    std::vector<wexd_sim::ServedQueue> served;
    if (!open_queues(served, *state))
        return 1;
    const char *dir = std::getenv("IPCQ_RUNTIME_DIR");
    wexd_sim::log_event("wexd-sim: serving queues 37, 296, 76 and 0 at fe000000 (" +
                        std::to_string(state->roles.size()) + " roles, " +
                        std::to_string(state->locales.size()) + " locales) in " +
                        (dir ? dir : "the default runtime directory"));
    wexd_sim::flush_log();
    // Each queue is served by a thread of its own. The threads are not
    // joined but counted out: the 32-bit build, run under emulation, cannot
    // always join a thread.
    std::atomic<int> serving{static_cast<int>(served.size())};
    std::atomic<int> failed{0};
    for (auto &queue : served) {
        std::thread([&queue, &serving, &failed] {
            const auto routes = wexd_sim::routes_of(queue.number);
            if (ipcq_serve(queue.q, routes.data(), routes.size(), wexd_sim::on_unknown, &queue, &g_stop) !=
                0) {
                std::fprintf(stderr, "wexd-sim: queue %u failed: %s\n", queue.number, std::strerror(errno));
                failed = 1;
                g_stop = 1;
            }
            --serving;
        }).detach();
    }
    while (serving > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        wexd_sim::flush_log();
        if (g_reload) {
            g_reload = 0;
            reload_config(config_path, *state);
        }
    }
    for (const auto &queue : served)
        ipcq_close(queue.q);
    wexd_sim::log_event("wexd-sim: stopped");
    wexd_sim::flush_log();
    return failed.load();
}
