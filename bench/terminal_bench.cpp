// Keys typed into a session at a terminal, timed from the key's write on a
// pseudo-terminal to the last of the text it brings: "?" and TAB where 192
// words may come next and deep in a tree of some 22,000 nodes (target:
// 1 ms), and "show running-config | count" of a 100,000-line configuration
// from Enter to the next prompt (target: 300 ms).
#include "road_fixture.h"
#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using Clock = std::chrono::steady_clock;

wex_bench::Road g_road;

// A session of wex on a pseudo-terminal.
class Session
{
  public:
    Session()
    {
        winsize size{50, 200, 0, 0};
        pid_ = forkpty(&master_, nullptr, nullptr, &size);
        if (pid_ == 0) {
            execl(wex_bench::shell_path(), "wex", static_cast<char *>(nullptr));
            _exit(127);
        }
        ready_ = pid_ > 0 && read_until({"switch# "});
    }
    ~Session()
    {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
        }
        if (master_ >= 0)
            close(master_);
    }
    bool ready() const { return ready_; }

    void type(const std::string &keys) const { (void)!write(master_, keys.data(), keys.size()); }

    // Reads until each text has come, in order; false after five seconds.
    bool read_until(std::initializer_list<std::string_view> texts)
    {
        const auto deadline = Clock::now() + std::chrono::seconds(5);
        std::size_t from = 0;
        for (const std::string_view text : texts) {
            std::size_t at;
            while ((at = seen_.find(text, from)) == std::string::npos) {
                const auto left =
                    std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
                pollfd ready{master_, POLLIN, 0};
                char chunk[65536];
                if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0)
                    return false;
                const ssize_t got = read(master_, chunk, sizeof chunk);
                if (got <= 0)
                    return false;
                seen_.append(chunk, static_cast<std::size_t>(got));
            }
            from = at + text.size();
        }
        seen_.erase(0, from);
        return true;
    }

  private:
    int master_ = -1;
    pid_t pid_ = -1;
    bool ready_ = false;
    std::string seen_;
};

// Types line untimed, then times key until the texts it brings have come;
// Ctrl-C clears the line for the next round.
void time_key(benchmark::State &state, const std::string &line, const std::string &key,
              std::initializer_list<std::string_view> brought)
{
    Session session;
    if (!session.ready())
        return state.SkipWithError("the shell did not start");
    for (auto _ : state) {
        session.type(line);
        if (!session.read_until({line.substr(line.size() - 4)}))
            return state.SkipWithError("the line was not echoed");
        const auto begin = Clock::now();
        session.type(key);
        if (!session.read_until(brought))
            return state.SkipWithError("the key did not bring its text");
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
        session.type("\x03");
        session.read_until({"switch# "});
    }
}

void BM_HelpAmong192(benchmark::State &state)
{
    const std::string line = wex_bench::wide_prefix() + " ";
    time_key(state, line, "?", {"k9x99 ", "\n", line.substr(line.size() - 8)});
}

void BM_TabAmong192(benchmark::State &state)
{
    const std::string line = wex_bench::wide_prefix() + " k9x19";
    time_key(state, line, "\t", {"k9x191\r\n", "k9x19"});
}

void BM_HelpDeepInTree(benchmark::State &state)
{
    time_key(state, "show bench a70 ", "?", {"b99 ", "\n", "a70 "});
}

void BM_TabDeepInTree(benchmark::State &state)
{
    time_key(state, "show bench a70 b7", "\t", {"b79\r\n", "a70 b7"});
}

void BM_CountOf100000Lines(benchmark::State &state)
{
    Session session;
    if (!session.ready())
        return state.SkipWithError("the shell did not start");
    for (auto _ : state) {
        const auto begin = Clock::now();
        session.type("show running-config | count\r");
        if (!session.read_until({"\r\n100000\r\n", "switch# "}))
            return state.SkipWithError("the count did not come");
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
    }
}

template <typename Bench> void register_timed(const char *name, Bench bench, int repetitions)
{
    benchmark::RegisterBenchmark(name, bench)
        ->Unit(benchmark::kMicrosecond)
        ->UseManualTime()
        ->Repetitions(repetitions)
        ->ReportAggregatesOnly();
}

void summarize(wex_bench::RealTimes &figures)
{
    const struct {
        const char *name;
        const char *work;
    } keys[] = {{"BM_HelpAmong192", "? where 192 words may come next (median)"},
                {"BM_TabAmong192", "TAB among 192 words (median)"},
                {"BM_HelpDeepInTree", "? deep in the 22,000-node tree (median)"},
                {"BM_TabDeepInTree", "TAB deep in the 22,000-node tree (median)"}};
    for (const auto &key : keys) {
        const double figure = figures[std::string(key.name) + "/repeats:5/manual_time_median"];
        wex_bench::summary_row(key.work, figure, 1000, "us", "at most 1 ms", figure <= 1000);
    }
    const double count = figures["BM_CountOf100000Lines/repeats:5/manual_time_median"] / 1000;
    wex_bench::summary_row("show running-config \\| count of 100,000 lines, Enter to prompt (median)", count,
                           300, "ms", "at most 300 ms", count <= 300);
}

} // namespace

int main(int argc, char **argv)
{
    if (!g_road.start()) {
        std::fprintf(stderr, "terminal bench: the simulator or a feature did not start (see %s)\n",
                     g_road.dir().c_str());
        g_road.stop();
        return 1;
    }
    setenv("HOME", g_road.dir().c_str(), 1); // the sessions' history stays in the run's directory
    setenv("TERM", "xterm", 1);
    if (wex_bench::run_shell({"-nRr", g_road.write_configuration()}) != 0) {
        std::fprintf(stderr, "terminal bench: the configuration did not apply\n");
        g_road.stop();
        return 1;
    }
    register_timed("BM_HelpAmong192", BM_HelpAmong192, 5);
    register_timed("BM_TabAmong192", BM_TabAmong192, 5);
    register_timed("BM_HelpDeepInTree", BM_HelpDeepInTree, 5);
    register_timed("BM_TabDeepInTree", BM_TabDeepInTree, 5);
    register_timed("BM_CountOf100000Lines", BM_CountOf100000Lines, 5);
    const int status = wex_bench::run_with_summary(argc, argv, summarize);
    g_road.stop();
    return status;
}
