#include "exec/exec_support.h"
#include "support/capture.h"
#include "support/sandbox.h"

#include <wex/exec.h>

#include <cstring>
#include <gtest/gtest.h>
#include <string>

using namespace wex_test;

namespace
{

enum class Op { running, startup, running2 };

int generate(Op op, wex_cfg_gen_params_t &p)
{
    switch (op) {
    case Op::running:
        return wex_generate_running_cfg_rollback(&p);
    case Op::startup:
        return wex_generate_startup_cfg_rollback(&p);
    case Op::running2:
        return wex_generate_running_cfg2(&p);
    }
    return -2;
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

TEST(Snapshots, RunTheExactLineOfEachForm)
{
    const std::string sh = main_shell();
    const struct {
        Op op;
        wex_cfg_gen_params_t params;
        std::string line;
    } cases[] = {
        {Op::running, snapshot(""), sh + " -q 1 -o 2 -c \"show running-config\" "},
        {Op::running, snapshot("/o"), sh + " -q 1 -o 2 -c \"show running-config\" > /o 2>&1"},
        {Op::running, snapshot("/o", 1, "vsan database"),
         sh + " -q 1 -o 2 -c \"show running-config exclude vsan database\" > /o 2>&1"},
        {Op::running, snapshot("", 1, "vsan"), sh + " -q 1 -o 2 -c \"show running-config exclude vsan\" "},
        {Op::running, snapshot("/o", 0, "ignored"), sh + " -q 1 -o 2 -c \"show running-config\" > /o 2>&1"},
        {Op::startup, snapshot(""), sh + " -q 1 -o 2 -c \"show startup-config\" "},
        {Op::startup, snapshot("/o", 1, "vsan"), sh + " -q 1 -o 2 -c \"show startup-config\" > /o 2>&1"},
        {Op::running2, snapshot(""), sh + " -o 2 -c \"show running-config\" "},
        {Op::running2, snapshot("/o"), sh + " -o 2 -c \"show running-config\" > /o 2>&1"},
    };
    for (const auto &c : cases) {
        StubShell stub;
        wex_cfg_gen_params_t p = c.params;
        EXPECT_EQ(generate(c.op, p), 0) << c.line;
        EXPECT_EQ(interpreter_lines(), std::vector<std::string>{c.line});
    }
}

TEST(Snapshots, ResultsAndTheDebugLine)
{
    StubShell stub;
    stub.exit_with(3);
    wex_cfg_gen_params_t p = snapshot("");
    p.debug = 1;
    for (Op op : {Op::running, Op::startup}) {
        EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(generate(op, p), 768); }), "wex exit status = 768\n");
    }
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(generate(Op::running2, p), 0); }), "wex exit status = 768\n");
}

TEST(Snapshots, TheConfigurationAndItsErrorsGoToTheFile)
{
    StubShell stub;
    stub.set("WEX_STUB_SAY", "hostname sw1\n");
    const std::string file = sandbox_path("/bootflash/running.cfg");
    unlink(file.c_str());
    wex_cfg_gen_params_t p = snapshot(file);
    const std::string out = capture_stdout([&] { EXPECT_EQ(generate(Op::running, p), 0); });
    EXPECT_EQ(out, "");
    EXPECT_EQ(file_content(file), "hostname sw1\n");
}

TEST(Snapshots, LinesThatWouldBeCutAreNotRun)
{
    StubShell stub;
    const std::string exclude(127, 'e');
    wex_cfg_gen_params_t p = snapshot("/" + std::string(126, 'o'), 1, exclude);
    EXPECT_EQ(generate(Op::running, p), -1);
    std::memset(p.exclude_str, 'x', sizeof p.exclude_str);
    p.out_file[0] = '\0';
    EXPECT_EQ(generate(Op::running, p), -1);
    std::memset(p.out_file, 'x', sizeof p.out_file);
    p.exclude = 0;
    for (Op op : {Op::running, Op::startup})
        EXPECT_EQ(generate(op, p), -1);
    EXPECT_EQ(generate(Op::running2, p), 0);
    EXPECT_EQ(wex_generate_running_cfg_rollback(nullptr), -1);
    EXPECT_EQ(wex_generate_running_cfg2(nullptr), 0);
    EXPECT_TRUE(interpreter_lines().empty());
}

TEST(Snapshots, RunningConfigToAFileThroughTheShellItself)
{
    StubShell stub;
    const std::string path104 = "/" + std::string(103, 'p');
    EXPECT_EQ(wex_generate_running_cfg("/bootflash/a.cfg"), 0);
    EXPECT_EQ(wex_generate_running_cfg(path104.c_str()), 0);
    EXPECT_EQ(stub.log(), "argv: [wex] [-nRc] [show running-config > /bootflash/a.cfg ]\n"
                          "argv: [wex] [-nRc] [show running-config > " +
                              path104 + " ]\n");
    EXPECT_EQ(wex_generate_running_cfg((path104 + "q").c_str()), -1);
    EXPECT_EQ(wex_generate_running_cfg(nullptr), -1);
    stub.exit_with(2);
    EXPECT_EQ(wex_generate_running_cfg("/a"), 512);
}

} // namespace
