// The library's daemon requests against wexd-sim over the real transport:
// every request operation, the state they leave, and a simulator that
// survives malformed requests.
#include <wex/exec.h>
#include <wex/wexd_client.h>

#include "support/raw_peer.h"
#include "support/sandbox.h"
#include "support/samples.h"
#include "compiler.h"
#include "node_record.h"
#include "sim_replies.h"
#include "tools/sim_process.h"

#include "bcp.h"
#include "if_index.h"
#include "ipcq.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cstring>
#include <memory>
#include <string>

using namespace std::string_literals;
using wex_test::SimProcess;

namespace
{

const char *kRoles = "# roles served in the test\n"
                     "role ops Operators of the fabric\n"
                     "rule 1 permit show all\n"
                     "rule 3 deny config feature zone\n"
                     "role audit\n"
                     "rule 1 permit show feature zone\n"
                     "locale fr_FR\n";

class WexdSimTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        ASSERT_TRUE(sim_.ready()) << sim_.log();
        setenv("IPCQ_RUNTIME_DIR", sim_.runtime_dir().c_str(), 1);
        q_ = ipcq_open(WEX_DEST_ADDRESS, 4100);
        ASSERT_GE(q_, 0);
    }
    void TearDown() override
    {
        ipcq_close(q_);
        EXPECT_EQ(sim_.stop(), 0);
        unsetenv("IPCQ_RUNTIME_DIR");
    }

    SimProcess sim_{kRoles};
    int q_ = -1;
};

// A one-way message to wexd is in its hands once a read sent after it is
// answered: the simulator serves each queue in order.
int32_t interface_count(int q)
{
    intf_table_entry *entries = nullptr;
    const int32_t count = wexd_interface_table_get(q, &entries);
    std::free(entries);
    return count;
}

TEST_F(WexdSimTest, InterfacesTreesAndSubtypesAreKept)
{
    wex_intf_reg_info info;
    wex_set_intf_reg_info(&info, "fc", 2, 0, "fc_verify", "fc_list", "libfc.so", nullptr);
    info.ascii_gen_priority = 3;
    ASSERT_EQ(wex_register_interface(q_, 0x300000001ull, &info), 0);
    ASSERT_EQ(wex_register_interface2(q_, 0x2, "vsan", 1, 0, "", "", 0, "libvsan.so"), 0);
    intf_table_entry *entries = nullptr;
    ASSERT_EQ(wexd_interface_table_get(q_, &entries), 2);
    EXPECT_EQ(std::string(entries[0].name) + " " + std::to_string(entries[0].ascii_gen_priority), "fc 3");
    std::free(entries);
    ASSERT_EQ(wex_deregister_interface(q_, 0x300000001ull), 0);
    EXPECT_EQ(interface_count(q_), 1);

    EXPECT_EQ(wex_register_parse_tree(q_, "zone"), 0);
    EXPECT_EQ(wex_add_cmd_file(q_, "zone.cmd"), 0);
    EXPECT_EQ(wex_deregister_parse_tree(q_, "zone"), 0);
    EXPECT_EQ(wex_deregister_parse_tree_standby(q_, "zone"), 0);
    tree_table *trees = nullptr;
    ASSERT_EQ(wexd_tree_table_get(q_, &trees), 0);
    EXPECT_EQ(std::to_string(trees->last_index) + " " + trees->entries[0].par_file_name, "0 zone.cmd");
    std::free(trees);
    EXPECT_EQ(wexd_generate_main_tree(q_), -1); // no par directory to make it in

    // One-way messages: their queues are served apart from wexd's, so the
    // test waits for the simulator to log them before reading their effect.
    const int32_t range[2] = {1, 255};
    ASSERT_EQ(wexd_param_subtype_register(q_, -2, range), 0);
    ASSERT_TRUE(sim_.wait_for_log("<ficon-port-addr-hex> 1..255"));
    void *table = nullptr;
    ASSERT_EQ(wexd_param_subtype_table_get(q_, &table), 0);
    const auto *ranges = static_cast<const wexd_dynamic_range_msg *>(table);
    EXPECT_EQ(std::string(ranges[0].name) + " " + ranges[1].name + " " + std::to_string(ranges[1].upper),
              "<ficon-port-addr-hex> <ficon-port-addr> 255");
    std::free(table);

    intf_range_list list{};
    list.count = 1;
    list.ranges[0] = {IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 4)};
    EXPECT_EQ(wex_execute_default_intf(q_, 1, 2, list), 0);
    EXPECT_EQ(wex_get_feature_privilege(q_), 1);
    EXPECT_EQ(wex_notify_cfg_update(q_, 1, 2, 3), 0);
    EXPECT_EQ(wex_announce_logout_warning(q_, 60), 0);
    EXPECT_EQ(omx_pa_state_query(q_), 0);
    // Queues 0 and 76 are served apart from wexd's: their messages are
    // awaited in the log, not assumed handled before a later read.
    for (const char *line :
         {"mask 0x300000001 name fc", "parse-tree-deregister    standby module zone",
          "4 interfaces fc1/1 fc1/2 fc1/3 fc1/4", "cfg-change-notify        40 bytes, value 1",
          "logout-warning-announce  4 bytes, value 60", "pa-state-query"})
        EXPECT_TRUE(sim_.wait_for_log(line)) << line << "\n" << sim_.log();
    EXPECT_EQ(sim_.stop(), 0);
    EXPECT_NE(sim_.log().find("wexd-sim: stopped"), std::string::npos);
}

TEST_F(WexdSimTest, LockHasOneHolderAndSettingsAreStored)
{
    // Another requester is refused until the forced unlock; wexctl's test
    // takes the lock from other processes.
    EXPECT_EQ(wexd_cli_lock(q_, 0x11), 0);
    EXPECT_NE(wexd_cli_lock(q_, 0x22), 0);
    EXPECT_NE(wexd_cli_unlock(q_, 0x22), 0);
    EXPECT_EQ(wexd_cli_unlock_forced(q_, 0x22), 0);
    EXPECT_EQ(wexd_cli_lock(q_, 0x22), 0);
    EXPECT_NE(wexd_cli_lock_for_upgrade(q_, 0x11), 0);
    EXPECT_EQ(wexd_cli_unlock_forced(q_, 0x11), 0);
    EXPECT_EQ(wexd_cli_lock_for_upgrade(q_, 0x11), 0);
    EXPECT_EQ(wexd_cli_unlock(q_, 0x11), 0);

    EXPECT_EQ(wexd_switchname_set(q_, "edge-7"), 0);
    EXPECT_EQ(wexd_term_set_length(q_, 40), 0);
    EXPECT_EQ(wexd_session_timeout_set(q_, 30, 1), 0);
    wexd_wex_config *config = nullptr;
    ASSERT_EQ(wexd_wex_configuration_get(q_, &config), 0);
    EXPECT_EQ(std::string(config->switchname) + " " + std::to_string(config->term_length) + " " +
                  std::to_string(config->session_timeout),
              "edge-7 40 30");
    std::free(config);
    char name[WEX_FILE_NAME_SIZE] = "";
    ASSERT_EQ(wexd_wex_dynamic_parfile_name_get(q_, name), 0);
    EXPECT_STREQ(name, "/tarn/etc/par/dynamic_1.par");
}

TEST_F(WexdSimTest, RolesAndLocalesComeFromTheConfiguration)
{
    EXPECT_EQ(wexd_perm_group_role_name_verify(q_, "ops"), 0);
    EXPECT_EQ(wexd_perm_group_role_name_verify(q_, "nobody"), -1);
    EXPECT_EQ(wexd_perm_group_role_name_verify2(q_, "network-admin", 5), 0);

    void *buf = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(wexd_role_info_get(q_, 1, WEXD_ROLE_QUERY_ALL, nullptr, &buf, &len), 0);
    ASSERT_EQ(len, 2u * 912u);
    const auto *bytes = static_cast<const char *>(buf);
    EXPECT_STREQ(bytes + 4, "ops");
    EXPECT_STREQ(bytes + 912 + 4, "audit");
    wexd_perm_group_entry ops;
    std::memcpy(&ops, bytes + 36, sizeof ops);
    EXPECT_EQ(std::to_string(ops.rule_count) + std::to_string(ops.rules[1].absent) + ops.rules[2].feature,
              "31zone");
    std::free(buf);
    EXPECT_EQ(wexd_role_info_get(q_, 5, 7, "nobody", &buf, &len), 0x40540009);

    EXPECT_EQ(wexd_perm_locale_name_verify(q_, "fr_FR"), 0);
    EXPECT_EQ(wexd_perm_locale_name_verify(q_, "xx"), -1);
}

TEST_F(WexdSimTest, MalformedRequestsAreRefusedAndServingGoesOn)
{
    const uint8_t shorty[3] = {1, 2, 3};
    uint32_t len = sizeof shorty;
    EXPECT_EQ(bcp_req_resp(WEX_OPC_CLI_LOCK, 3, shorty, nullptr, &len, "", "", WEXD_QUEUE, q_, 5),
              0x40540001);
    len = 0;
    EXPECT_EQ(bcp_req_resp(12345, 1, nullptr, nullptr, &len, "", "", WEXD_QUEUE, q_, 5), 0x40540001);
    EXPECT_EQ(ipcq_send(q_, WEX_DEST_ADDRESS, WEXD_QUEUE, WEX_OPC_INTF_REGISTER, shorty, sizeof shorty,
                        nullptr, 0, nullptr),
              0);
    EXPECT_EQ(interface_count(q_), 0);
    EXPECT_EQ(wexd_switchname_set(q_, "still-here"), 0);

    // A second simulator finds the queues taken and says so.
    const auto second = wex_test::run_tool(WEXD_SIM_PATH, {}, sim_.runtime_dir());
    EXPECT_EQ(second.status, 1);
    EXPECT_NE(second.err.find("is another wexd running?"), std::string::npos) << second.err;
    EXPECT_EQ(wex_test::run_tool(WEXD_SIM_PATH, {"--bogus"}, sim_.runtime_dir()).status, 2);
}

using wex_test::RawPeer;

// A request that must be answered well within the transport's five-second
// wait for a stalled sender.
int32_t prompt_switchname_set(int q)
{
    wexd_wex_config_msg msg{};
    robust_strncpy(msg.config.switchname, "prompt", sizeof msg.config.switchname);
    uint32_t len = sizeof msg;
    return bcp_req_resp(WEX_OPC_SWITCHNAME_SET, 3, &msg, nullptr, &len, "", "", WEXD_QUEUE, q, 2);
}

TEST_F(WexdSimTest, HostilePeersNeitherStallNorGrowIt)
{
    const long memory_before = sim_.memory_kib();
    const uint32_t magic = 0x49504351, request = 2, notify = WEX_OPC_CFG_CHANGE_NOTIFY;
    const std::string dir = sim_.runtime_dir();
    std::vector<std::unique_ptr<RawPeer>> idle;
    for (int i = 0; i < 3; ++i)
        idle.push_back(std::make_unique<RawPeer>(dir, WEXD_QUEUE));
    EXPECT_EQ(prompt_switchname_set(q_), 0);
    const struct {
        const char *what;
        std::initializer_list<uint32_t> words;
    } frames[] = {
        {"a length past the limit", {magic, request, WEX_OPC_CONFIG_GET, 0, 1, 1, 0xFFFFFFFF, 0}},
        {"garbage", {0xDEADBEEF, 1, 2, 3, 4, 5, 6, 7}},
        {"an unknown kind", {magic, 9, notify, 0, 1, 1, 4, 0, 4242}},
    };
    for (const auto &frame : frames) {
        RawPeer peer(dir, frame.what[0] == 'a' && frame.what[1] == 'n' ? WEX_NOTIFY_QUEUE : WEXD_QUEUE);
        peer.send_words(frame.words);
        EXPECT_TRUE(peer.hung_up()) << frame.what;
        EXPECT_EQ(prompt_switchname_set(q_), 0) << frame.what;
    }
    {
        RawPeer truncated(dir, WEXD_QUEUE);
        truncated.send_words({magic, request, WEX_OPC_CONFIG_GET, 0, 1, 1, 100, 0, 1, 2});
    }
    struct rlimit files;
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = std::min<rlim_t>(files.rlim_max, 1100);
    setrlimit(RLIMIT_NOFILE, &files);
    for (int i = 0; i < 1000 && files.rlim_cur >= 1100; ++i)
        idle.push_back(std::make_unique<RawPeer>(dir, WEXD_QUEUE));
    EXPECT_TRUE(idle.back()->connected());
    EXPECT_EQ(prompt_switchname_set(q_), 0);
    idle.clear();

    // Every table is bounded: past 1,024 placeholders the rest are not kept,
    // and the table still travels.
    for (int i = 0; i < 1100; ++i) {
        const int32_t bounds[2] = {0, i};
        const std::string name = "<p" + std::to_string(i) + ">";
        ASSERT_EQ(wexd_set_dynamic_integer_range(q_, name.c_str(), &bounds[0], &bounds[1]), 0);
        // The log is read as it comes, or the simulator waits on its pipe.
        if (i % 200 == 0) {
            ASSERT_TRUE(sim_.wait_for_log(name));
        }
    }
    ASSERT_TRUE(sim_.wait_for_log("<p1099> 0..1099 (table full, not stored)"));
    void *table = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(
        bcp_req_resp(WEX_OPC_PARAM_SUBTYPE_TABLE_GET, 1, nullptr, &table, &len, "", "", WEXD_QUEUE, q_, 5),
        0);
    EXPECT_EQ(len, 1024u * sizeof(wexd_dynamic_range_msg));
    std::free(table);
    EXPECT_LT(sim_.memory_kib() - memory_before, 32 * 1024);
    EXPECT_EQ(ipcq_send(q_, WEX_DEST_ADDRESS, 99, 1, nullptr, 0, nullptr, 0, nullptr), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(sim_.log().find("4242"), std::string::npos); // the unknown kind reached no handler
}

std::vector<uint8_t> compiled_sample(const std::vector<std::string> &names)
{
    std::vector<wex_grammar::Source> sources;
    for (const std::string &name : names)
        sources.push_back({name, wex_test::sample_grammar(name)});
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::compile(sources, diagnostics);
    EXPECT_TRUE(image) << diagnostics.report();
    return image ? image->bytes : std::vector<uint8_t>{};
}

TEST(WexdSimProgram, MakesTheMainTreeFromTheRegisteredTreesAndKeepsItWhenOneIsBad)
{
    char pattern[] = "/tmp/wexd-sim-par-XXXXXX"; // the main tree's name must fit its field
    const std::string par = mkdtemp(pattern);
    const std::vector<uint8_t> exec = compiled_sample({"exec.tree"}),
                               zone = compiled_sample({"exec.tree", "zone.tree"});
    wex_test::write_file(par + "/exec.par", exec);
    wex_test::write_file(par + "/zone.par", zone);
    wex_test::write_file(par + "/broken.par", std::vector<uint8_t>(1500, 0x55));
    wex_test::write_file(par + "/main_tree4.par", exec); // left by a wexd before: removed at start, 5 is next

    // At start, the base commands alone make the first main tree.
    SimProcess sim("", {"--par-dir", par});
    ASSERT_TRUE(sim.ready()) << sim.log();
    setenv("IPCQ_RUNTIME_DIR", sim.runtime_dir().c_str(), 1);
    const int q = ipcq_open(WEX_DEST_ADDRESS, 4400);
    char current[WEX_FILE_NAME_SIZE] = "";
    ASSERT_EQ(wexd_wex_dynamic_parfile_name_get(q, current), 0);
    EXPECT_EQ(current, par + "/main_tree6.par");
    EXPECT_EQ(std::filesystem::file_size(current), exec.size());
    const int32_t slots[2] = {1, 16};
    ASSERT_EQ(wexd_param_subtype_register(q, -1, slots), 0);
    ASSERT_TRUE(sim.wait_for_log("<module> 1..16"));
    ASSERT_EQ(wex_register_parse_tree(q, "zone"), 0);
    EXPECT_EQ(wexd_generate_main_tree(q), 7);
    EXPECT_FALSE(std::filesystem::exists(par + "/main_tree4.par"));
    // The zone commands now go to the queue that registered them.
    void *table = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(bcp_req_resp(wex_tools::kOpcFeatureTableGet, WEX_MSG_TYPE_READ, nullptr, &table, &len, "", "",
                           WEXD_QUEUE, q, 5),
              0);
    EXPECT_EQ(std::string(static_cast<const char *>(table), len),
              "zone"s + std::string(20, '\0') + "\x30\x11\0\0"s);
    std::free(table);

    // The zone commands joined the base ones, and "show module <module>"
    // takes the slots the hardware has.
    const std::string main = wex_test::file_content(par + "/main_tree7.par");
    ASSERT_EQ(main.size(), zone.size());
    bool bounded = false;
    for (std::size_t at = 0; at < main.size(); at += WEX_NODE_SIZE) {
        const wex_grammar::NodeFields node =
            wex_grammar::decode_record(reinterpret_cast<const uint8_t *>(&main[at]));
        if (node.name == "<module>")
            bounded = node.params.front().min == 1 && node.params.front().max == 16;
    }
    EXPECT_TRUE(bounded);

    ASSERT_EQ(wex_register_parse_tree(q, "broken"), 0);
    EXPECT_EQ(wexd_generate_main_tree(q), -1);
    EXPECT_FALSE(std::filesystem::exists(par + "/main_tree8.par"));
    ipcq_close(q);
    unsetenv("IPCQ_RUNTIME_DIR");
    EXPECT_EQ(sim.stop(), 0);
    EXPECT_NE(sim.log().find("refused: tree broken.par: size 1500 is not a whole number of 1000-byte nodes"),
              std::string::npos)
        << sim.log();
    std::filesystem::remove_all(par);
}

TEST(WexdSimProgram, RefusesWhatIsNotItsOwnAndReloadsOnHangup)
{
    char pattern[] = "/tmp/wexd-sim-files-XXXXXX";
    const std::string dir = mkdtemp(pattern), twice = dir + "/twice.conf", user = dir + "/user.conf";
    std::ofstream(twice) << "role ops\nrole ops\n";
    std::ofstream(user) << "role ops\nuser alice ops network-operator\nuser bob opps\n";
    const std::string long_user = dir + "/long.conf";
    std::ofstream(long_user) << "role ops\nuser " << std::string(64, 'u') << " ops\n";
    const std::string sim = WEXD_SIM_PATH;
    const struct {
        std::vector<std::string> args;
        std::string err;
    } refusals[] = {
        {{"--config", dir}, "wexd-sim: " + dir + ": is a directory\n"},
        {{"--config", twice}, "wexd-sim: " + twice + ": line 2: role ops is already defined\n"},
        {{"--config", user}, "wexd-sim: " + user + ": line 3: user bob: role opps is not defined above\n"},
        {{"--config", long_user},
         "wexd-sim: " + long_user + ": line 2: a user needs a name of at most 63 characters\n"},
        {{"--par-dir", "/" + std::string(39, 'p')},
         "wexd-sim: /" + std::string(39, 'p') + ": longer than 39 bytes, too long for a main tree's name\n"},
    };
    for (const auto &refusal : refusals) {
        const wex_test::ToolRun run = wex_test::run_tool(sim, refusal.args, dir);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, refusal.err);
    }
    EXPECT_EQ(wex_test::run_tool(sim, {"--log-level", "loud"}, dir).status, 2);
    chmod(dir.c_str(), 0777);
    wex_test::ToolRun run = wex_test::run_tool(sim, {}, dir);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err.substr(0, run.err.find('\n') + 1),
              "ipcq: runtime directory " + dir +
                  " is open to other users (it must be mode 0700); refusing it\n");
    chmod(dir.c_str(), 0700);
    ASSERT_EQ(symlink("/tmp/elsewhere", (dir + "/fe000000.37").c_str()), 0);
    run = wex_test::run_tool(sim, {}, dir);
    EXPECT_EQ(run.err.substr(0, run.err.find('\n') + 1),
              "ipcq: queue socket " + dir + "/fe000000.37 is a symbolic link; refusing it\n");
    std::filesystem::remove_all(dir);
    EXPECT_EQ(wex_test::run_tool(sim, {"--version"}, "/nonexistent").out,
              "wexd-sim " WEX_PROJECT_VERSION "\n");

    SimProcess served("role ops\n");
    ASSERT_TRUE(served.ready());
    std::ofstream(served.runtime_dir() + "/roles.conf") << "role ops\nrole audit\n";
    kill(served.pid(), SIGHUP);
    EXPECT_TRUE(served.wait_for_log("wexd-sim: reloaded " + served.runtime_dir() +
                                    "/roles.conf (2 roles, 0 locales)"));
    EXPECT_EQ(served.stop(), 0);
    for (const auto &entry : std::filesystem::directory_iterator(served.runtime_dir()))
        EXPECT_FALSE(entry.is_socket()) << entry.path(); // every queue's socket went with it
}

} // namespace
