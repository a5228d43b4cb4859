#include "exec/exec_support.h"
#include "support/capture.h"
#include "support/sandbox.h"

#include <wex/exec.h>

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>

using namespace wex_test;

namespace
{

template <std::size_t N> void put(char (&field)[N], const std::string &text)
{
    ASSERT_LT(text.size(), N);
    std::memcpy(field, text.c_str(), text.size() + 1);
}

// Fills a field with no terminator at all.
template <std::size_t N> void fill_unterminated(char (&field)[N])
{
    std::memset(field, 'z', N);
}

wex_system_params_t record(uint32_t type)
{
    wex_system_params_t p = {};
    p.type = type;
    return p;
}

std::string build(wex_system_params_t p, unsigned int capacity = 2048)
{
    std::string line(capacity, '#');
    EXPECT_EQ(wex_system_cmd_str_create(&p, line.data(), capacity), WEX_STATUS_SUCCESS);
    return line.c_str();
}

TEST(CommandString, PutsEveryBlankWhereTheFormatsPutIt)
{
    const std::string sh = main_shell(), a127(127, 'a'), b127(127, 'b');
    struct Case {
        const char *what;
        std::function<void(wex_system_params_t &)> fill;
        std::string line;
    } cases[] = {
        {"command", [](auto &p) { put(p.cmd_str, "show running-config"); },
         sh + "  -c \"show running-config\"  -e 0 -q 0 -o 0  "},
        {"script of 127 characters, values and extra arguments",
         [&](auto &p) {
             p.type = WEX_EXEC_SCRIPT, p.e_val = -1, p.q_val = 2, p.o_val = 2147483647;
             put(p.file_name, a127), put(p.extra_args, "-x y");
         },
         sh + "  -f " + a127 + "  -e -1 -q 2 -o 2147483647 -x y "},
        {"cfg through a pipe of 147 characters, output with its errors",
         [&](auto &p) { p.type = WEX_EXEC_CFG, put(p.file_name, a127), put(p.out_file, "/o"); },
         "cat " + a127 + " | " + sh + "   -e 0 -q 0 -o 0   > /o 2>&1"},
        {"own shell: the cfg file is named nowhere",
         [](auto &p) { p.type = WEX_EXEC_CFG, put(p.file_name, "/f"), put(p.shell_path, "/my/sh"); },
         "/my/sh   -e 0 -q 0 -o 0  "},
        {"both redirections at 127 characters (260 in all)",
         [&](auto &p) { put(p.out_file, a127), put(p.err_file, b127); },
         sh + "  -c \"\"  -e 0 -q 0 -o 0   > " + a127 + " 2>" + b127},
        {"an error file alone redirects nothing, unread", [](auto &p) { fill_unterminated(p.err_file); },
         sh + "  -c \"\"  -e 0 -q 0 -o 0  "},
    };
    for (const Case &c : cases) {
        wex_system_params_t p = record(WEX_EXEC_CMD);
        c.fill(p);
        EXPECT_EQ(build(p), c.line) << c.what;
    }
}

TEST(CommandString, RefusesUnusableRecordsAndLeavesTheDestinationAlone)
{
    const std::function<void(wex_system_params_t &)> refused[] = {
        [](auto &p) { p.type = 0; },
        [](auto &p) { p.type = 4; },
        [](auto &p) { fill_unterminated(p.cmd_str); },
        [](auto &p) { p.type = WEX_EXEC_CFG, fill_unterminated(p.file_name); },
        [](auto &p) { fill_unterminated(p.out_file); },
        [](auto &p) { put(p.out_file, "/o"), fill_unterminated(p.err_file); },
        [](auto &p) { fill_unterminated(p.shell_path); },
        [](auto &p) { fill_unterminated(p.extra_args); },
    };
    for (const auto &fill : refused) {
        wex_system_params_t p = record(WEX_EXEC_CMD);
        p.debug = 1;
        fill(p);
        char dst[16] = "untouched";
        const std::string out = capture_stdout(
            [&] { EXPECT_EQ(wex_system_cmd_str_create(&p, dst, sizeof dst), WEX_STATUS_BAD_EXEC_RECORD); });
        EXPECT_STREQ(dst, "untouched");
        EXPECT_EQ(out, "");
        StubShell stub;
        EXPECT_EQ(wex_system_execute(&p), WEX_STATUS_BAD_EXEC_RECORD);
        EXPECT_TRUE(interpreter_lines().empty());
    }
    char dst[4] = "abc";
    wex_system_params_t p = record(WEX_EXEC_CMD);
    EXPECT_EQ(wex_system_cmd_str_create(nullptr, dst, 4), WEX_STATUS_BAD_EXEC_RECORD);
    EXPECT_EQ(wex_system_cmd_str_create(&p, nullptr, 4), WEX_STATUS_BAD_EXEC_RECORD);
    EXPECT_EQ(wex_system_cmd_str_create(&p, dst, 0), WEX_STATUS_SUCCESS);
    EXPECT_STREQ(dst, "abc");
}

TEST(CommandString, CutsTheLineToTheCapacityAndRunsAtMost511Characters)
{
    wex_system_params_t p = record(WEX_EXEC_CMD);
    put(p.cmd_str, "show");
    EXPECT_EQ(build(p, 8), main_shell().substr(0, 7));

    StubShell stub;
    put(p.cmd_str, std::string(255, 'c'));
    put(p.extra_args, std::string(255, 'x'));
    EXPECT_EQ(wex_system2(&p), WEX_STATUS_SUCCESS);
    const std::string full = main_shell() + "  -c \"" + std::string(255, 'c') + "\"  -e 0 -q 0 -o 0 " +
                             std::string(255, 'x') + " ";
    EXPECT_EQ(interpreter_lines(), std::vector{full.substr(0, 511)});
}

TEST(CommandString, FoldsTheInterpretersResult)
{
    // A shell part of the caller's own makes the interpreter end by a
    // signal, so its result is the small raw value that signal gives.
    const struct {
        const char *shell;
        int exit_code;
        uint32_t status;
    } cases[] = {
        {"", 0, WEX_STATUS_SUCCESS},
        {"", 2, WEX_STATUS_FAILURE},
        {"kill -HUP $$;", 0, WEX_STATUS_INTERPRETER_ONE},
        {"kill -INT $$;", 0, WEX_STATUS_SUCCESS},
    };
    for (const auto &c : cases) {
        StubShell stub;
        stub.exit_with(c.exit_code);
        wex_system_params_t p = record(WEX_EXEC_CMD);
        put(p.shell_path, c.shell);
        EXPECT_EQ(wex_system2(&p), c.status) << c.shell << c.exit_code;
    }
}

TEST(CommandString, EntryPointsSetTheTypeRunTheRightFileAndPrintTheirDebugLines)
{
    StubShell stub;
    stub.set("WEX_STUB_STDIN", "1");
    write_sandbox_file("/bootflash/a.cfg", "hostname sw1\n");
    const std::string cfg = sandbox_path("/bootflash/a.cfg");
    wex_system_params_t p = record(0);
    put(p.file_name, cfg);
    EXPECT_EQ(wex_execute_cfg_file2(&p), WEX_STATUS_SUCCESS);
    EXPECT_EQ(p.type, uint32_t{WEX_EXEC_CFG});
    EXPECT_EQ(stub.log(),
              "argv: [" + main_shell() + "] [-e] [0] [-q] [0] [-o] [0]\n[stdin]\nhostname sw1\n[end]\n");
    EXPECT_EQ(wex_execute_script_file2(&p), WEX_STATUS_SUCCESS);
    EXPECT_EQ(p.type, uint32_t{WEX_EXEC_SCRIPT});
    EXPECT_EQ(interpreter_lines().back(), main_shell() + "  -f " + cfg + "  -e 0 -q 0 -o 0  ");

    p.debug = 1;
    p.type = 0;
    put(p.cmd_str, "show clock");
    stub.set("WEX_STUB_SAY", "child\n");
    EXPECT_EQ(capture_stdout([&] { wex_system2(&p); }),
              "Command str:" + main_shell() +
                  "  -c \"show clock\"  -e 0 -q 0 -o 0  \nchild\nwex exit status = 0\n");
    EXPECT_EQ(p.type, uint32_t{WEX_EXEC_CMD});
    stub.set("WEX_STUB_SAY", "");
    stub.exit_with(1);
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(wex_execute_cmd_file2(&p, "exit 1"), WEX_STATUS_FAILURE); }),
              "Executing wex command string:exit 1\nwex exit status = 256\n");
}

TEST(CommandString, MissingFilesRunNothingAndPrintNothing)
{
    StubShell stub;
    wex_system_params_t p = record(7);
    p.debug = 1;
    put(p.file_name, "/no/such/file");
    const std::string out = capture_stdout([&] {
        EXPECT_EQ(wex_execute_script_file2(&p), WEX_STATUS_FILE_MISSING);
        EXPECT_EQ(wex_execute_cfg_file2(&p), WEX_STATUS_FILE_MISSING);
        EXPECT_EQ(wex_execute_cmd_file2(&p, "true"), WEX_STATUS_FILE_MISSING);
    });
    EXPECT_EQ(out, "");
    EXPECT_EQ(p.type, 7u);
    EXPECT_TRUE(interpreter_lines().empty());
    EXPECT_EQ(wex_execute_cmd_file2(&p, nullptr), WEX_STATUS_BAD_EXEC_RECORD);
    EXPECT_EQ(wex_execute_script_file2(nullptr), WEX_STATUS_BAD_EXEC_RECORD);
    p.type = 5;
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(wex_multi_stage_execute_cfg_file(0, &p), 0u); }),
              "Bootstrap file execution status = 1079246850\n");
    EXPECT_EQ(p.type, 5u);
}

} // namespace
