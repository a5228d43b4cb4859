// The comparison of two configuration texts done the straightforward way:
// one heap block per line, and for each line a scan of its siblings in the
// other text for the first unmatched one with equal text. The benchmarks'
// baseline.
#ifndef WEX_BENCH_SCAN_DIFF_H
#define WEX_BENCH_SCAN_DIFF_H

namespace wex_bench
{

// 1 when the texts hold the same lines, 0 otherwise.
int scan_is_diff_same(const char *first, const char *second);

} // namespace wex_bench

#endif
