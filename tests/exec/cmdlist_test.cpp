#include "exec/cmdlist_filter.h"
#include "exec/exec_support.h"
#include "support/capture.h"
#include "support/sandbox.h"

#include <wex/exec.h>

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace wex_test;

namespace
{

std::string words(int count, char letter = 'w')
{
    std::string line;
    for (int i = 0; i < count; ++i)
        line += std::string(i ? " " : "") + letter;
    return line;
}

TEST(CmdlistCompare, SameWordsSeparatedByBlanksOnly)
{
    std::string first_230; // 23 words of 9 letters, each with its blank
    for (int i = 0; i < 23; ++i)
        first_230 += "abcdefghi ";
    const struct {
        std::string script, list;
        bool equal;
    } cases[] = {
        {"show  vsan   1\n", "  show vsan 1\n", true},
        {"show\tvsan 1\n", "show vsan 1\n", false},
        {"show vsan 1 \n", "show vsan 1\n", false}, // the line feed is a word of its own
        {"show vsan 1", "show vsan 1\n", false},
        {"", "x", false},
        {words(99) + "\n", words(99) + "\n", true},
        {words(100) + "\n", words(100) + "\n", false},
        {words(99) + " x", words(99), false},
        {first_230 + "0123456789 past byte 240", first_230 + "0123456789", true},
        {first_230 + "0123456789AB", first_230 + "0123456789", true}, // cut inside a word
        {first_230 + "012345678", first_230 + "0123456789", false},
        {std::string("ab\0cd", 5), "ab", true},
    };
    for (const auto &c : cases)
        EXPECT_EQ(wex::exec::cmdlist_lines_equal(c.script, c.list), c.equal) << c.script << "|" << c.list;
}

class Cmdlist : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        std::filesystem::remove_all(sandbox_path("/cmdlist"));
        std::filesystem::create_directories(sandbox_path("/cmdlist"));
        unsetenv("WARDEN_KEL_ID");
        unlink(list_path(1).c_str());
    }
    void TearDown() override { unsetenv("WARDEN_KEL_ID"); }

    static std::string list_path(int context)
    {
        return sandbox_path("/volatile/wex_cmdlist_" + std::to_string(context));
    }

    static std::string script(const std::string &name, const std::string &content)
    {
        write_sandbox_file("/cmdlist/" + name, content);
        return sandbox_path("/cmdlist/" + name);
    }

    static uint32_t run(const std::string &path, uint32_t debug = 0)
    {
        wex_system_params_t p = {};
        p.q_val = 2;
        p.debug = debug;
        std::memcpy(p.file_name, path.c_str(), path.size() + 1);
        return wex_execute_script_file2(&p);
    }

    static std::string ran(const std::string &path, const std::string &content)
    {
        return "argv: [" + main_shell() + "] [-f] [" + path + "] [-e] [0] [-q] [2] [-o] [0]\n[script]\n" +
               content + "[end]\n";
    }

    StubShell stub;
};

TEST_F(Cmdlist, RunsAndRecordsOnlyLinesTheListDoesNotHold)
{
    write_sandbox_file("/volatile/wex_cmdlist_1", "show  clock\n");
    const std::string path = script("two", "show clock\nshow vsan\n"), temporary = path + "_tmp";
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(run(path), WEX_STATUS_SUCCESS); }), "");
    EXPECT_EQ(run(path), WEX_STATUS_SUCCESS);
    EXPECT_EQ(file_content(list_path(1)), "show  clock\nshow vsan\n");
    EXPECT_EQ(stub.log(), ran(temporary, "show vsan\n") + ran(temporary, ""));
    EXPECT_FALSE(file_exists(temporary));

    // A line of 100 words is never found in the list: recorded and run every time.
    const std::string line = words(100) + "\n", long_path = script("long", line);
    run(long_path);
    run(long_path);
    EXPECT_EQ(file_content(list_path(1)), "show  clock\nshow vsan\n" + line + line);
}

TEST_F(Cmdlist, ContextIsTheLow16BitsOfTheKelId)
{
    write_sandbox_file("/volatile/wex_cmdlist_1", "");
    write_sandbox_file("/volatile/wex_cmdlist_7", "");
    const std::string path = script("one", "a\n");
    setenv("WARDEN_KEL_ID", "65537", 1);
    run(path);
    setenv("WARDEN_KEL_ID", "7", 1);
    run(path);
    EXPECT_EQ(file_content(list_path(1)) + file_content(list_path(7)), "a\na\n");
}

TEST_F(Cmdlist, FallsBackToTheWholeScriptAndLeavesNoTemporary)
{
    const std::string path = script("s", "a\n"), temporary = path + "_tmp";
    // No list: nothing printed, no list made.
    std::string out = capture_stdout([&] { EXPECT_EQ(run(path), WEX_STATUS_SUCCESS); });
    EXPECT_EQ(out, "");
    EXPECT_FALSE(file_exists(list_path(1)));
    EXPECT_EQ(stub.log(), ran(path, "a\n"));
    EXPECT_FALSE(file_exists(temporary));

    // A temporary that cannot be made: the list is open, yet the shell
    // must not hold it; the folder in the way is not the library's to remove.
    write_sandbox_file("/volatile/wex_cmdlist_1", "");
    std::filesystem::create_directory(temporary);
    StubShell watch;
    watch.set("WEX_STUB_WATCH", list_path(1));
    out = capture_stdout([&] { EXPECT_EQ(run(path), WEX_STATUS_SUCCESS); });
    EXPECT_EQ(out, "Unable to fopen file " + temporary + " err 21\n");
    EXPECT_EQ(watch.log(), ran(path, "a\n"));
    EXPECT_TRUE(std::filesystem::is_directory(temporary));
    EXPECT_EQ(file_content(list_path(1)), "");
}

TEST_F(Cmdlist, AnUnreadableScriptFallsBackWithItsMessage)
{
    write_sandbox_file("/volatile/wex_cmdlist_1", "");
    // A socket passes stat but cannot be opened (ENXIO), even by root.
    const std::string path = sandbox_path("/cmdlist/sock");
    const int sock = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(sock, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    write_sandbox_file("/cmdlist/sock_tmp", "left over\n");
    const std::string out = capture_stdout([&] { EXPECT_EQ(run(path), WEX_STATUS_SUCCESS); });
    close(sock);
    EXPECT_EQ(out, "Unable to fopen file " + path + " err 6\n");
    EXPECT_EQ(stub.log(), "argv: [" + main_shell() + "] [-f] [" + path +
                              "] [-e] [0] [-q] [2] [-o] [0]\n[script missing]\n");
    EXPECT_FALSE(file_exists(path + "_tmp"));
}

TEST_F(Cmdlist, ANameWhoseTemporaryWouldBeCutRunsWholeAndSaysSoUnderDebug)
{
    write_sandbox_file("/volatile/wex_cmdlist_1", "");
    std::string name(123 - sandbox_path("/cmdlist/").size(), 'n');
    EXPECT_EQ(run(script(name, "a\n")), WEX_STATUS_SUCCESS);
    name += 'n';
    const std::string path = script(name, "a\nb\n");
    StubShell whole;
    const std::string out = capture_stdout([&] { EXPECT_EQ(run(path, 1), WEX_STATUS_SUCCESS); });
    EXPECT_EQ(out.substr(0, out.find('\n') + 1), "Unable to name temporary file for " + path + " err 36\n");
    EXPECT_EQ(whole.log(), ran(path, "a\nb\n"));
    EXPECT_EQ(file_content(list_path(1)), "a\n");
    EXPECT_EQ(file_content(path), "a\nb\n");
    EXPECT_FALSE(file_exists(path + "_tm"));
}

// Lines between "[script]" and "[end]" in the shells' log, counted.
std::map<std::string, int> count_lines(const std::string &text, bool in_scripts_only)
{
    std::map<std::string, int> counts;
    std::istringstream lines(text);
    bool inside = !in_scripts_only;
    for (std::string line; std::getline(lines, line);) {
        if (in_scripts_only && (line == "[script]" || line == "[end]"))
            inside = line == "[script]";
        else if (inside)
            ++counts[line];
    }
    return counts;
}

TEST_F(Cmdlist, ConcurrentFiltersRecordAndRunEachLineExactlyOnce)
{
    write_sandbox_file("/volatile/wex_cmdlist_1", "");
    constexpr int kProcesses = 8, kLines = 40, kStride = 10;
    std::vector<std::string> paths;
    for (int i = 0; i < kProcesses; ++i) {
        std::string content;
        for (int line = i * kStride; line < i * kStride + kLines; ++line)
            content += "cmd " + std::to_string(line) + "\n";
        paths.push_back(script("p" + std::to_string(i), content));
    }
    std::vector<pid_t> children;
    for (const std::string &path : paths) {
        const pid_t pid = fork();
        if (pid == 0)
            _exit(run(path) == WEX_STATUS_SUCCESS ? 0 : 1);
        children.push_back(pid);
    }
    for (pid_t pid : children) {
        int status = 0;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0);
    }
    const int distinct = (kProcesses - 1) * kStride + kLines;
    const auto recorded = count_lines(file_content(list_path(1)), false);
    const auto run_lines = count_lines(stub.log(), true);
    EXPECT_EQ(recorded.size(), static_cast<std::size_t>(distinct));
    EXPECT_EQ(run_lines, recorded);
    for (const auto &[line, count] : recorded)
        EXPECT_EQ(count, 1) << line;
}

} // namespace
