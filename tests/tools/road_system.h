// The whole system a shell talks to, for the length of a test: wexd-sim and
// the zone and interface features, in a work folder of their own with a
// copy of the compiled grammars.
#ifndef WEX_TEST_ROAD_SYSTEM_H
#define WEX_TEST_ROAD_SYSTEM_H

#include "tools/sim_process.h"

#include <memory>
#include <string>
#include <sys/types.h>

namespace wex_test
{

// A feature process, stopped with SIGTERM.
class FeatureProcess
{
  public:
    FeatureProcess(const std::string &program, const std::string &log);
    ~FeatureProcess() { stop(); }
    FeatureProcess(const FeatureProcess &) = delete;
    FeatureProcess &operator=(const FeatureProcess &) = delete;

    // True once the feature's commands are in a main tree (5 s at most).
    bool ready() const;
    // The exit status after SIGTERM.
    int stop();

  private:
    std::string log_;
    pid_t pid_ = -1;
};

class RoadSystem
{
  public:
    // Starts everything, with IPCQ_RUNTIME_DIR and USER set for the shell;
    // problem() says what did not start.
    RoadSystem();
    ~RoadSystem();
    RoadSystem(const RoadSystem &) = delete;
    RoadSystem &operator=(const RoadSystem &) = delete;

    const std::string &problem() const { return problem_; }
    std::string path(const std::string &name) const { return work_ + "/" + name; }
    const std::string &runtime_dir() const { return sim_->runtime_dir(); }
    // Stops the features, then the simulator; true when both features
    // left with status 0.
    bool stop();

  private:
    std::string work_;
    std::unique_ptr<SimProcess> sim_;
    std::unique_ptr<FeatureProcess> zone_, interface_;
    std::string problem_;
};

} // namespace wex_test

#endif
