// The remediation engine and checkpoint restore. Measured: the commands
// from one configuration to another for pairs shaped like a switch's
// (interface blocks of four settings in shuffled order, 1% of the blocks
// with one setting changed) of 100,000 and 1,000,000 lines (targets: under
// 1 s for the larger, and ten times the lines within twelve times the
// time), and a 10,000-line pair of the same shape for the side-by-side
// figures (scripts/bench-peers); "checkpoint restore" of 10,000 changed
// lines through the shell, the simulator and both features (target:
// under 1 s).
#include "road_fixture.h"
#include "summary_reporter.h"

#include "command_grammar.h"
#include "compiler.h"
#include "main_tree.h"
#include "remediation.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>

namespace
{

// Blocks of five lines: 20,000 make 100,000 lines.
constexpr int kLinesPerBlock = 5;

std::string read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// A port configuration: each block's settings shuffled, a share of the
// blocks with "shutdown" in place of "no shutdown".
std::string port_configuration(int blocks, double changed, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> share(0, 1);
    std::string text;
    text.reserve(static_cast<std::size_t>(blocks) * 120);
    for (int i = 0; i < blocks; ++i) {
        text += "interface fc" + std::to_string(1 + i / 48) + "/" + std::to_string(1 + i % 48) + "\n";
        std::string settings[] = {"  switchport mode E", "  switchport speed 8000", "  no shutdown",
                                  "  switchport description port" + std::to_string(i)};
        if (share(random) < changed)
            settings[2] = "  shutdown";
        std::shuffle(std::begin(settings), std::end(settings), random);
        for (const std::string &line : settings)
            text += line + "\n";
    }
    return text;
}

const wex_remediation::CommandGrammar &port_grammar()
{
    static const std::optional<wex_shell::MainTree> tree = [] {
        wex_grammar::Diagnostics diagnostics;
        const auto image =
            wex_grammar::compile({{"exec.tree", read_file(WEX_TREES_DIR "/exec.tree")},
                                  {"ports.tree", read_file(WEX_BENCH_TREES_DIR "/ports.tree")}},
                                 diagnostics);
        std::string why;
        std::optional<wex_shell::MainTree> loaded;
        if (image)
            loaded = wex_shell::MainTree::from_image(image->bytes, why);
        if (!loaded) {
            std::fprintf(stderr, "remediation bench: the port grammar did not compile\n");
            std::exit(1);
        }
        return loaded;
    }();
    static const wex_remediation::CommandGrammar grammar(*tree);
    return grammar;
}

void BM_Remediate(benchmark::State &state)
{
    const int blocks = static_cast<int>(state.range(0)) / kLinesPerBlock;
    const std::string running = port_configuration(blocks, 0.01, 1),
                      wanted = port_configuration(blocks, 0.01, 2);
    std::size_t commands = 0;
    for (auto _ : state) {
        const wex_remediation::Remediation result =
            wex_remediation::remediate(port_grammar(), running, wanted, wex_remediation::OnProblem::refuse);
        if (result.refused)
            return state.SkipWithError("a line was refused");
        commands = result.commands.size();
    }
    state.counters["commands"] = static_cast<double>(commands);
}
BENCHMARK(BM_Remediate)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

wex_bench::Road g_road;

// Two checkpoints of a thousand zones of ten members, five members of each
// zone different: restoring one over the other changes 10,000 lines.
std::string zone_checkpoint(int offset)
{
    std::string text;
    for (int zone = 0; zone < 1000; ++zone) {
        text += "zone name z" + std::to_string(zone) + " vsan 1\n";
        for (int member = 0; member < 10; ++member) {
            char line[64];
            std::snprintf(line, sizeof line, "  member fcid 0x%06x\n",
                          0x10000 + zone * 32 + member + (member >= 5 ? offset : 0));
            text += line;
        }
    }
    return text;
}

// The road starts with the first restore, so that the remediation figures
// come from a quiet machine.
bool g_road_started = false;

void BM_CheckpointRestore(benchmark::State &state)
{
    if (!g_road_started && !(g_road_started = g_road.start()))
        return state.SkipWithError(
            ("the simulator or a feature did not start (see " + g_road.dir() + ")").c_str());
    const std::string folder = g_road.dir() + "/par/checkpoints";
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/first") << zone_checkpoint(0);
    std::ofstream(folder + "/second") << zone_checkpoint(16);
    if (wex_bench::run_shell({"-nRc", "checkpoint restore first"}) != 0)
        return state.SkipWithError("the first checkpoint was not restored");
    bool second = true;
    for (auto _ : state) {
        if (wex_bench::run_shell(
                {"-nRc", second ? "checkpoint restore second" : "checkpoint restore first"}) != 0)
            return state.SkipWithError("a restore failed");
        second = !second;
    }
}
BENCHMARK(BM_CheckpointRestore)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(6);

void summarize(wex_bench::RealTimes &figures)
{
    const double ten_thousand = figures["BM_Remediate/10000/repeats:5/real_time_median"];
    const double hundred_thousand = figures["BM_Remediate/100000/repeats:5/real_time_median"];
    const double million = figures["BM_Remediate/1000000/repeats:5/real_time_median"];
    wex_bench::summary_row("remediate a 10,000-line pair, 1% changed, median", ten_thousand, 55000, "ms",
                           "peer library: about 55 s", ten_thousand < 55000);
    wex_bench::summary_row("remediate a 1,000,000-line pair, 1% changed, median", million, 1000, "ms",
                           "under 1 s", million < 1000);
    const double growth = hundred_thousand > 0 ? million / hundred_thousand : 0;
    wex_bench::summary_row("time for 10x the lines (1,000,000 against 100,000)", growth, 12, "x",
                           "at most 12x", growth > 0 && growth <= 12);
    const double restore = figures["BM_CheckpointRestore/iterations:6/real_time"];
    wex_bench::summary_row("checkpoint restore of 10,000 changed lines, through the shell", restore, 1000,
                           "ms", "under 1 s", restore < 1000);
}

} // namespace

int main(int argc, char **argv)
{
    const int status = wex_bench::run_with_summary(argc, argv, summarize);
    g_road.stop();
    return status;
}
