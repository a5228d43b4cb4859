// wexd-sim: a simulated wexd and parse-tree registration service on the
// platform transport, for running features and the library off the switch.
#include "handlers.h"
#include "role_config.h"
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
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

volatile sig_atomic_t g_stop = 0;

constexpr uint32_t kQueues[] = {WEXD_QUEUE, PARSE_TREE_QUEUE, ASCII_CFG_SERVER_QUEUE, WEX_NOTIFY_QUEUE};

void usage(std::FILE *to)
{
    std::fputs("usage: wexd-sim [--config FILE]\n"
               "Serves wexd (queue 37), parse-tree registration (296), the configuration server (76)\n"
               "and notifications (0) at address fe000000 on the transport under $IPCQ_RUNTIME_DIR,\n"
               "logging one line per message, until SIGTERM or SIGINT.\n"
               "FILE holds the roles, rules and locales to serve:\n"
               "  role ops Operators of the fabric\n"
               "  rule 1 permit show all\n"
               "  rule 3 deny config feature zone\n"
               "  locale fr_FR\n",
               to);
}

bool load_config(const char *path, wexd_sim::SimState &state)
{
    std::ifstream file(path);
    if (!file) {
        std::fprintf(stderr, "wexd-sim: cannot read %s: %s\n", path, std::strerror(errno));
        return false;
    }
    wexd_sim::RoleConfig config;
    std::string error;
    if (!wexd_sim::read_role_config(file, config, error)) {
        std::fprintf(stderr, "wexd-sim: %s: %s\n", path, error.c_str());
        return false;
    }
    state.roles = std::move(config.roles);
    state.locales = std::move(config.locales);
    return true;
}

void on_signal(int)
{
    g_stop = 1;
}

// Opens every queue, or none: the queues already opened are closed again.
bool open_queues(std::vector<wexd_sim::ServedQueue> &served, wexd_sim::SimState &state)
{
    for (uint32_t number : kQueues) {
        const int q = ipcq_open(WEX_DEST_ADDRESS, number);
        if (q < 0) {
            const int error = errno;
            std::fprintf(stderr, "wexd-sim: cannot open queue %u at %08x: %s%s\n", number, WEX_DEST_ADDRESS,
                         std::strerror(error), error == EADDRINUSE ? " (is another wexd running?)" : "");
            for (const auto &open : served)
                ipcq_close(open.q);
            return false;
        }
        served.push_back({&state, q, number});
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    auto state = std::make_unique<wexd_sim::SimState>();
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            usage(stdout);
            return 0;
        }
        if (arg == "--config" && i + 1 < argc) {
            if (!load_config(argv[++i], *state))
                return 1;
            continue;
        }
        std::fprintf(stderr, "wexd-sim: unknown argument '%s'\n", arg.c_str());
        usage(stderr);
        return 2;
    }
    struct sigaction action {
    };
    action.sa_handler = on_signal;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    std::vector<wexd_sim::ServedQueue> served;
    if (!open_queues(served, *state))
        return 1;
    const char *dir = std::getenv("IPCQ_RUNTIME_DIR");
    std::printf("wexd-sim: serving queues 37, 296, 76 and 0 at fe000000 (%zu roles, %zu locales) in %s\n",
                state->roles.size(), state->locales.size(), dir ? dir : "the default runtime directory");
    std::fflush(stdout);
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
    while (serving > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    for (const auto &queue : served)
        ipcq_close(queue.q);
    std::printf("wexd-sim: stopped\n");
    return failed.load();
}
