// wex_buf_printf while capturing: N calls of 40 characters each, with a
// small allocation of the caller's between calls, for N = 10,000, 100,000
// and 1,000,000. The capture block is grown to exactly length + 1 bytes on
// every call; the time per call should stay flat as N grows.
#include <wex/output.h>

#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string>
#include <vector>

namespace
{

constexpr char kLine[] = "interface fc%d/%-3d switchport mode trunk\n"; // 40 characters with the numbers

void BM_CapturedPrintf(benchmark::State &state)
{
    const long calls = state.range(0);
    std::vector<void *> caller_blocks(static_cast<std::size_t>(calls));
    std::size_t slack = 0;
    bool wrong_length = false;
    for (auto _ : state) {
        wex_set_redir2buf();
        for (long i = 0; i < calls; ++i) {
            wex_buf_printf(kLine, static_cast<int>(i % 9) + 1, static_cast<int>(i % 48) + 1);
            caller_blocks[static_cast<std::size_t>(i)] = std::malloc(24);
        }
        state.PauseTiming();
        char *text = wex_get_buf();
        wrong_length = wrong_length || wex_get_buf_len() != 40u * static_cast<uint32_t>(calls) ||
                       std::strlen(text) != wex_get_buf_len();
        slack = malloc_usable_size(text) - (wex_get_buf_len() + 1);
        wex_reset_redir2buf();
        std::free(text);
        for (void *block : caller_blocks)
            std::free(block);
        state.ResumeTiming();
    }
    if (wrong_length)
        state.SkipWithError("captured text has the wrong length");
    state.counters["calls"] = static_cast<double>(calls);
    state.counters["ns_per_call"] =
        benchmark::Counter(static_cast<double>(calls) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    // What the allocator rounds the exact request up to; no spare capacity of ours.
    state.counters["allocator_slack_bytes"] = static_cast<double>(slack);
}

// The baseline: the same exact growth by 40 bytes and the caller's
// allocations, with the text copied in place of formatted. What this costs
// per call is the allocator's share of the capture.
void BM_ExactReallocBaseline(benchmark::State &state)
{
    const long calls = state.range(0);
    std::vector<void *> caller_blocks(static_cast<std::size_t>(calls));
    static const char forty[] = "interface fc1/1   switchport mode trunk\n";
    for (auto _ : state) {
        char *text = nullptr;
        std::size_t length = 0;
        for (long i = 0; i < calls; ++i) {
            text = static_cast<char *>(std::realloc(text, length + 41));
            std::memcpy(text + length, forty, 41);
            length += 40;
            caller_blocks[static_cast<std::size_t>(i)] = std::malloc(24);
        }
        benchmark::DoNotOptimize(text);
        state.PauseTiming();
        std::free(text);
        for (void *block : caller_blocks)
            std::free(block);
        state.ResumeTiming();
    }
    state.counters["ns_per_call"] =
        benchmark::Counter(static_cast<double>(calls) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(BM_CapturedPrintf)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExactReallocBaseline)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

double per_call_ns(wex_bench::RealTimes &ms, const std::string &name, long calls)
{
    return ms[name + "/" + std::to_string(calls)] * 1e6 / static_cast<double>(calls);
}

void summarize(wex_bench::RealTimes &ms)
{
    std::printf("\nns per call        10,000   100,000  1,000,000  ratio 1M/10k\n");
    for (const char *name : {"BM_CapturedPrintf", "BM_ExactReallocBaseline"}) {
        const double small = per_call_ns(ms, name, 10000), large = per_call_ns(ms, name, 1000000);
        std::printf("%-18s %8.1f %9.1f %10.1f %13.2f\n", name + 3, small, per_call_ns(ms, name, 100000),
                    large, large / small);
    }
    std::printf("target: wex_buf_printf's ratio at most 2\n");
}

} // namespace

int main(int argc, char **argv)
{
    return wex_bench::run_with_summary(argc, argv, summarize);
}
