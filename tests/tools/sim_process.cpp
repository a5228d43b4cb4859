#include "tools/sim_process.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <fstream>
#include <string>
#include <vector>

namespace wex_test
{
namespace
{

// The command that starts a program: under the emulator when the tests run
// under one.
std::vector<std::string> command_of(const std::string &program, const std::vector<std::string> &args)
{
    std::vector<std::string> command;
    const std::string emulator = WEX_TEST_EMULATOR;
    if (!emulator.empty())
        command.push_back(emulator);
    command.push_back(program);
    command.insert(command.end(), args.begin(), args.end());
    return command;
}

pid_t spawn(const std::vector<std::string> &command, const std::string &dir, int out_fd, int err_fd,
            const ToolIo &io = {})
{
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    setenv("IPCQ_RUNTIME_DIR", dir.c_str(), 1);
    if (!io.in.empty())
        dup2(open(io.in.c_str(), O_RDONLY), STDIN_FILENO);
    if (!io.out.empty())
        out_fd = open(io.out.c_str(), O_WRONLY);
    dup2(out_fd, STDOUT_FILENO);
    dup2(err_fd, STDERR_FILENO);
    std::vector<char *> argv;
    for (const std::string &word : command)
        argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
}

std::string read_available(int fd, int wait_ms)
{
    std::string text;
    pollfd ready{fd, POLLIN, 0};
    char buf[4096];
    while (poll(&ready, 1, wait_ms) > 0) {
        const ssize_t n = read(fd, buf, sizeof buf);
        if (n <= 0)
            break;
        text.append(buf, static_cast<std::size_t>(n));
        wait_ms = 0;
    }
    return text;
}

int wait_exit(pid_t pid)
{
    int status = 0;
    for (int i = 0; i < 100; ++i) {
        if (waitpid(pid, &status, WNOHANG) == pid)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        usleep(50 * 1000);
    }
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    return -1;
}

} // namespace

SimProcess::SimProcess(const std::string &role_config, const std::vector<std::string> &more_args)
{
    char pattern[] = "/tmp/wexd-sim-test-XXXXXX";
    dir_ = mkdtemp(pattern);
    std::vector<std::string> args;
    if (!role_config.empty()) {
        const std::string path = dir_ + "/roles.conf";
        FILE *file = std::fopen(path.c_str(), "w");
        std::fputs(role_config.c_str(), file);
        std::fclose(file);
        args = {"--config", path};
    }
    args.insert(args.end(), more_args.begin(), more_args.end());
    // The log goes to a file, read as it grows: a simulator that logs more
    // than a pipe holds while nobody reads must not stall.
    const std::string log_path = dir_ + "/wexd-sim.log";
    const int log_fd = open(log_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    out_fd_ = open(log_path.c_str(), O_RDONLY);
    if (log_fd < 0 || out_fd_ < 0)
        return;
    pid_ = spawn(command_of(WEXD_SIM_PATH, args), dir_, log_fd, STDERR_FILENO);
    close(log_fd);
    // Up to ten seconds (the emulated build starts slowly) for the line
    // that says the queues are open; a main tree may be logged before it.
    for (int i = 0; i < 100 && log_.find("wexd-sim: serving") == std::string::npos; ++i) {
        const std::string more = read_available(out_fd_, 100);
        if (more.empty())
            usleep(100 * 1000);
        log_ += more;
    }
    ready_ = log_.find("wexd-sim: serving") != std::string::npos;
}

SimProcess::~SimProcess()
{
    stop();
    if (out_fd_ >= 0)
        close(out_fd_);
    std::string remove = "rm -rf '" + dir_ + "'";
    if (std::system(remove.c_str()) != 0)
        std::perror("rm");
}

int SimProcess::stop()
{
    if (pid_ < 0)
        return exit_status_;
    kill(pid_, SIGTERM);
    exit_status_ = wait_exit(pid_);
    pid_ = -1;
    log_ += read_available(out_fd_, 0);
    return exit_status_;
}

bool SimProcess::wait_for_log(const std::string &text)
{
    // By the clock, not by a count of polls: under the emulator a poll can
    // come back early.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (log_.find(text) == std::string::npos && std::chrono::steady_clock::now() < end) {
        const std::string more = read_available(out_fd_, 100);
        if (more.empty())
            usleep(10 * 1000);
        log_ += more;
    }
    return log_.find(text) != std::string::npos;
}

long SimProcess::memory_kib() const
{
    std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stol(line.substr(6));
    }
    return -1;
}

std::string SimProcess::log()
{
    return log_;
}

ToolRun run_tool(const std::string &program, const std::vector<std::string> &args,
                 const std::string &runtime_dir, const ToolIo &io)
{
    int out[2], err[2];
    if (pipe(out) != 0 || pipe(err) != 0)
        return {-1, "", "no pipe"};
    const pid_t pid = spawn(command_of(program, args), runtime_dir, out[1], err[1], io);
    close(out[1]);
    close(err[1]);
    ToolRun run{-1, "", ""};
    // Read while it runs: a tool that writes more than a pipe holds must not
    // stall. Five seconds at most, in steps of at least 10 ms.
    for (int i = 0; i < 500 && run.status == -1; ++i) {
        run.out += read_available(out[0], 5);
        run.err += read_available(err[0], 5);
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid)
            run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        else
            usleep(10 * 1000);
    }
    if (run.status == -1) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    run.out += read_available(out[0], 0);
    run.err += read_available(err[0], 0);
    close(out[0]);
    close(err[0]);
    return run;
}

} // namespace wex_test
