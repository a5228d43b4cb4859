// Round trip of a large parse-tree image through network order and back,
// next to memcpy of the same bytes, in one run.
#include <wex/parse_tree.h>

#include "image_builder.h"
#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <vector>

namespace
{

constexpr uint32_t kNodes = 100000;
constexpr uint32_t kAddressable = 0x10000; // children are 16-bit indices
constexpr int kSpineDepth = 30;            // levels below a root: 31 in all

// A forest: nodes above the 16-bit range are roots (children can only name
// nodes below it); each eighth root grows a spine of up to 30 levels with a
// leaf and a link at each level, the body nodes are used up in that order,
// and the body nodes left over are roots of their own.
struct Forest {
    wex_test::Tree image{kNodes};
    std::vector<uint32_t> roots;
    uint32_t next_body = 0;

    Forest()
    {
        for (uint32_t i = 0; i < kNodes; ++i)
            fill(image[i], i);
        for (uint32_t root = kAddressable; root < kNodes; ++root) {
            roots.push_back(root);
            if (root % 8 == 0)
                grow_spine(root);
        }
        for (; next_body < kAddressable; ++next_body)
            roots.push_back(next_body);
    }

    static void fill(parse_tree_node &n, uint32_t i)
    {
        std::snprintf(n.NodeName, sizeof n.NodeName, "node%u", i);
        n.action = i;
        n.token_id = i * 3;
        n.command_id = i * 5;
        n.optional = 1;
        n.internal_func_id = static_cast<uint16_t>(i);
        n.interface_mask = 0x0000000600000002ull;
        n.param_count = 2;
        for (auto &p : n.params) {
            p.type = TYPE_INT;
            p.mask = 0x40;
            p.min = 1;
            p.max = 4094;
        }
    }

    void grow_spine(uint32_t root)
    {
        uint32_t at = root;
        for (int level = 0; level < kSpineDepth && next_body + 2 <= kAddressable; ++level) {
            const uint32_t leaf = next_body++;
            const uint32_t spine = next_body++;
            image.add_child(at, static_cast<uint16_t>(leaf));
            image.add_child(at, static_cast<uint16_t>((spine * 7) % kAddressable), true);
            image.add_child(at, static_cast<uint16_t>(spine));
            at = spine;
        }
    }
};

Forest &forest()
{
    static Forest f;
    return f;
}

void BM_HtonNtohRoundTrip(benchmark::State &state)
{
    Forest &f = forest();
    uint8_t *image = f.image.bytes();
    for (auto _ : state) {
        for (uint32_t root : f.roots)
            hton_array_tree(image, root, 0);
        for (uint32_t root : f.roots)
            ntoh_array_tree(image, root, 0);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kNodes);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kNodes * WEX_NODE_SIZE);
}
BENCHMARK(BM_HtonNtohRoundTrip)->Unit(benchmark::kMillisecond);

void BM_MemcpyImage(benchmark::State &state)
{
    Forest &f = forest();
    std::vector<uint8_t> copy(kNodes * WEX_NODE_SIZE);
    for (auto _ : state) {
        std::memcpy(copy.data(), f.image.bytes(), copy.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kNodes);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kNodes * WEX_NODE_SIZE);
}
BENCHMARK(BM_MemcpyImage)->Unit(benchmark::kMillisecond);

// Nodes per second and the ratio of the round trip to memcpy; both run in
// milliseconds.
void summarize(wex_bench::RealTimes &real_ms)
{
    const double trip = real_ms["BM_HtonNtohRoundTrip"];
    const double copy = real_ms["BM_MemcpyImage"];
    if (trip > 0 && copy > 0) {
        std::printf("image: %u nodes, %u bytes\n", kNodes, kNodes * WEX_NODE_SIZE);
        std::printf("round trip: %.0f nodes/s\n", kNodes / (trip / 1e3));
        std::printf("round trip / memcpy = %.3f\n", trip / copy);
    }
}

} // namespace

int main(int argc, char **argv)
{
    forest();
    return wex_bench::run_with_summary(argc, argv, summarize);
}
