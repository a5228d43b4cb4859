// One wex_system call (fork, execv, waitpid) running a shell that exits at
// once, from parents of 16 MiB and 1 GiB resident memory, next to
// posix_spawn of the same program in the same run.
#include <wex/exec.h>

#include "summary_reporter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char **environ;

namespace
{

constexpr char kShell[] = WEX_BENCH_SANDBOX "/tarn/bin/wex";

// Resident memory of the given size, every page touched.
struct Resident {
    std::unique_ptr<char[]> block;
    explicit Resident(std::size_t mib) : block(new char[mib << 20])
    {
        std::memset(block.get(), 1, mib << 20);
        benchmark::DoNotOptimize(block.get());
    }
};

void BM_WexSystem(benchmark::State &state)
{
    Resident parent(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        if (wex_system("x") != 0)
            state.SkipWithError("the shell did not exit with 0");
    }
}
BENCHMARK(BM_WexSystem)->Arg(16)->Arg(1024)->Unit(benchmark::kMicrosecond);

void BM_PosixSpawn(benchmark::State &state)
{
    Resident parent(static_cast<std::size_t>(state.range(0)));
    char *argv[] = {const_cast<char *>("wex"), const_cast<char *>("-nRc"), const_cast<char *>("x"), nullptr};
    for (auto _ : state) {
        pid_t pid;
        int status = -1;
        if (posix_spawn(&pid, kShell, nullptr, nullptr, argv, environ) != 0 ||
            waitpid(pid, &status, 0) != pid || status != 0)
            state.SkipWithError("posix_spawn of the shell failed");
    }
}
BENCHMARK(BM_PosixSpawn)->Arg(16)->Arg(1024)->Unit(benchmark::kMicrosecond);

// Microseconds per call of each and their ratio, per parent size.
void summarize(wex_bench::RealTimes &real_us)
{
    for (const char *size : {"16", "1024"}) {
        const double wex = real_us[std::string("BM_WexSystem/") + size];
        const double spawn = real_us[std::string("BM_PosixSpawn/") + size];
        const std::string work = std::string("wex_system from a ") + size + " MiB parent";
        wex_bench::summary_row(work.c_str(), wex, spawn, "us", "at most 2x posix_spawn", wex <= 2 * spawn);
    }
}

} // namespace

int main(int argc, char **argv)
{
    return wex_bench::run_with_summary(argc, argv, summarize);
}
