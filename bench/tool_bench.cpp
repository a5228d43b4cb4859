// wexctl as a whole process, next to its floors in the same run:
//   - diff of a 1,000,000-line configuration pair, against the same
//     comparison in process (wex_diff) and against cat of both files;
//   - par check of a 20,000-node image (20 MB), against cat of the image,
//     with its peak resident memory against the image's size.
#include <wex/output.h>
#include <wex/parse_tree.h>

#include "config_generator.h"
#include "image_builder.h"
#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace
{

constexpr long kDiffLines = 1000000;
constexpr uint32_t kImageNodes = 20000;

struct Files {
    std::string dir, old_cfg, new_cfg, image;
    wex_bench::ConfigPair pair;
};

Files *g_files = nullptr;
// par check's peak memory, from one run started before this process grew:
// a program's peak counts the memory of the process that started it.
long g_check_peak_kib = 0;

void write_file(const std::string &path, const void *bytes, std::size_t size)
{
    std::ofstream(path, std::ios::binary).write(static_cast<const char *>(bytes), static_cast<long>(size));
}

// An eight-way tree of 20,000 nodes in network order, as a feature ships it.
void write_image(const std::string &path)
{
    wex_test::Tree tree = wex_test::make_eight_way(kImageNodes);
    hton_array_tree(tree.bytes(), 0, 0);
    write_file(path, tree.bytes(), kImageNodes * sizeof(parse_tree_node));
}

// Runs the program with standard output to /dev/null; its exit status, and
// its peak resident memory in KiB.
int run(std::vector<std::string> words, long &peak_kib)
{
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        return -1;
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    peak_kib = usage.ru_maxrss;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void run_each_time(benchmark::State &state, const std::vector<std::string> &words, int expected_status)
{
    long peak_kib = 0;
    for (auto _ : state) {
        if (run(words, peak_kib) != expected_status)
            state.SkipWithError("the program did not end as expected");
    }
}

void BM_WexctlDiff(benchmark::State &state)
{
    run_each_time(state, {WEXCTL_PATH, "diff", g_files->old_cfg, g_files->new_cfg}, 1);
}
// This machine's other work moves single runs of a fifth of a second by tens
// of percent, so both sides of the diff row are medians of repeated runs.
constexpr int kDiffRepetitions = 9;
BENCHMARK(BM_WexctlDiff)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(kDiffRepetitions)
    ->ReportAggregatesOnly(true);

void BM_DiffInProcess(benchmark::State &state)
{
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO), null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    for (auto _ : state)
        wex_diff(g_files->pair.first.c_str(), g_files->pair.second.c_str());
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    close(null);
}
BENCHMARK(BM_DiffInProcess)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(kDiffRepetitions)
    ->ReportAggregatesOnly(true);

void BM_CatDiffPair(benchmark::State &state)
{
    run_each_time(state, {"/bin/cat", g_files->old_cfg, g_files->new_cfg}, 0);
}
BENCHMARK(BM_CatDiffPair)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WexctlParCheck(benchmark::State &state)
{
    run_each_time(state, {WEXCTL_PATH, "par", "check", g_files->image}, 0);
}
BENCHMARK(BM_WexctlParCheck)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CatImage(benchmark::State &state)
{
    run_each_time(state, {"/bin/cat", g_files->image}, 0);
}
BENCHMARK(BM_CatImage)->Unit(benchmark::kMillisecond)->UseRealTime();

void summarize(wex_bench::RealTimes &figures)
{
    const double diff = figures["BM_WexctlDiff/repeats:9/real_time_median"];
    const double in_process = figures["BM_DiffInProcess/repeats:9/real_time_median"];
    const double check = figures["BM_WexctlParCheck/real_time"];
    const double cat = figures["BM_CatImage/real_time"];
    const double peak_mib = static_cast<double>(g_check_peak_kib) / 1024;
    const double image_mib = kImageNodes * sizeof(parse_tree_node) / 1048576.0;
    wex_bench::summary_row("wexctl diff, 1,000,000-line pair, whole process", diff, in_process, "ms",
                           "at most 1.3x the diff in process", diff <= 1.3 * in_process);
    std::printf("(cat of both files: %.1f ms)\n", figures["BM_CatDiffPair/real_time"]);
    wex_bench::summary_row("wexctl par check, 20,000 nodes, whole process", check, cat, "ms",
                           "at most 3x cat", check <= 3 * cat);
    wex_bench::summary_row("wexctl par check, peak memory against the image", peak_mib, image_mib, "MiB",
                           "at most 1.3x", peak_mib <= 1.3 * image_mib);
}

} // namespace

int main(int argc, char **argv)
{
    char pattern[] = "/tmp/wex-bench-tool-XXXXXX";
    Files files;
    files.dir = mkdtemp(pattern);
    files.old_cfg = files.dir + "/old.cfg";
    files.new_cfg = files.dir + "/new.cfg";
    files.image = files.dir + "/tree.par";
    // The image is built in a child, so that this process stays small for
    // the run that measures par check's peak memory.
    if (const pid_t builder = fork(); builder == 0) {
        write_image(files.image);
        _exit(0);
    } else {
        waitpid(builder, nullptr, 0);
    }
    if (run({WEXCTL_PATH, "par", "check", files.image}, g_check_peak_kib) != 0)
        std::fprintf(stderr, "par check of the benchmark image failed\n");
    files.pair = wex_bench::make_config_pair(kDiffLines);
    write_file(files.old_cfg, files.pair.first.data(), files.pair.first.size());
    write_file(files.new_cfg, files.pair.second.data(), files.pair.second.size());
    g_files = &files;
    const int status = wex_bench::run_with_summary(argc, argv, summarize);
    for (const std::string &path : {files.old_cfg, files.new_cfg, files.image})
        unlink(path.c_str());
    rmdir(files.dir.c_str());
    return status;
}
