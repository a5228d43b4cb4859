// The command-list filter on a 1,000-line script against lists of 1,000 and
// 10,000 lines. Every script line is new, so each one is compared with the
// whole list and then appended: the cost of a first run. The list is
// rewritten before each run, outside the timing.
#include <wex/exec.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace
{

constexpr int kScriptLines = 1000;
const std::string kScript = WEX_BENCH_SANDBOX "/bootflash/bench_script";
const std::string kList = WEX_BENCH_SANDBOX "/volatile/wex_cmdlist_1";

void write_lines(const std::string &path, const char *prefix, long count)
{
    std::ofstream file(path, std::ios::trunc);
    for (long i = 0; i < count; ++i)
        file << prefix << " interface fc1/" << i % 48 + 1 << " vsan " << i << " switchport mode auto\n";
}

void BM_CmdlistFilter(benchmark::State &state)
{
    unsetenv("WARDEN_KEL_ID");
    write_lines(kScript, "script", kScriptLines);
    wex_system_params_t params = {};
    params.q_val = 2;
    std::snprintf(params.file_name, sizeof params.file_name, "%s", kScript.c_str());
    for (auto _ : state) {
        state.PauseTiming();
        write_lines(kList, "recorded", state.range(0));
        state.ResumeTiming();
        if (wex_execute_script_file2(&params) != 0)
            state.SkipWithError("the filtered script did not run");
    }
    state.counters["us_per_script_line"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kScriptLines,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_CmdlistFilter)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MinTime(2.0);

} // namespace

BENCHMARK_MAIN();
