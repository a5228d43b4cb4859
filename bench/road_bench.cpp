// The shell end to end, as its users run it: wexd-sim, the zone and
// interface features and a main tree of some 22,000 nodes (the base
// commands padded with generated ones). Measured: one "wex -nRc" of "show
// running-config", process start included (target: 15 ms median); a
// 100,000-line configuration applied with "wex -nRr", every line
// acknowledged by its feature (target: 50,000 lines a second); and that
// configuration shown (target: 250 ms).
#include "road_fixture.h"
#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace
{

wex_bench::Road g_road;
std::string g_config;
double g_applied_seconds = 0;

// The configuration as it stands: empty before the large one is applied.
void BM_ShowRunning(benchmark::State &state, const char * /*stage*/)
{
    for (auto _ : state) {
        if (wex_bench::run_shell({"-nRc", "show running-config"}) != 0)
            return state.SkipWithError("the shell failed");
    }
}
BENCHMARK_CAPTURE(BM_ShowRunning, small, "")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

// Once: the configuration's every line is new to its feature only the
// first time.
void BM_ApplyConfiguration(benchmark::State &state)
{
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        if (wex_bench::run_shell({"-nRr", g_config}) != 0)
            return state.SkipWithError("a line of the configuration failed");
        g_applied_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }
}
BENCHMARK(BM_ApplyConfiguration)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

BENCHMARK_CAPTURE(BM_ShowRunning, large, "")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

void summarize(wex_bench::RealTimes &figures)
{
    const std::string nodes = " (" + std::to_string(g_road.tree_nodes()) + "-node tree)";
    const double small = figures["BM_ShowRunning/small/repeats:5/real_time_median"];
    wex_bench::summary_row(("wex -nRc \"show running-config\", two features" + nodes + ", median").c_str(),
                           small, 15, "ms", "at most 15 ms", small <= 15 && g_road.tree_nodes() >= 20000);
    const double rate = g_applied_seconds > 0 ? wex_bench::kConfigLines / g_applied_seconds : 0;
    wex_bench::summary_row("wex -nRr of 100,000 lines, each acknowledged", rate / 1000, 50, "k lines/s",
                           "at least 50k lines/s", rate >= 50000);
    const double large = figures["BM_ShowRunning/large/repeats:5/real_time_median"];
    wex_bench::summary_row("show running-config of those 100,000 lines, median", large, 250, "ms",
                           "at most 250 ms", large <= 250);
}

} // namespace

int main(int argc, char **argv)
{
    if (!g_road.start()) {
        std::fprintf(stderr, "road bench: the simulator or a feature did not start (see %s)\n",
                     g_road.dir().c_str());
        g_road.stop();
        return 1;
    }
    g_config = g_road.write_configuration();
    const int status = wex_bench::run_with_summary(argc, argv, summarize);
    g_road.stop();
    return status;
}
