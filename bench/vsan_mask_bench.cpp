// wex_print_vsan_mask while capturing, for a mask with every id permitted
// (one run), every second id (2,048 runs, about 10 KB of text) and a random
// half of the ids.
#include <wex/output.h>
#include <wex/param.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

namespace
{

vsan_mask make_mask(int kind)
{
    vsan_mask mask{};
    mask.len = WEX_VSAN_MASK_BYTES;
    std::mt19937 random(4095);
    for (int i = 0; i < WEX_VSAN_MASK_BYTES; ++i)
        mask.bits[i] = kind == 0 ? 0xFF : kind == 1 ? 0xAA : static_cast<uint8_t>(random());
    return mask;
}

void BM_PrintVsanMask(benchmark::State &state, int kind)
{
    const vsan_mask mask = make_mask(kind);
    std::size_t length = 0;
    for (auto _ : state) {
        wex_set_redir2buf();
        wex_print_vsan_mask(&mask);
        char *text = wex_get_buf();
        length = wex_get_buf_len();
        wex_reset_redir2buf();
        std::free(text);
    }
    state.counters["text_bytes"] = static_cast<double>(length);
    state.counters["calls_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK_CAPTURE(BM_PrintVsanMask, all_set, 0);
BENCHMARK_CAPTURE(BM_PrintVsanMask, alternating, 1);
BENCHMARK_CAPTURE(BM_PrintVsanMask, random, 2);

} // namespace

BENCHMARK_MAIN();
