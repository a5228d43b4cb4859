#include "exec/exec_support.h"
#include "support/capture.h"
#include "support/sandbox.h"

#include <wex/exec.h>

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

using namespace wex_test;

namespace
{

struct SpawnCase {
    const char *what;
    std::function<int()> call;
    std::string argv_line;
};

TEST(Spawn, StartsTheShellWithTheExactArgumentVector)
{
    StubShell stub;
    const std::string script = sandbox_path("/bootflash/run.txt");
    write_sandbox_file("/bootflash/run.txt", "show clock\n");
    const SpawnCase cases[] = {
        {"command", [] { return wex_system("show running-config"); },
         "argv: [wex] [-nRc] [show running-config]\n"},
        {"quotes stay in one argument", [] { return wex_system_internal("a \"b  c\" 'd'", 3, 1); },
         "argv: [wex] [-nRr] [a \"b  c\" 'd']\n"},
        {"any image but 1 is the boot shell", [] { return wex_system_internal("x", 2, 7); },
         "argv: [wexboot] [-nRf] [x]\n"},
        {"script", [&] { return wex_execute_script_file(script.c_str()); },
         "argv: [wex] [-nRf] [" + script + "]\n"},
        {"cfg", [&] { return wex_execute_cfg_file(script.c_str()); },
         "argv: [wex] [-nRr] [" + script + "]\n"},
        {"boot script", [&] { return wex_lc_execute_script_file(script.c_str()); },
         "argv: [wexboot] [-nRf] [" + script + "]\n"},
    };
    for (const SpawnCase &c : cases) {
        StubShell fresh;
        EXPECT_EQ(c.call(), 0) << c.what;
        EXPECT_EQ(fresh.log(), c.argv_line) << c.what;
    }
}

TEST(Spawn, ReturnsTheUndecodedWaitStatusAndWrappersCollapseIt)
{
    const std::string script = sandbox_path("/bootflash/run.txt");
    write_sandbox_file("/bootflash/run.txt", "show clock\n");
    const struct {
        int exit_code, system_result, file_result;
    } cases[] = {{0, 0, 0}, {1, 256, -1}, {2, 512, -1}, {127, 32512, -1}};
    for (const auto &c : cases) {
        StubShell stub;
        stub.exit_with(c.exit_code);
        EXPECT_EQ(wex_system("x"), c.system_result) << c.exit_code;
        EXPECT_EQ(wex_execute_script_file(script.c_str()), c.file_result) << c.exit_code;
        EXPECT_EQ(wex_execute_cfg_file(script.c_str()), c.file_result) << c.exit_code;
        EXPECT_EQ(wex_lc_execute_script_file(script.c_str()), c.file_result) << c.exit_code;
    }
}

TEST(Spawn, StartsNoShellForNoTextAnUnknownModeOrAMissingFile)
{
    StubShell stub;
    const char *missing = "/no/such/script";
    Output out = capture_output([&] {
        EXPECT_EQ(wex_system(nullptr), 1);
        EXPECT_EQ(wex_system_internal("x", 0, 1), -1);
        EXPECT_EQ(wex_system_internal("x", 4, 1), -1);
        EXPECT_EQ(wex_execute_cfg_file(missing), -1);
        EXPECT_EQ(wex_lc_execute_script_file(missing), -1);
        EXPECT_EQ(wex_lc_execute_script_file(nullptr), -1);
    });
    EXPECT_EQ(out.out + out.err, "");
    out = capture_output([&] { EXPECT_EQ(wex_execute_script_file(missing), -1); });
    EXPECT_EQ(out.err, "No such file or directory\n");
    EXPECT_EQ(stub.log(), "");
}

TEST(Spawn, AShellThatCannotBeExecutedEndsTheChildWith127)
{
    StubShell stub;
    write_sandbox_file("/bootflash/run.txt", "show clock\n");
    const std::string shell = main_shell(), away = shell + ".away";
    ASSERT_EQ(std::rename(shell.c_str(), away.c_str()), 0);
    const int system_result = wex_system("x");
    const int script_result = wex_execute_script_file(sandbox_path("/bootflash/run.txt").c_str());
    ASSERT_EQ(std::rename(away.c_str(), shell.c_str()), 0);
    EXPECT_EQ(system_result, 127 * 256);
    EXPECT_EQ(script_result, -1);
}

TEST(Spawn, CallerOutputBufferedBeforeTheCallIsWrittenOnceAndFirst)
{
    StubShell stub;
    stub.set("WEX_STUB_SAY", "child\n");
    const std::string out = capture_stdout([] {
        std::printf("before ");
        std::fprintf(stderr, "err ");
        wex_system("x");
        std::printf("after\n");
    });
    EXPECT_EQ(out, "before child\nafter\n");
}

volatile sig_atomic_t alarms = 0;
void count_alarm(int)
{
    alarms = alarms + 1;
}

TEST(Spawn, WaitingGoesOnWhenASignalInterruptsIt)
{
    StubShell stub;
    stub.exit_with(3);
    stub.set("WEX_STUB_SLEEP_MS", "400");
    struct sigaction action = {}, previous = {};
    action.sa_handler = count_alarm; // no SA_RESTART: waitpid fails with EINTR
    sigaction(SIGALRM, &action, &previous);
    itimerval every_50ms = {{0, 50000}, {0, 50000}}, off = {};
    setitimer(ITIMER_REAL, &every_50ms, nullptr);
    const int result = wex_system("x");
    setitimer(ITIMER_REAL, &off, nullptr);
    sigaction(SIGALRM, &previous, nullptr);
    EXPECT_GT(alarms, 0);
    EXPECT_EQ(result, 3 * 256);
}

} // namespace
