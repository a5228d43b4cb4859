// The shell end to end, as its users run it: wexd-sim, the zone and
// interface features and a main tree of 20,000 nodes (the base commands
// padded with generated ones). Measured: one "wex -nRc" of "show
// running-config", process start included (target: 15 ms median); a
// 100,000-line configuration applied with "wex -nRr", every line
// acknowledged by its feature (target: 50,000 lines a second); and that
// configuration shown (target: 250 ms).
#include "compiler.h"
#include "summary_reporter.h"

#include <wex/parse_tree.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace
{

// 141 × 141 generated commands ("show bench aI bJ") put some 20,000 nodes
// beside the base grammar's.
constexpr int kPaddingWidth = 141;
constexpr int kZones = 10000, kMembersPerZone = 9;
constexpr int kConfigLines = kZones * (1 + kMembersPerZone);

struct Road {
    std::string dir;
    std::string config;
    std::vector<pid_t> processes; // the simulator last
    std::size_t tree_nodes = 0;
    double applied_seconds = 0;
};
Road g_road;

std::string read_text(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The base commands and the padding, compiled as wexd keeps them.
bool write_padded_exec_image(const std::string &path)
{
    std::string padding = "module exec\nhelp bench \"Generated commands\"\n";
    for (int i = 0; i < kPaddingWidth; ++i)
        padding += "help a" + std::to_string(i) + " \"A\"\nhelp b" + std::to_string(i) + " \"B\"\n";
    for (int i = 0; i < kPaddingWidth; ++i)
        for (int j = 0; j < kPaddingWidth; ++j)
            padding += "command exec: show bench a" + std::to_string(i) + " b" + std::to_string(j) + "\n";
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::compile(
        {{"exec.tree", read_text(WEX_TREES_DIR "/exec.tree")}, {"padding.tree", padding}}, diagnostics);
    if (!image) {
        std::fputs(diagnostics.report().c_str(), stderr);
        return false;
    }
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char *>(image->bytes.data()),
               static_cast<std::streamsize>(image->bytes.size()));
    return true;
}

// Starts a program with standard input and output from and to files
// ("" leaves them as they are); its process id, or -1.
pid_t start(const std::vector<std::string> &words, const std::string &in, const std::string &out)
{
    std::vector<char *> argv;
    for (const std::string &word : words)
        argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!in.empty())
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
    if (!out.empty())
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0644);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

int finish(pid_t pid)
{
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int run_shell(const std::vector<std::string> &args, const std::string &in = "")
{
    std::vector<std::string> words{WEX_SHELL_PATH};
    words.insert(words.end(), args.begin(), args.end());
    return finish(start(words, in, "/dev/null"));
}

// Until the file holds the text: ten seconds at most.
bool wait_for(const std::string &path, const std::string &text)
{
    for (int i = 0; i < 200; ++i) {
        if (read_text(path).find(text) != std::string::npos)
            return true;
        usleep(50 * 1000);
    }
    return false;
}

bool start_the_road()
{
    char pattern[] = "/tmp/wex-bench-road-XXXXXX"; // short: the main tree's name must fit its field
    g_road.dir = mkdtemp(pattern);
    const std::string par = g_road.dir + "/par";
    std::filesystem::create_directories(par);
    for (const char *module : {"zone", "interface"})
        std::filesystem::copy_file(std::string(WEX_PAR_DIR) + "/" + module + ".par",
                                   par + "/" + module + ".par");
    if (!write_padded_exec_image(par + "/exec.par"))
        return false;
    setenv("IPCQ_RUNTIME_DIR", g_road.dir.c_str(), 1);
    setenv("USER", "bench", 1);
    const std::string sim_log = g_road.dir + "/sim.log";
    g_road.processes.push_back(
        start({WEXD_SIM_PATH, "--par-dir", par, "--log-level", "events"}, "", sim_log));
    if (!wait_for(sim_log, "wexd-sim: serving"))
        return false;
    for (const char *program : {WEX_ZONE_PATH, WEX_INTERFACE_PATH}) {
        const std::string log =
            g_road.dir + "/" + std::filesystem::path(program).filename().string() + ".log";
        const int saved = dup(STDERR_FILENO);
        const int fd = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, STDERR_FILENO);
        g_road.processes.insert(g_road.processes.begin(), start({program}, "", ""));
        dup2(saved, STDERR_FILENO);
        close(fd);
        close(saved);
        if (!wait_for(log, "commands in main tree"))
            return false;
    }
    // The newest main tree is the largest: it holds every registered tree.
    for (const auto &entry : std::filesystem::directory_iterator(par))
        if (entry.path().filename().string().rfind("main_tree", 0) == 0)
            g_road.tree_nodes = std::max<std::size_t>(g_road.tree_nodes, entry.file_size() / WEX_NODE_SIZE);
    return true;
}

void stop_the_road()
{
    for (const pid_t pid : g_road.processes) {
        kill(pid, SIGTERM);
        finish(pid);
    }
    std::filesystem::remove_all(g_road.dir);
}

// Ten thousand zones of nine members each: 100,000 lines.
std::string write_configuration()
{
    const std::string path = g_road.dir + "/large.cfg";
    std::string text;
    char line[64];
    for (int zone = 0; zone < kZones; ++zone) {
        text += "zone name Z" + std::to_string(zone) + " vsan 10\n";
        for (int member = 0; member < kMembersPerZone; ++member) {
            std::snprintf(line, sizeof line, "  member fcid 0x%06x\n", 0x10000 + zone * 16 + member);
            text += line;
        }
    }
    std::ofstream(path) << text;
    return path;
}

// The configuration as it stands: empty before the large one is applied.
void BM_ShowRunning(benchmark::State &state, const char * /*stage*/)
{
    for (auto _ : state) {
        if (run_shell({"-nRc", "show running-config"}) != 0)
            return state.SkipWithError("the shell failed");
    }
}
BENCHMARK_CAPTURE(BM_ShowRunning, small, "")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

// Once: the configuration's every line is new to its feature only the
// first time.
void BM_ApplyConfiguration(benchmark::State &state)
{
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        if (run_shell({"-nRr", g_road.config}) != 0)
            return state.SkipWithError("a line of the configuration failed");
        g_road.applied_seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }
}
BENCHMARK(BM_ApplyConfiguration)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

BENCHMARK_CAPTURE(BM_ShowRunning, large, "")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly();

void summarize(wex_bench::RealTimes &figures)
{
    const std::string nodes = " (" + std::to_string(g_road.tree_nodes) + "-node tree)";
    const double small = figures["BM_ShowRunning/small/repeats:5/real_time_median"];
    wex_bench::summary_row(("wex -nRc \"show running-config\", two features" + nodes + ", median").c_str(),
                           small, 15, "ms", "at most 15 ms", small <= 15 && g_road.tree_nodes >= 20000);
    const double rate = g_road.applied_seconds > 0 ? kConfigLines / g_road.applied_seconds : 0;
    wex_bench::summary_row("wex -nRr of 100,000 lines, each acknowledged", rate / 1000, 50, "k lines/s",
                           "at least 50k lines/s", rate >= 50000);
    const double large = figures["BM_ShowRunning/large/repeats:5/real_time_median"];
    wex_bench::summary_row("show running-config of those 100,000 lines, median", large, 250, "ms",
                           "at most 250 ms", large <= 250);
}

} // namespace

int main(int argc, char **argv)
{
    if (!start_the_road()) {
        std::fprintf(stderr, "road bench: the simulator or a feature did not start (see %s)\n",
                     g_road.dir.c_str());
        stop_the_road();
        return 1;
    }
    g_road.config = write_configuration();
    const int status = wex_bench::run_with_summary(argc, argv, summarize);
    stop_the_road();
    return status;
}
