// One wex_system call (fork, execv, waitpid) running a shell that exits at
// once, from parents of 16 MiB and 1 GiB resident memory, next to
// posix_spawn of the same program in the same run.
#include <wex/exec.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
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
        if (posix_spawn(&pid, kShell, nullptr, nullptr, argv, environ) != 0 || waitpid(pid, &status, 0) != pid ||
            status != 0)
            state.SkipWithError("posix_spawn of the shell failed");
    }
}
BENCHMARK(BM_PosixSpawn)->Arg(16)->Arg(1024)->Unit(benchmark::kMicrosecond);

// Console output, then microseconds per call and the ratio per parent size.
class RatioReporter : public benchmark::ConsoleReporter
{
  public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &r : runs)
            real_us_[r.benchmark_name()] = r.GetAdjustedRealTime();
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        for (const char *size : {"16", "1024"}) {
            const double wex = real_us_[std::string("BM_WexSystem/") + size];
            const double spawn = real_us_[std::string("BM_PosixSpawn/") + size];
            if (wex > 0 && spawn > 0)
                std::printf("parent %4s MiB: wex_system %.1f us, posix_spawn %.1f us, ratio %.2f\n", size, wex,
                            spawn, wex / spawn);
        }
    }

  private:
    std::map<std::string, double> real_us_;
};

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
