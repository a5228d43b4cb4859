// The shell's road for the benchmarks that run it whole: wexd-sim and both
// features in a runtime directory of their own, on a main tree of some
// 22,000 nodes (the base commands, 141 x 141 generated "show bench aI bJ"
// commands, and "show wide" ten levels deep with 192 words a level), and a
// 100,000-line configuration to apply.
#ifndef WEX_BENCH_ROAD_FIXTURE_H
#define WEX_BENCH_ROAD_FIXTURE_H

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace wex_bench
{

// Ten thousand zones of nine members each.
inline constexpr int kConfigLines = 100000;
// The words of each level of "show wide".
inline constexpr int kWideWidth = 192;
inline constexpr int kWideLevels = 10;

class Road
{
  public:
    // Starts the simulator and the features; false when one does not start.
    bool start();
    void stop();
    const std::string &dir() const { return dir_; }
    // The nodes of the main tree the features made.
    std::size_t tree_nodes() const { return tree_nodes_; }
    // Writes the configuration file; its path.
    std::string write_configuration() const;

  private:
    std::string dir_;
    std::vector<pid_t> processes_; // the simulator last
    std::size_t tree_nodes_ = 0;
};

// The built shell.
const char *shell_path();

// Runs wex with the arguments, standard output to /dev/null and standard
// input from in ("" leaves it); its exit status, or -1.
int run_shell(const std::vector<std::string> &args, const std::string &in = "");

// The words of "show wide" down to its last level but one: each level's
// last word.
std::string wide_prefix();

} // namespace wex_bench

#endif
