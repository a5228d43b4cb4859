// wex_is_diff_same and wex_diff on configuration pairs of 10,000, 100,000
// and 1,000,000 lines, next to the straightforward scan (10,000 and 100,000
// lines only, as it grows with the square of the siblings).
#include <wex/output.h>

#include "config_generator.h"
#include "scan_diff.h"
#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fcntl.h>
#include <map>
#include <string>
#include <unistd.h>

namespace
{

const wex_bench::ConfigPair &pair_of(long lines)
{
    static std::map<long, wex_bench::ConfigPair> pairs;
    auto found = pairs.find(lines);
    if (found == pairs.end())
        found = pairs.emplace(lines, wex_bench::make_config_pair(lines)).first;
    return found->second;
}

void count_lines(benchmark::State &state, const wex_bench::ConfigPair &pair)
{
    state.counters["lines"] = static_cast<double>(pair.lines);
    state.counters["lines_per_s"] =
        benchmark::Counter(static_cast<double>(pair.lines) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate);
}

void BM_IsDiffSame(benchmark::State &state)
{
    const auto &pair = pair_of(state.range(0));
    for (auto _ : state)
        if (wex_is_diff_same(pair.first.c_str(), pair.second.c_str()) != 0)
            state.SkipWithError("the texts should differ");
    count_lines(state, pair);
}

// Standard output goes to /dev/null while wex_diff prints.
void BM_Diff(benchmark::State &state)
{
    const auto &pair = pair_of(state.range(0));
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO), null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    for (auto _ : state)
        wex_diff(pair.first.c_str(), pair.second.c_str());
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    close(null);
    count_lines(state, pair);
}

void BM_ScanIsDiffSame(benchmark::State &state)
{
    const auto &pair = pair_of(state.range(0));
    for (auto _ : state)
        if (wex_bench::scan_is_diff_same(pair.first.c_str(), pair.second.c_str()) != 0)
            state.SkipWithError("the texts should differ");
    count_lines(state, pair);
}

BENCHMARK(BM_IsDiffSame)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Diff)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScanIsDiffSame)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// Lines per second, growth from one size to the next, and the speed-up over
// the scan; every time is in milliseconds.
void summarize(wex_bench::RealTimes &ms)
{
    const char *sizes[] = {"10000", "100000", "1000000"};
    for (const char *name : {"BM_IsDiffSame", "BM_Diff"}) {
        for (int i = 0; i < 3; ++i) {
            const double t = ms[std::string(name) + "/" + sizes[i]];
            if (t <= 0)
                continue;
            std::printf("%-14s %8s lines: %9.2f ms, %6.2f M lines/s", name, sizes[i], t,
                        static_cast<double>(pair_of(std::stol(sizes[i])).lines) / t / 1e3);
            const double previous = i > 0 ? ms[std::string(name) + "/" + sizes[i - 1]] : 0;
            if (previous > 0)
                std::printf(", x%.1f the time of the size below", t / previous);
            const double scan = ms[std::string("BM_ScanIsDiffSame/") + sizes[i]];
            if (scan > 0)
                std::printf(", scan %.1f ms = x%.0f", scan, scan / t);
            std::printf("\n");
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    return wex_bench::run_with_summary(argc, argv, summarize);
}
