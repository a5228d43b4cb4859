// The library's command-execution and snapshot operations against the real
// shell: wexd-sim, the zone and interface features and the shell, with the
// library rooted in the road sandbox where "/tarn/bin/wex" and
// "/lc/tarnboot/bin/wexboot" are the built shell. The steps build on each
// other, so they run in order: what one configures, the snapshots at the
// end must show.
#include "support/capture.h"
#include "support/sandbox.h"
#include "tools/road_system.h"

#include <wex/wex.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>

namespace
{

using wex_test::file_content;
using wex_test::write_file;

const std::string kSandbox = WEX_ROAD_SANDBOX;
const std::string kShell = kSandbox + "/tarn/bin/wex";
const std::string kCommandList = kSandbox + "/volatile/wex_cmdlist_1";

wex_system_params_t exec_record(const std::string &file_name, const std::string &out_file = "")
{
    wex_system_params_t record{};
    std::snprintf(record.file_name, sizeof record.file_name, "%s", file_name.c_str());
    std::snprintf(record.out_file, sizeof record.out_file, "%s", out_file.c_str());
    return record;
}

wex_cfg_gen_params_t snapshot_record(const std::string &out_file, int32_t o_val = 0)
{
    wex_cfg_gen_params_t record{};
    std::snprintf(record.out_file, sizeof record.out_file, "%s", out_file.c_str());
    record.o_val = o_val;
    return record;
}

struct Step {
    const char *what;
    std::function<long long()> operation;
    long long result;
    std::string printed;
};

class ExecRoad : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        road_ = std::make_unique<wex_test::RoadSystem>();
        ASSERT_EQ(road_->problem(), "");
    }
    void TearDown() override
    {
        EXPECT_TRUE(road_->stop());
        std::remove(kCommandList.c_str());
    }
    std::string path(const std::string &name) const { return road_->path(name); }
    // Runs each step in turn, checking what it returned and printed.
    void run_steps(const std::vector<Step> &steps) const
    {
        for (const Step &step : steps) {
            SCOPED_TRACE(step.what);
            long long result = 0;
            EXPECT_EQ(wex_test::capture_combined([&] { result = step.operation(); }), step.printed);
            EXPECT_EQ(result, step.result);
        }
    }

    std::unique_ptr<wex_test::RoadSystem> road_;
};

TEST_F(ExecRoad, EveryOperationRunsTheShellAndItsSnapshotsShowWhatWasConfigured)
{
    const std::string pad(15, ' ');
    write_file(path("zone-set.txt"), "configure terminal\nzone-set name S1 vsan 10\n  member Z1\n"
                                     "zone-set activate S1 vsan 10\n");
    write_file(path("speed.cfg"), "interface fc1/1\n  speed 8000\n");
    write_file(path("version.txt"), "show version\n");
    write_file(path("listed.txt"), "configure terminal\nzone name Z6 vsan 10\nzone name Z7 vsan 10\n");
    write_file(kCommandList, "zone name Z6 vsan 10\n");
    write_file(path("stops.cfg"), "zone name Z8 vsan 10\n  member fcid 0x10300\nzone name Z9 vsan 5000\n"
                                  "  member fcid 0x10400\nzone name Z10 vsan 10\n");
    write_file(path("port.cfg"), "interface fc1/2\n  no shutdown\n  description Tape library\n");

    wex_system_params_t running = exec_record("", path("running.out"));
    std::snprintf(running.cmd_str, sizeof running.cmd_str, "show running-config");
    wex_system_params_t listed = exec_record(path("listed.txt"));
    listed.q_val = 2;
    wex_system_params_t stops = exec_record(path("stops.cfg"), path("stops.out"));
    stops.e_val = 1;
    wex_system_params_t port = exec_record(path("port.cfg"));
    port.debug = 1;
    wex_system_params_t caller_built = exec_record(path("port.cfg"));
    const std::string brief_line =
        kShell + " -c \"show interface fc1/1-2 brief\" > " + path("brief.out") + " 2>&1";

    run_steps({
        {"a command line of several commands",
         [] {
             return wex_system("configure terminal ; vsan 10 name Lab ; zone name Z1 vsan 10 ; "
                               "member fcid 0x10203");
         },
         0, ""},
        {"a show command", [] { return wex_system("show zone"); }, 0,
         "zone name Z1 vsan 10\n  member fcid 0x010203\n"},
        {"a command its feature refuses: exit status 1",
         [] { return wex_system("configure terminal ; zone-set activate S9 vsan 10"); }, 1 << 8,
         "% zone set S9 in VSAN 10 does not exist\n"},
        {"a script", [&] { return wex_execute_script_file(path("zone-set.txt").c_str()); }, 0, ""},
        {"a missing script", [&] { return wex_execute_script_file(path("absent.txt").c_str()); }, -1,
         "No such file or directory\n"},
        {"a configuration file", [&] { return wex_execute_cfg_file(path("speed.cfg").c_str()); }, 0, ""},
        {"the boot image's shell", [&] { return wex_lc_execute_script_file(path("version.txt").c_str()); }, 0,
         "wexboot " WEX_PROJECT_VERSION "\n"},
        {"a record's command, its output to a file", [&] { return wex_system2(&running); }, 0, ""},
        {"a script filtered through the command list", [&] { return wex_execute_script_file2(&listed); }, 0,
         ""},
        {"the same script again: every line is listed", [&] { return wex_execute_script_file2(&listed); }, 0,
         ""},
        {"a configuration that stops at its first error", [&] { return wex_execute_cfg_file2(&stops); },
         WEX_STATUS_FAILURE, ""},
        {"a bootstrap configuration, with the diagnostic lines",
         [&] { return wex_multi_stage_execute_cfg_file(0, &port); }, 0,
         "Command str:cat " + path("port.cfg") + " | " + kShell +
             "   -e 0 -q 0 -o 0  \nwex exit status = 0\nBootstrap file execution status = 0\n"},
        {"a command line the caller built",
         [&] { return wex_execute_cmd_file2(&caller_built, brief_line.c_str()); }, 0, ""},
    });
    EXPECT_EQ(file_content(path("running.out")), "vsan 10 name Lab\n"
                                                 "interface fc1/1\n  speed 8000\n"
                                                 "zone name Z1 vsan 10\n  member fcid 0x010203\n"
                                                 "zone-set name S1 vsan 10\n  member Z1\n"
                                                 "zone-set activate S1 vsan 10\n");
    EXPECT_EQ(file_content(kCommandList), "zone name Z6 vsan 10\nconfigure terminal\nzone name Z7 vsan 10\n");
    EXPECT_EQ(file_content(path("listed.txt_tmp")), "<absent>");
    EXPECT_EQ(file_content(path("stops.out")), "line 3: zone name Z9 vsan 5000\n"
                                               "zone name Z9 vsan 5000\n"
                                               "                  ^\n"
                                               "% Bad value \"5000\" for <VSAN>: a VSAN id from 1 to 4094\n");
    EXPECT_EQ(file_content(path("brief.out")), "Interface        VSAN  Admin  Speed  Mode  Description\n"
                                               "fc1/1" +
                                                   pad +
                                                   "1  down   8000   auto  \n"
                                                   "fc1/2" +
                                                   pad + "1  up     auto   auto  Tape library\n");

    // Every snapshot form: the zones of the filtered script (Z7, not the
    // listed Z6) and of the configuration up to its error (Z8, not Z10).
    const std::string interfaces = "vsan 10 name Lab\n"
                                   "interface fc1/1\n  speed 8000\n"
                                   "interface fc1/2\n  no shutdown\n  description Tape library\n";
    const std::string all = interfaces + "zone name Z1 vsan 10\n  member fcid 0x010203\n"
                                         "zone name Z7 vsan 10\n"
                                         "zone name Z8 vsan 10\n  member fcid 0x010300\n"
                                         "zone-set name S1 vsan 10\n  member Z1\n"
                                         "zone-set activate S1 vsan 10\n";
    wex_cfg_gen_params_t whole = snapshot_record(path("whole.cfg")), to_output = snapshot_record(""),
                         without_zones = snapshot_record(path("interfaces.cfg")),
                         startup = snapshot_record(path("startup.cfg")),
                         on_error = snapshot_record(path("on-error.cfg"), 2);
    without_zones.exclude = 1;
    std::snprintf(without_zones.exclude_str, sizeof without_zones.exclude_str, "zone");
    run_steps({
        {"a rollback snapshot", [&] { return wex_generate_running_cfg_rollback(&whole); }, 0, ""},
        {"a rollback snapshot on standard output",
         [&] { return wex_generate_running_cfg_rollback(&to_output); }, 0, all},
        {"a rollback snapshot without the zones",
         [&] { return wex_generate_running_cfg_rollback(&without_zones); }, 0, ""},
        {"the startup configuration saved", [] { return wex_system("copy running-config startup-config"); },
         0, ""},
        {"a startup snapshot", [&] { return wex_generate_startup_cfg_rollback(&startup); }, 0, ""},
        {"a snapshot through standard error", [&] { return wex_generate_running_cfg2(&on_error); }, 0, ""},
        {"the shell's own redirection",
         [&] { return wex_generate_running_cfg(path("redirected.cfg").c_str()); }, 0, ""},
    });
    EXPECT_EQ(file_content(path("whole.cfg")), all);
    EXPECT_EQ(file_content(path("interfaces.cfg")), interfaces);
    EXPECT_EQ(file_content(path("startup.cfg")), all);
    EXPECT_EQ(file_content(path("on-error.cfg")), all);
    EXPECT_EQ(file_content(path("redirected.cfg")), all);
}

} // namespace
