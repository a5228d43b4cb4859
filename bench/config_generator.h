// Configuration texts in the switch's shape, in pairs that differ by a small
// share of changed, added, removed and reordered lines.
#ifndef WEX_BENCH_CONFIG_GENERATOR_H
#define WEX_BENCH_CONFIG_GENERATOR_H

#include <string>

namespace wex_bench
{

struct ConfigPair {
    std::string first, second;
    long lines = 0; // lines of the first text
};

// About `lines` lines: interface blocks, one "vsan database" and a zone set
// per VSAN with zones and their members (three levels).
ConfigPair make_config_pair(long lines, unsigned seed = 1);

} // namespace wex_bench

#endif
