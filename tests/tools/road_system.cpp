#include "tools/road_system.h"

#include "support/sandbox.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace wex_test
{

FeatureProcess::FeatureProcess(const std::string &program, const std::string &log) : log_(log)
{
    pid_ = fork();
    if (pid_ == 0) {
        std::freopen(log.c_str(), "w", stderr);
        execl(program.c_str(), program.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
}

bool FeatureProcess::ready() const
{
    for (int i = 0; i < 100; ++i) {
        if (file_content(log_).find("commands in main tree") != std::string::npos)
            return true;
        usleep(50 * 1000);
    }
    return false;
}

int FeatureProcess::stop()
{
    int status = -1;
    if (pid_ > 0 && kill(pid_, SIGTERM) == 0 && waitpid(pid_, &status, 0) == pid_)
        status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    pid_ = -1;
    return status;
}

RoadSystem::RoadSystem()
{
    char pattern[] = "/tmp/wex-road-XXXXXX";
    work_ = mkdtemp(pattern);
    std::filesystem::copy(WEX_PAR_DIR, path("par"));
    sim_ = std::make_unique<SimProcess>("", std::vector<std::string>{"--par-dir", path("par")});
    if (!sim_->ready()) {
        problem_ = sim_->log();
        return;
    }
    setenv("IPCQ_RUNTIME_DIR", sim_->runtime_dir().c_str(), 1);
    setenv("USER", "tester", 1);
    unsetenv("WARDEN_KEL_ID");
    zone_ = std::make_unique<FeatureProcess>(WEX_ZONE_PATH, path("zone.log"));
    if (!zone_->ready()) {
        problem_ = file_content(path("zone.log"));
        return;
    }
    interface_ = std::make_unique<FeatureProcess>(WEX_INTERFACE_PATH, path("interface.log"));
    if (!interface_->ready())
        problem_ = file_content(path("interface.log"));
}

bool RoadSystem::stop()
{
    const int interface = interface_ ? interface_->stop() : 0;
    const int zone = zone_ ? zone_->stop() : 0;
    interface_.reset();
    zone_.reset();
    sim_.reset();
    return interface == 0 && zone == 0;
}

RoadSystem::~RoadSystem()
{
    stop();
    unsetenv("IPCQ_RUNTIME_DIR");
    std::filesystem::remove_all(work_);
}

} // namespace wex_test
