// Requests to wexd-sim over the transport, next to their floor in the same
// run: the same byte counts ping-ponged over raw AF_UNIX connections that
// stay open, against a server process that answers on one thread.
//   - one client, a lock request (156 bytes out, 144 back);
//   - eight clients, configuration reads (144 bytes out, 272 back).
#include <wex/wexd_client.h>

#include "ipcq.h"
#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr std::size_t kLockOut = 156, kLockBack = 144, kConfigOut = 144, kConfigBack = 272;
constexpr int kClients = 8;

bool move_all(int fd, char *bytes, std::size_t size, bool sending)
{
    while (size > 0) {
        const ssize_t n = sending ? send(fd, bytes, size, MSG_NOSIGNAL) : recv(fd, bytes, size, 0);
        if (n <= 0)
            return false;
        bytes += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

// A process that answers every `in` bytes with `out` bytes on each
// connection, serving them all on one thread as wexd-sim serves a queue.
class EchoServer
{
  public:
    EchoServer(std::size_t in, std::size_t out)
    {
        static int servers = 0;
        path_ = "/tmp/wex-bench-echo-" + std::to_string(getpid()) + "-" + std::to_string(++servers);
        unlink(path_.c_str());
        const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = address_of(path_);
        bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address);
        listen(listener, 64);
        if ((pid_ = fork()) == 0)
            serve(listener, in, out);
        close(listener);
    }
    ~EchoServer()
    {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
        unlink(path_.c_str());
    }
    int connect_client() const
    {
        const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = address_of(path_);
        return connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 ? fd : -1;
    }

  private:
    static sockaddr_un address_of(const std::string &path)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
        return address;
    }
    [[noreturn]] static void serve(int listener, std::size_t in, std::size_t out)
    {
        std::vector<pollfd> fds{{listener, POLLIN, 0}};
        fds.reserve(1024);
        std::vector<char> request(in), reply(out, 'r');
        for (;;) {
            poll(fds.data(), fds.size(), -1);
            for (std::size_t i = fds.size(); i-- > 1;) {
                if (!fds[i].revents)
                    continue;
                if (!move_all(fds[i].fd, request.data(), in, false) ||
                    !move_all(fds[i].fd, reply.data(), out, true)) {
                    close(fds[i].fd);
                    fds.erase(fds.begin() + static_cast<std::ptrdiff_t>(i));
                }
            }
            if (fds[0].revents & POLLIN)
                fds.push_back({accept(listener, nullptr, nullptr), POLLIN, 0});
        }
    }

    std::string path_;
    pid_t pid_ = -1;
};

// wexd-sim for the length of the program, logging events only.
class Simulator
{
  public:
    Simulator()
    {
        char pattern[] = "/tmp/wex-bench-sim-XXXXXX";
        dir_ = mkdtemp(pattern);
        setenv("IPCQ_RUNTIME_DIR", dir_.c_str(), 1);
        if ((pid_ = fork()) == 0) {
            freopen("/dev/null", "w", stdout);
            execl(WEXD_SIM_PATH, "wexd-sim", "--log-level", "events", static_cast<char *>(nullptr));
            _exit(127);
        }
        const std::string socket = dir_ + "/fe000000.37";
        for (int i = 0; i < 500 && access(socket.c_str(), F_OK) != 0; ++i)
            usleep(10 * 1000);
    }
    ~Simulator()
    {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
        rmdir(dir_.c_str());
    }

  private:
    std::string dir_;
    pid_t pid_ = -1;
};

// Started before the benchmarks' threads, so that no process is forked
// while they run.
EchoServer *g_config_echo = nullptr;

void BM_LockRoundTrip(benchmark::State &state)
{
    const int q = ipcq_open(WEX_DEST_ADDRESS, 4200);
    for (auto _ : state) {
        if (wexd_cli_lock(q, 0x11) != 0)
            state.SkipWithError("the lock request failed");
    }
    wexd_cli_unlock(q, 0x11);
    ipcq_close(q);
}
BENCHMARK(BM_LockRoundTrip)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_RawPingPong(benchmark::State &state)
{
    const EchoServer server(kLockOut, kLockBack);
    const int fd = server.connect_client();
    std::vector<char> out(kLockOut, 'q'), back(kLockBack);
    for (auto _ : state) {
        if (!move_all(fd, out.data(), out.size(), true) || !move_all(fd, back.data(), back.size(), false))
            state.SkipWithError("the echo server failed");
    }
    close(fd);
}
BENCHMARK(BM_RawPingPong)->Unit(benchmark::kMicrosecond)->UseRealTime();

// Requests per second of all clients together.
void count_requests(benchmark::State &state)
{
    state.counters["requests"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_ConfigReads(benchmark::State &state)
{
    static std::atomic<int> failed{0};
    const int q = ipcq_open(WEX_DEST_ADDRESS, 4300 + static_cast<uint32_t>(state.thread_index()));
    for (auto _ : state) {
        wexd_wex_config *config = nullptr;
        if (wexd_wex_configuration_get(q, &config) != 0)
            ++failed;
        std::free(config);
    }
    ipcq_close(q);
    count_requests(state);
    if (state.thread_index() == 0 && failed.exchange(0) != 0)
        state.SkipWithError("configuration reads failed");
}
// Eight clients and a server on this machine's two cores move single runs by
// a third, so both sides of the row are medians of repeated runs.
constexpr int kReadRepetitions = 5;
BENCHMARK(BM_ConfigReads)
    ->Threads(kClients)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(kReadRepetitions)
    ->ReportAggregatesOnly(true);

void BM_RawConfigReads(benchmark::State &state)
{
    const int fd = g_config_echo->connect_client();
    std::vector<char> out(kConfigOut, 'q'), back(kConfigBack);
    for (auto _ : state) {
        if (!move_all(fd, out.data(), out.size(), true) || !move_all(fd, back.data(), back.size(), false))
            state.SkipWithError("the echo server failed");
    }
    close(fd);
    count_requests(state);
}
BENCHMARK(BM_RawConfigReads)
    ->Threads(kClients)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(kReadRepetitions)
    ->ReportAggregatesOnly(true);

void summarize(wex_bench::RealTimes &figures)
{
    const double round_trip = figures["BM_LockRoundTrip/real_time"];
    const double floor_trip = figures["BM_RawPingPong/real_time"];
    const std::string threads = "/repeats:" + std::to_string(kReadRepetitions) +
                                "/real_time/threads:" + std::to_string(kClients) + "_median:requests";
    const double reads = figures["BM_ConfigReads" + threads];
    const double floor_reads = figures["BM_RawConfigReads" + threads];
    wex_bench::summary_row("one request/reply with wexd-sim (lock)", round_trip, floor_trip, "us",
                           "at most 2x", round_trip <= 2 * floor_trip);
    wex_bench::summary_row("8 clients, configuration reads", reads / 1000, floor_reads / 1000, "k/s",
                           "at least 0.70", reads >= 0.7 * floor_reads);
}

} // namespace

int main(int argc, char **argv)
{
    const Simulator simulator;
    EchoServer config_echo(kConfigOut, kConfigBack);
    g_config_echo = &config_echo;
    return wex_bench::run_with_summary(argc, argv, summarize);
}
