// Console output of a benchmark program, followed by a summary worked out
// from the runs' real times (each in its benchmark's own unit) and counters
// ("name:counter"), by name.
#ifndef WEX_BENCH_SUMMARY_REPORTER_H
#define WEX_BENCH_SUMMARY_REPORTER_H

#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace wex_bench
{

using RealTimes = std::map<std::string, double>;

class SummaryReporter : public benchmark::ConsoleReporter
{
  public:
    explicit SummaryReporter(std::function<void(RealTimes &)> summarize) : summarize_(std::move(summarize)) {}

    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &r : runs) {
            real_times_[r.benchmark_name()] = r.GetAdjustedRealTime();
            for (const auto &[name, counter] : r.counters)
                real_times_[r.benchmark_name() + ":" + name] = counter.value;
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        summarize_(real_times_);
    }

  private:
    std::function<void(RealTimes &)> summarize_;
    RealTimes real_times_;
};

// One row of the project's summary table (scripts/bench gathers the rows of
// every program): the work, its figure and its floor from the same run, and
// whether the target is met. A figure the run did not produce never meets it.
inline void summary_row(const char *work, double figure, double floor, const char *unit, const char *target,
                        bool met)
{
    met = met && figure > 0 && floor > 0;
    std::printf("| %s | %.1f %s | %.1f %s | %.2f | %s | %s |\n", work, figure, unit, floor, unit,
                floor > 0 ? figure / floor : 0.0, target, met ? "met" : "NOT MET");
}

// Runs the program's benchmarks with a summary after them.
inline int run_with_summary(int argc, char **argv, std::function<void(RealTimes &)> summarize)
{
    benchmark::Initialize(&argc, argv);
    SummaryReporter reporter(std::move(summarize));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

} // namespace wex_bench

#endif
