// Direct shell spawns and the configuration snapshots run through the
// command interpreter.
#include "exec/exec_support.h"
#include "support/capture.h"
#include "support/sandbox.h"

#include <wex/exec.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/time.h>

using namespace wex_test;

namespace
{

TEST(Spawn, StartsTheShellWithTheExactArgumentVectorAndReturnsItsWaitStatus)
{
    const std::string script = sandbox_path("/bootflash/run.txt");
    write_sandbox_file("/bootflash/run.txt", "show clock\n");
    // A shell exiting with 2 gives the command its raw wait status, and the
    // file runners -1.
    const struct {
        std::function<int()> call;
        std::string argv_line;
        int exit_2_result;
    } cases[] = {
        {[] { return wex_system("show running-config"); }, "argv: [wex] [-nRc] [show running-config]\n", 512},
        {[] { return wex_system_internal("a \"b  c\" 'd'", 3, 1); }, "argv: [wex] [-nRr] [a \"b  c\" 'd']\n",
         512},
        {[] { return wex_system_internal("x", 2, 7); }, "argv: [wexboot] [-nRf] [x]\n", 512},
        {[&] { return wex_execute_script_file(script.c_str()); }, "argv: [wex] [-nRf] [" + script + "]\n",
         -1},
        {[&] { return wex_execute_cfg_file(script.c_str()); }, "argv: [wex] [-nRr] [" + script + "]\n", -1},
        {[&] { return wex_lc_execute_script_file(script.c_str()); },
         "argv: [wexboot] [-nRf] [" + script + "]\n", -1},
    };
    for (const auto &c : cases) {
        StubShell stub;
        EXPECT_EQ(c.call(), 0);
        EXPECT_EQ(stub.log(), c.argv_line);
        stub.exit_with(2);
        EXPECT_EQ(c.call(), c.exit_2_result) << c.argv_line;
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
        EXPECT_EQ(wex_lc_execute_script_file(nullptr), -1);
    });
    EXPECT_EQ(out.out + out.err, "");
    out = capture_output([&] { EXPECT_EQ(wex_execute_script_file(missing), -1); });
    EXPECT_EQ(out.err, "No such file or directory\n");
    EXPECT_EQ(stub.log(), "");

    // A shell that cannot be executed ends the child with 127, without
    // flushing the caller's buffered streams a second time.
    const std::string shell = main_shell(), away = shell + ".away", pending = shell + ".pending";
    std::FILE *buffered = std::fopen(pending.c_str(), "w");
    ASSERT_TRUE(buffered);
    std::fputs("once", buffered);
    ASSERT_EQ(std::rename(shell.c_str(), away.c_str()), 0);
    const int system_result = wex_system("x");
    ASSERT_EQ(std::rename(away.c_str(), shell.c_str()), 0);
    std::fclose(buffered);
    EXPECT_EQ(system_result, 127 * 256);
    EXPECT_EQ(file_content(pending), "once");
}

volatile sig_atomic_t alarms = 0;

TEST(Spawn, FlushesTheCallersOutputFirstAndWaitsThroughSignals)
{
    StubShell stub;
    stub.set("WEX_STUB_SAY", "child\n");
    EXPECT_EQ(capture_stdout([] {
                  std::printf("before ");
                  wex_system("x");
                  std::printf("after\n");
              }),
              "before child\nafter\n");

    stub.exit_with(3);
    stub.set("WEX_STUB_SLEEP_MS", "400");
    struct sigaction action = {}, previous = {};
    action.sa_handler = [](int) { alarms = alarms + 1; }; // no SA_RESTART: waitpid fails with EINTR
    sigaction(SIGALRM, &action, &previous);
    itimerval every_50ms = {{0, 50000}, {0, 50000}}, off = {};
    setitimer(ITIMER_REAL, &every_50ms, nullptr);
    const int result = wex_system("x");
    setitimer(ITIMER_REAL, &off, nullptr);
    sigaction(SIGALRM, &previous, nullptr);
    EXPECT_GT(alarms, 0);
    EXPECT_EQ(result, 3 * 256);
}

enum class Op { running, startup, running2 };

int generate(Op op, wex_cfg_gen_params_t p)
{
    return op == Op::running   ? wex_generate_running_cfg_rollback(&p)
           : op == Op::startup ? wex_generate_startup_cfg_rollback(&p)
                               : wex_generate_running_cfg2(&p);
}

wex_cfg_gen_params_t snapshot(const std::string &out_file, uint32_t exclude = 0,
                              const std::string &exclude_str = "")
{
    wex_cfg_gen_params_t p = {};
    std::memcpy(p.out_file, out_file.c_str(), out_file.size() + 1);
    std::memcpy(p.exclude_str, exclude_str.c_str(), exclude_str.size() + 1);
    p.q_val = 1;
    p.o_val = 2;
    p.exclude = exclude;
    return p;
}

TEST(Snapshots, RunTheExactLineOfEachFormOrNoneThatWouldBeCut)
{
    const std::string sh = main_shell(), running = sh + " -q 1 -o 2 -c \"show running-config";
    const struct {
        Op op;
        wex_cfg_gen_params_t params;
        std::string line;
    } cases[] = {
        {Op::running, snapshot(""), running + "\" "},
        {Op::running, snapshot("/o", 1, "vsan database"), running + " exclude vsan database\" > /o 2>&1"},
        {Op::running, snapshot("", 1, "vsan"), running + " exclude vsan\" "},
        {Op::running, snapshot("/o", 0, "ignored"), running + "\" > /o 2>&1"},
        {Op::startup, snapshot("/o", 1, "vsan"), sh + " -q 1 -o 2 -c \"show startup-config\" > /o 2>&1"},
        {Op::running2, snapshot(""), sh + " -o 2 -c \"show running-config\" "},
        {Op::running2, snapshot("/o"), sh + " -o 2 -c \"show running-config\" > /o 2>&1"},
        {Op::running, snapshot("/" + std::string(126, 'o'), 1, std::string(127, 'e')), ""},
    };
    for (const auto &c : cases) {
        StubShell stub;
        EXPECT_EQ(generate(c.op, c.params), c.line.empty() ? -1 : 0) << c.line;
        EXPECT_EQ(interpreter_lines(), c.line.empty() ? std::vector<std::string>{} : std::vector{c.line});
    }
    StubShell stub;
    wex_cfg_gen_params_t unterminated = snapshot("");
    std::memset(unterminated.out_file, 'x', sizeof unterminated.out_file);
    EXPECT_EQ(generate(Op::startup, unterminated), -1);
    EXPECT_EQ(generate(Op::running2, unterminated), 0);
    EXPECT_EQ(wex_generate_running_cfg_rollback(nullptr), -1);
    EXPECT_EQ(wex_generate_running_cfg2(nullptr), 0);
    EXPECT_TRUE(interpreter_lines().empty());
}

TEST(Snapshots, ResultsDebugLineAndOutputFile)
{
    StubShell stub;
    stub.exit_with(3);
    wex_cfg_gen_params_t p = snapshot("");
    p.debug = 1;
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(generate(Op::startup, p), 768); }), "wex exit status = 768\n");
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(generate(Op::running2, p), 0); }), "wex exit status = 768\n");

    stub.exit_with(0);
    stub.set("WEX_STUB_SAY", "hostname sw1\n");
    const std::string file = sandbox_path("/bootflash/running.cfg");
    unlink(file.c_str());
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(generate(Op::running, snapshot(file)), 0); }), "");
    EXPECT_EQ(file_content(file), "hostname sw1\n");
}

TEST(Snapshots, RunningConfigToAFileThroughTheShellItself)
{
    StubShell stub;
    const std::string path104 = "/" + std::string(103, 'p');
    EXPECT_EQ(wex_generate_running_cfg(path104.c_str()), 0);
    EXPECT_EQ(stub.log(), "argv: [wex] [-nRc] [show running-config > " + path104 + " ]\n");
    EXPECT_EQ(wex_generate_running_cfg((path104 + "q").c_str()), -1);
    EXPECT_EQ(wex_generate_running_cfg(nullptr), -1);
    stub.exit_with(2);
    EXPECT_EQ(wex_generate_running_cfg("/a"), 512);
}

} // namespace
