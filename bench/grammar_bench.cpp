// The grammar compiler on generated grammars of about 6,000 and 60,000
// nodes (an image holds at most 65,536: child indexes are 16 bits): command
// declarations compiled to an image, and the image written back as
// declarations (which includes compiling them again to prove them).
// Linear means ten times the nodes within twelve times the time.
#include "command_writer.h"
#include "compiler.h"
#include "node_layer.h"
#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <string>

namespace
{

constexpr int kSubgroups = 100, kLeaves = 9;

// groups x 100 x 9 commands of three words under the exec root, each word
// with its help: groups * 1,001 + 1 nodes.
std::string generated_grammar(int groups)
{
    std::string text = "module bench\n";
    for (int g = 0; g < groups; ++g)
        text += "help g" + std::to_string(g) + " \"Group " + std::to_string(g) + "\"\n";
    for (int s = 0; s < kSubgroups; ++s)
        text += "help s" + std::to_string(s) + " \"Subgroup " + std::to_string(s) + "\"\n";
    for (int g = 0; g < groups; ++g) {
        for (int s = 0; s < kSubgroups; ++s) {
            for (int l = 0; l < kLeaves; ++l) {
                text += "command exec: g" + std::to_string(g) + " s" + std::to_string(s) + " <V" +
                        std::to_string(l) + ":int 1.." + std::to_string(l + 1) +
                        " \"Value\">\n"
                        "    function f" +
                        std::to_string(l) + "\n";
            }
        }
    }
    return text;
}

int groups_for(int64_t nodes)
{
    return static_cast<int>(nodes / 1000);
}

void BM_Compile(benchmark::State &state)
{
    const std::vector<wex_grammar::Source> sources{
        {"bench.tree", generated_grammar(groups_for(state.range(0)))}};
    for (auto _ : state) {
        wex_grammar::Diagnostics diagnostics;
        const auto image = wex_grammar::compile(sources, diagnostics);
        if (!image)
            state.SkipWithError(diagnostics.report().c_str());
        benchmark::DoNotOptimize(image);
    }
}
// Medians of repeated runs: the small grammar's tens of milliseconds move
// with the machine's other work.
constexpr int kRepetitions = 5;
BENCHMARK(BM_Compile)
    ->Arg(6000)
    ->Arg(60000)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(kRepetitions)
    ->ReportAggregatesOnly(true);

void BM_Decompile(benchmark::State &state)
{
    wex_grammar::Diagnostics diagnostics;
    const auto image =
        wex_grammar::compile({{"bench.tree", generated_grammar(groups_for(state.range(0)))}}, diagnostics);
    // As tree decompile does it: the declarations, proven by compiling them.
    for (auto _ : state) {
        const std::optional<std::string> text = wex_grammar::write_command_layer(image->bytes);
        if (!text)
            state.SkipWithError("the image did not decompile to declarations");
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_Decompile)
    ->Arg(6000)
    ->Arg(60000)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(kRepetitions)
    ->ReportAggregatesOnly(true);

void summarize(wex_bench::RealTimes &figures)
{
    for (const char *name : {"BM_Compile", "BM_Decompile"}) {
        const std::string median = "/repeats:" + std::to_string(kRepetitions) + "_median";
        const double small = figures[std::string(name) + "/6000" + median];
        const double large = figures[std::string(name) + "/60000" + median];
        const std::string work =
            std::string(name == std::string("BM_Compile") ? "tree compile" : "tree decompile") +
            ", 60,000 nodes against 6,000";
        wex_bench::summary_row(work.c_str(), large, small, "ms", "under 1 s, within 12x for 10x the nodes",
                               large < 1000 && large <= 12 * small);
    }
}

} // namespace

int main(int argc, char **argv)
{
    return wex_bench::run_with_summary(argc, argv, summarize);
}
