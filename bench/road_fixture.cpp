#include "road_fixture.h"

#include "compiler.h"

#include <wex/parse_tree.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace wex_bench
{
namespace
{

constexpr int kPaddingWidth = 141;
constexpr int kMembersPerZone = 9;
constexpr int kZones = kConfigLines / (1 + kMembersPerZone);

std::string wide_word(int level, int index)
{
    return "k" + std::to_string(level) + "x" + std::to_string(index);
}

// 141 x 141 commands two words apart, and ten levels of 192 words where
// only the last of each level leads on.
std::string padding_grammar()
{
    std::string text = "module exec\nhelp bench \"Generated commands\"\nhelp wide \"Generated levels\"\n";
    for (int i = 0; i < kPaddingWidth; ++i)
        text += "help a" + std::to_string(i) + " \"A\"\nhelp b" + std::to_string(i) + " \"B\"\n";
    for (int level = 0; level < kWideLevels; ++level)
        for (int i = 0; i < kWideWidth; ++i)
            text += "help " + wide_word(level, i) + " \"A generated word\"\n";
    for (int i = 0; i < kPaddingWidth; ++i)
        for (int j = 0; j < kPaddingWidth; ++j)
            text += "command exec: show bench a" + std::to_string(i) + " b" + std::to_string(j) + "\n";
    std::string prefix = "show wide";
    for (int level = 0; level < kWideLevels; ++level) {
        for (int i = 0; i < kWideWidth; ++i)
            text += "command exec: " + prefix + " " + wide_word(level, i) + "\n";
        prefix += " " + wide_word(level, kWideWidth - 1);
    }
    return text;
}

std::string read_text(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The base commands and the padding, compiled as wexd keeps them.
bool write_padded_exec_image(const std::string &path)
{
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::compile(
        {{"exec.tree", read_text(WEX_TREES_DIR "/exec.tree")}, {"padding.tree", padding_grammar()}},
        diagnostics);
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
pid_t spawn_program(const std::vector<std::string> &words, const std::string &in, const std::string &out)
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

} // namespace

int run_shell(const std::vector<std::string> &args, const std::string &in)
{
    std::vector<std::string> words{WEX_SHELL_PATH};
    words.insert(words.end(), args.begin(), args.end());
    return finish(spawn_program(words, in, "/dev/null"));
}

bool Road::start()
{
    char pattern[] = "/tmp/wex-bench-road-XXXXXX"; // short: the main tree's name must fit its field
    dir_ = mkdtemp(pattern);
    const std::string par = dir_ + "/par";
    std::filesystem::create_directories(par);
    for (const char *module : {"zone", "interface"})
        std::filesystem::copy_file(std::string(WEX_PAR_DIR) + "/" + module + ".par",
                                   par + "/" + module + ".par");
    if (!write_padded_exec_image(par + "/exec.par"))
        return false;
    setenv("IPCQ_RUNTIME_DIR", dir_.c_str(), 1);
    setenv("USER", "bench", 1);
    const std::string sim_log = dir_ + "/sim.log";
    processes_.push_back(
        spawn_program({WEXD_SIM_PATH, "--par-dir", par, "--log-level", "events"}, "", sim_log));
    if (!wait_for(sim_log, "wexd-sim: serving"))
        return false;
    for (const char *program : {WEX_ZONE_PATH, WEX_INTERFACE_PATH}) {
        const std::string log = dir_ + "/" + std::filesystem::path(program).filename().string() + ".log";
        const int saved = dup(STDERR_FILENO);
        const int fd = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, STDERR_FILENO);
        processes_.insert(processes_.begin(), spawn_program({program}, "", ""));
        dup2(saved, STDERR_FILENO);
        close(fd);
        close(saved);
        if (!wait_for(log, "commands in main tree"))
            return false;
    }
    // The newest main tree is the largest: it holds every registered tree.
    for (const auto &entry : std::filesystem::directory_iterator(par))
        if (entry.path().filename().string().rfind("main_tree", 0) == 0)
            tree_nodes_ = std::max<std::size_t>(tree_nodes_, entry.file_size() / WEX_NODE_SIZE);
    return true;
}

void Road::stop()
{
    for (const pid_t pid : processes_) {
        kill(pid, SIGTERM);
        finish(pid);
    }
    std::filesystem::remove_all(dir_);
}

// Ten thousand zones of nine members each: 100,000 lines.
std::string Road::write_configuration() const
{
    const std::string path = dir_ + "/large.cfg";
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

const char *shell_path()
{
    return WEX_SHELL_PATH;
}

std::string wide_prefix()
{
    std::string prefix = "show wide";
    for (int level = 0; level + 1 < kWideLevels; ++level)
        prefix += " " + wide_word(level, kWideWidth - 1);
    return prefix;
}

} // namespace wex_bench
