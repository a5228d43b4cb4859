// The recording wexd of feature unit tests: wexd-sim's answers, served on
// threads of the test process, its message log kept for the test to read.
#include <wex-testing/wex_testing.h>

#include "handlers.h"
#include "message_log.h"
#include "sim_setup.h"

#include "ipcq.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <new>
#include <thread>
#include <unistd.h>

#define WEX_TESTING_API extern "C" __attribute__((visibility("default")))

struct wex_testing_daemon {
    std::string dir; // the runtime folder
    wexd_sim::SimState state;
    std::vector<wexd_sim::ServedQueue> served;
    volatile sig_atomic_t stop = 0;
    std::atomic<int> serving{0};
    std::mutex lock; // over messages: the log appends, the test takes
    std::string messages;
};

namespace
{

void keep_lines(void *context, const std::string &lines)
{
    auto *daemon = static_cast<wex_testing_daemon *>(context);
    const std::lock_guard guard(daemon->lock);
    daemon->messages += lines;
}

bool load_roles(const char *roles, wexd_sim::SimState &state)
{
    std::string error;
    if (!wexd_sim::load_roles(roles, state, error)) {
        std::fprintf(stderr, "wex_testing: roles: %s\n", error.c_str());
        return false;
    }
    return true;
}

bool open_queues(wex_testing_daemon &daemon)
{
    const std::optional<uint32_t> failed = wexd_sim::open_served_queues(daemon.state, daemon.served);
    if (failed)
        std::fprintf(stderr, "wex_testing: cannot open queue %u: %s\n", *failed, std::strerror(errno));
    return !failed;
}

void serve(wex_testing_daemon &daemon)
{
    for (wexd_sim::ServedQueue &queue : daemon.served) {
        ++daemon.serving;
        std::thread([&daemon, &queue] {
            const auto routes = wexd_sim::routes_of(queue.number);
            ipcq_serve(queue.q, routes.data(), routes.size(), wexd_sim::on_unknown, &queue, &daemon.stop);
            --daemon.serving;
        }).detach();
    }
}

// Stops what runs and releases what was taken, whatever got started.
void tear_down(wex_testing_daemon *daemon)
{
    daemon->stop = 1;
    while (daemon->serving > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    for (const wexd_sim::ServedQueue &queue : daemon->served)
        ipcq_close(queue.q);
    wexd_sim::set_log_sink(nullptr, nullptr);
    std::error_code ignored;
    std::filesystem::remove_all(daemon->dir, ignored);
    delete daemon;
}

} // namespace

WEX_TESTING_API wex_testing_daemon *wex_testing_start(const char *roles, const char *par_dir)
{
    auto *daemon = new (std::nothrow) wex_testing_daemon;
    if (!daemon)
        return nullptr;
    try {
        std::string pattern = (std::filesystem::temp_directory_path() / "wex-testing-XXXXXX").string();
        if (!mkdtemp(pattern.data())) {
            std::fprintf(stderr, "wex_testing: no runtime folder: %s\n", std::strerror(errno));
            delete daemon;
            return nullptr;
        }
        daemon->dir = pattern;
        setenv("IPCQ_RUNTIME_DIR", daemon->dir.c_str(), 1);
        if (par_dir) {
            daemon->state.par_dir = par_dir;
            wexd_dynamic_parfile_init(par_dir);
        }
        wexd_sim::set_log_sink(keep_lines, daemon);
        if ((roles && !load_roles(roles, daemon->state)) || !open_queues(*daemon)) {
            tear_down(daemon);
            return nullptr;
        }
        serve(*daemon);
        return daemon;
    } catch (const std::exception &) {
        tear_down(daemon);
        return nullptr;
    }
}

WEX_TESTING_API char *wex_testing_messages(wex_testing_daemon *daemon)
{
    if (!daemon)
        return nullptr;
    wexd_sim::flush_log();
    std::string taken;
    {
        const std::lock_guard guard(daemon->lock);
        taken.swap(daemon->messages);
    }
    char *text = static_cast<char *>(std::malloc(taken.size() + 1));
    if (text)
        std::memcpy(text, taken.c_str(), taken.size() + 1);
    return text;
}

WEX_TESTING_API int wex_testing_wait_for(wex_testing_daemon *daemon, const char *text, unsigned milliseconds)
{
    if (!daemon || !text)
        return 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        wexd_sim::flush_log();
        {
            const std::lock_guard guard(daemon->lock);
            if (daemon->messages.find(text) != std::string::npos)
                return 1;
        }
        if (std::chrono::steady_clock::now() >= end)
            return 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

WEX_TESTING_API void wex_testing_stop(wex_testing_daemon *daemon)
{
    if (daemon)
        tear_down(daemon);
}
