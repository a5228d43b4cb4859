// Every daemon request as its callers meet it: the whole exchange on the
// transport (each call with every argument), the payload bytes, the result
// and what is printed, for success and for each way the exchange can fail.
#include <wex/wexd_client.h>

#include "common/alloc_hook.h"
#include "fakes/transport_test.h"
#include "support/bytes.h"
#include "support/capture.h"
#include "support/syslog_recorder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

using namespace wex_fake;
using wex_test::Image;

namespace
{

// A request/response call with the empty texts; reply: a reply pointer given.
std::string rr(const std::string &args, bool reply = true)
{
    return "req_resp " + args + " \"\" \"\"" + (reply ? " +msg" : "");
}

// The synchronous request of opcode op from queue q to wexd.
Lines synchronous(const std::string &q, const std::string &op)
{
    return {"send " + q + " FE000000:37 " + op + " len0 flags0 opts(v1) +msg",
            "token",
            "drop",
            "recv " + q + " opts(v1 f0 t10 tok7001)",
            "size",
            "payload",
            "drop"};
}

const uint64_t kMask = 0x300000002ull;
const Bytes kMaskBytes{2, 0, 0, 0, 3, 0, 0, 0};
const std::string kLong(70, 'x');
const std::string kNoWexd = "Could not communicate with wexd\n";
const std::string kNoProcess = "Error in communicating with process\n";

// The 604-byte entry for kMask named "fc" with its functions.
Bytes interface_entry(bool with_help, uint8_t priority)
{
    Image e = Image(604).le(0, 2).le(4, 3).text(8, "fc").le(44, 2).le(48, 1);
    e.text(52, "fc_verify").text(100, "fc_list").text(148, "libfc.so").byte(600, priority);
    if (with_help)
        e.text(172, "slot").le(236, 1).le(240, 16).text(532, "Fibre").le(596, 1);
    return e;
}

int32_t register_with_help()
{
    intf_help_info help;
    wex_intf_help_info_reset(&help, "Fibre");
    wex_intf_help_info_add(&help, "slot", 1, 16);
    wex_intf_reg_info info;
    std::memset(&info, 0, sizeof info);
    info.ascii_gen_priority = 9; // the caller's own field, kept
    wex_set_intf_reg_info(&info, "fc", 2, 1, "fc_verify", "fc_list", "libfc.so", &help);
    return wex_register_interface(8, kMask, &info);
}

TEST(DaemonRequests, Registration)
{
    const std::string send900 = "send q8 FE000000:37 op900 len604 flags0 opts(v1)";
    EXPECT_EQ(observe(register_with_help), (Seen{0, {send900}, {interface_entry(true, 9)}}));
    EXPECT_EQ(observe([] {
                  return wex_register_interface2(8, kMask, "fc", 2, 1, "fc_verify", "fc_list", 7, "libfc.so");
              }),
              (Seen{0, {send900}, {interface_entry(false, 0)}}));
    EXPECT_EQ(observe({{"send", fails(EAGAIN, -3)}},
                      [] { return wex_register_interface2(8, kMask, "", 0, 0, "", "", 0, ""); }),
              (Seen{-3,
                    {send900},
                    {Image(604).le(0, 2).le(4, 3)},
                    "Not able to send interface registration to wexd\n"}));
    const std::string send901 = "send q8 FE000000:37 op901 len8 flags0 opts(v1)";
    EXPECT_EQ(observe([] { return wex_deregister_interface(8, kMask); }), (Seen{0, {send901}, {kMaskBytes}}));

    const std::string add = rr("q2 296 op7655 type3 len88 t3", false);
    const std::string remove = rr("q2 296 op7656 type3 len88 t15", false);
    const Bytes zone = Image(88).text(0, "zone"), file = Image(88).text(24, "zone.cmd");
    EXPECT_EQ(observe([] { return wex_register_parse_tree(2, "zone"); }), (Seen{0, {add}, {zone}}));
    EXPECT_EQ(observe([] { return wex_add_cmd_file(2, kLong.c_str()); }),
              (Seen{0, {add}, {Image(88).text(24, std::string(63, 'x'))}}));
    // A registration slow to be confirmed is done; a withdrawal is not.
    EXPECT_EQ(observe({{"req_resp", fails(ETIME)}}, [] { return wex_add_cmd_file(2, "zone.cmd"); }),
              (Seen{0, {add}, {file}}));
    EXPECT_EQ(observe({{"req_resp", fails(ETIME)}}, [] { return wex_rem_cmd_file(2, "zone.cmd"); }),
              (Seen{static_cast<int32_t>(0x8054003E), {remove}, {file}}));
}

TEST(DaemonRequests, StandbyRegistrationIsARawMessage)
{
    const Bytes message = Image(200).be(0, 3).be(4, 88).text(12, "clis").text(112, "zone");
    const std::string send = "send q5 FE000000:0 op7655 len200 flags0 opts(v1 standby) +msg";
    EXPECT_EQ(observe([] { return wex_register_parse_tree_standby(5, "zone"); }),
              (Seen{0, {send, "drop"}, {message}}));
    EXPECT_EQ(
        observe({{"send", fails(EPIPE, -2)}}, [] { return wex_register_parse_tree_standby(5, "zone"); }),
        (Seen{-2, {send}, {message}}));
    EXPECT_EQ(observe([] {
                  wex::alloc_hook::arm(1); // the message is the first allocation
                  const int32_t result = wex_register_parse_tree_standby(5, "zone");
                  EXPECT_TRUE(wex::alloc_hook::fired());
                  wex::alloc_hook::arm(0);
                  return result;
              }),
              (Seen{1, {}}));
}

int32_t notify_feature_change(uint32_t info_flags)
{
    auto info = std::make_unique<pinfo>();
    std::memset(info.get(), 0, sizeof *info);
    info->ipcq_q = 12;
    info->info_flags = info_flags;
    return wex_api_notify_cfg_change(info.get());
}

TEST(DaemonRequests, Notifications)
{
    const std::string change = "send q12 FE000000:0 op943 len0 flags0";
    EXPECT_EQ(observe([] { return wex_notify_cfg_update(3, 1, 2, 3); }),
              (Seen{0, {"send q3 FE000000:0 op943 len40 flags0"}, {Image(40).le(0, 1).le(4, 2).le(8, 3)}}));
    EXPECT_EQ(observe([] { return notify_feature_change(1) + wex_api_notify_cfg_change(nullptr); }),
              (Seen{0, {}})); // per-VSAN generation changes nothing
    EXPECT_EQ(observe({{"send", fails(ENOENT)}}, [] { return wex_config_change_notify(3); }),
              (Seen{static_cast<int32_t>(0x80540002), {"send q3 FE000000:0 op943 len0 flags0"}}));
    EXPECT_EQ(observe([] { return wex_announce_logout_warning(4, 0x01020304); }),
              (Seen{0, {"send q4 FE000000:0 op7699 len4 flags0"}, {{4, 3, 2, 1}}}));
    EXPECT_EQ(observe({{"send", fails(ETIME)}}, [] { return wex_announce_logout_warning(4, 0); }),
              (Seen{static_cast<int32_t>(0x805F003E),
                    {"send q4 FE000000:0 op7699 len4 flags0"},
                    {Bytes(4, 0)},
                    "",
                    "Error: Logout warning notify failed: Timer expired\n"}));
    EXPECT_EQ(observe([] { return wex_announce_abs_timeout(4, 60); }),
              (Seen{0, {"send q4 FE000000:0 op7698 len4 flags0"}, {{60, 0, 0, 0}}}));
    EXPECT_EQ(observe([] { return omx_pa_state_query(6); }),
              (Seen{0, {"send q6 FE000000:0 op175105 len0 flags0"}}));
    EXPECT_EQ(
        observe({{"send", fails(EAGAIN)}, {"errno", status(EPIPE)}}, [] { return omx_pa_state_query(6); }),
        (Seen{-1,
              {"send q6 FE000000:0 op175105 len0 flags0", "errno q6"},
              {},
              "omx_pa_state_query:398:feature/wex/lib/wex_process_api: ipcq send notify error Broken pipe "
              "\n"}));
}

Bytes settings(std::size_t offset, uint32_t value, uint32_t lead = 0)
{
    return Image(128).le(0, lead).le(offset, value);
}

Bytes lock_request(uint32_t action, uint32_t mode)
{
    return Image(12).le(0, action).le(4, 0xABCD).le(8, mode);
}

TEST(DaemonRequests, SettingsAndLock)
{
    const struct {
        std::function<int32_t()> call;
        const char *args;
        Bytes payload;
    } settings_rows[] = {
        {[] { return wexd_max_wex_sessions_set(4, 32, 7); }, "q4 37 op7661 type3 len128 t10",
         settings(88, 32, 7)},
        {[] { return wexd_session_timeout_set(4, 30, 1); }, "q4 37 op935 type3 len128 t10", settings(80, 30)},
        {[] { return wexd_term_set_length(4, 24); }, "q4 37 op7687 type3 len128 t10", settings(96, 24)},
        {[] { return wexd_switchname_set(4, kLong.c_str()); }, "q4 37 op917 type3 len128 t10",
         Image(128).text(4, std::string(63, 'x'))},
    };
    for (const auto &row : settings_rows) {
        const Seen done{0, {rr(row.args, false)}, {row.payload}};
        EXPECT_EQ(observe(row.call), done);
        EXPECT_EQ(observe({{"req_resp", status(0x40540001)}}, row.call).result, -1) << row.args;
    }
    EXPECT_EQ(observe([] {
                  return wexd_term_set_length(4, 0) + wexd_term_set_width(4, 0) +
                         wexd_switchname_set(4, nullptr) +
                         wexd_wex_configuration_set(2, nullptr, 917, 0, "", "") +
                         wex_register_interface(4, 1, nullptr);
              }),
              (Seen{-5, {}}));
    EXPECT_EQ(observe({{"req_resp", status(0x40540001)}},
                      [] {
                          wexd_wex_config config;
                          std::memset(&config, 0x11, sizeof config);
                          return wexd_wex_configuration_set(2, &config, 917, 9, "t1", nullptr);
                      }),
              (Seen{0x40540001,
                    {"req_resp q2 37 op917 type3 len128 t10 \"t1\" \"\""},
                    {Image(128, 0x11).le(0, 9)}}));

    const std::string lock = rr("q6 37 op940 type3 len12 t25");
    EXPECT_EQ(observe([] { return wexd_cli_lock(6, 0xABCD); }), (Seen{0, {lock}, {lock_request(1, 0)}}));
    EXPECT_EQ(observe({{"req_resp", fails(ETIME)}}, [] { return wexd_cli_unlock(6, 0xABCD); }),
              (Seen{static_cast<int32_t>(0x8054003E), {lock}, {lock_request(0, 0)}}));
}

Bytes role_request(uint32_t kind, std::string_view name)
{
    return Image(2352).le(0, kind).text(8, name).le(172, 512).le(888, 512);
}

// A read that hands over a heap reply: its status, with the bytes handed
// over compared to expected.
template <typename Read> int32_t read_reply(Read read, const Bytes &expected)
{
    void *buf = &buf;
    uint32_t len = 0;
    const int32_t result = read(&buf, &len);
    if (buf == &buf) // not handed over at all
        return result;
    EXPECT_EQ(Bytes(static_cast<uint8_t *>(buf), static_cast<uint8_t *>(buf) + len), expected);
    std::free(buf);
    return result;
}

int32_t read_role(uint32_t msg_type, uint32_t kind)
{
    return read_reply(
        [&](void **b, uint32_t *l) { return wexd_role_info_get(3, msg_type, kind, "ops", b, l); }, {7, 8, 9});
}

int32_t read_locale()
{
    return read_reply([](void **b, uint32_t *l) { return wexd_locale_info_get(1, 5, 3, nullptr, b, l); },
                      {5, 6});
}

TEST(DaemonRequests, RolesAndLocales)
{
    const std::string verify = rr("q9 37 op914 type1 len2352 t10");
    EXPECT_EQ(observe([] { return wexd_perm_group_role_name_verify2(9, std::string(40, 'r').c_str(), 5); }),
              (Seen{0, {rr("q9 37 op914 type5 len2352 t10")}, {role_request(0, std::string(32, 'r'))}}));
    EXPECT_EQ(observe({{"req_resp", status(0x40540009)}},
                      [] { return wexd_perm_group_role_name_verify(9, "ops"); }),
              (Seen{-1, {verify}, {role_request(0, "ops")}}));

    const std::string query = rr("q3 37 op912 type1 len2352 t10");
    EXPECT_EQ(observe({{"req_resp", replies({7, 8, 9})}}, [] { return read_role(1, 7); }),
              (Seen{0, {query}, {role_request(7, "ops")}}));
    // The all-roles query with a name asks for that role alone.
    EXPECT_EQ(observe({{"req_resp", replies({7, 8, 9})}}, [] { return read_role(5, 8195); }),
              (Seen{0, {rr("q3 37 op912 type5 len2352 t10")}, {role_request(8195, "ops")}}));
    EXPECT_EQ(observe({{"req_resp", fails(EIO)}}, [] { return read_role(1, 7); }),
              (Seen{51, {query}, {role_request(7, "ops")}}));

    const std::string locale = rr("q1 37 op7700 type1 len204 t10");
    const Bytes full = Image(204).text(8, std::string(64, 'x')); // the whole field, no terminator
    EXPECT_EQ(observe([] { return wexd_perm_locale_name_verify(1, std::string(64, 'x').c_str()); }),
              (Seen{0, {locale}, {full}}));
    EXPECT_EQ(
        observe({{"req_resp", status(0x40540048)}}, [] { return wexd_perm_locale_name_verify(1, "fr"); }),
        (Seen{-1, {locale}, {Image(204).text(8, "fr")}}));
    EXPECT_EQ(observe({{"req_resp", fails(EIO)}},
                      [] {
                          return wexd_perm_locale_name_verify(1, kLong.c_str()) +
                                 wexd_perm_locale_name_verify(1, nullptr);
                      }),
              (Seen{-2, {locale}, {full}, kNoProcess}));
    const std::string info = rr("q1 37 op7701 type5 len204 t10");
    EXPECT_EQ(observe({{"req_resp", Answer{0x40540048, 0, Bytes{1}}}}, read_locale),
              (Seen{0x40540048, {info}, {Image(204).le(0, 3)}}));
}

// A role reply of size bytes naming a role at bytes 4 to 35.
Bytes role_reply(const std::string &name, std::size_t size)
{
    Image reply(size, 0x11);
    if (size >= 36)
        reply.text(4, std::string(32, '\0')).text(4, name);
    return reply;
}

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes &part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

int32_t gather_roles(uint32_t msg_type, const Bytes &expected)
{
    return read_reply(
        [&](void **b, uint32_t *l) { return wexd_role_info_get(3, msg_type, 8195, nullptr, b, l); },
        expected);
}

TEST(DaemonRequests, AllRolesAreGatheredOneReplyAfterAnother)
{
    const auto query = [](int type) {
        return rr("q3 37 op912 type" + std::to_string(type) + " len2352 t10");
    };
    const auto after = [](std::string_view role) { return role_request(8195, role); };
    const Bytes alpha = role_reply("alpha", 40), beta = role_reply("beta", 36), tail(10, 0x22);
    EXPECT_EQ(observe({{"req_resp", replies(alpha)}, {"req_resp", replies(beta)}, {"req_resp", Answer{}}},
                      [&] {
                          return gather_roles(5, joined({alpha, beta}));
                      }),
              (Seen{0, {query(5), query(6), query(6)}, {after(""), after("alpha"), after("beta")}}));
    // A reply too short to name a role is kept, and the walk ends.
    EXPECT_EQ(observe({{"req_resp", replies(alpha)}, {"req_resp", replies(tail)}},
                      [&] {
                          return gather_roles(1, joined({alpha, tail}));
                      }),
              (Seen{0, {query(1), query(2)}, {after(""), after("alpha")}}));
    EXPECT_EQ(observe({{"req_resp", replies(alpha)}, {"req_resp", fails(ETIME)}},
                      [] { return gather_roles(1, {}); }),
              (Seen{51, {query(1), query(2)}, {after(""), after("alpha")}}));
    // Gathering stops before the reply that would pass one mebibyte.
    const Bytes big = role_reply("big", 1024 * 1024 - 40), fits = role_reply("fits", 40);
    EXPECT_EQ(observe({{"req_resp", replies(big)},
                       {"req_resp", replies(fits)},
                       {"req_resp", replies(role_reply("over", 36))}},
                      [&] {
                          return gather_roles(1, joined({big, fits}));
                      }),
              (Seen{0,
                    {query(1), query(2), query(2)},
                    {after(""), after("big"), after("fits")},
                    "Warning: the output may not have all the roles\n"}));
    EXPECT_EQ(observe([] {
                  wex::alloc_hook::arm(1); // no room to gather into: nothing is asked
                  const int32_t result = gather_roles(1, {});
                  wex::alloc_hook::arm(0);
                  return result;
              }),
              (Seen{51, {}}));
}

Bytes interface_table(int32_t last_index)
{
    return Image(sizeof(intf_table)).le(offsetof(intf_table, last_index), static_cast<uint32_t>(last_index));
}

int32_t read_interface_table()
{
    auto *entries = reinterpret_cast<intf_table_entry *>(1);
    const int32_t count = wexd_interface_table_get(4, &entries);
    if (count > 0)
        std::free(entries);
    else
        EXPECT_EQ(entries, count == 0 ? nullptr : reinterpret_cast<intf_table_entry *>(1));
    return count;
}

int32_t read_config_record()
{
    wexd_wex_config *config = reinterpret_cast<wexd_wex_config *>(1);
    const int32_t result = wexd_wex_configuration_get(3, &config);
    EXPECT_STREQ(config ? config->switchname : "<none>", result == 0 ? "edge-1" : "<none>");
    std::free(config);
    return result;
}

// The synchronous read into a record whose length is 7 beforehand.
int32_t read_config_synchronously(uint32_t expected_length)
{
    wexd_wex_config info;
    info.term_length = 7;
    const int32_t result = wexd_wex_config_info_get(3, &info);
    EXPECT_EQ(info.term_length, expected_length);
    return result;
}

std::string read_file_name(const Answer &answer)
{
    char name[WEX_FILE_NAME_SIZE] = "old";
    const Seen seen =
        observe({{"req_resp", answer}}, [&] { return wexd_wex_dynamic_parfile_name_get(3, name); });
    EXPECT_EQ(seen.lines, Lines{rr("q3 37 op7658 type1 len0 t10")});
    return std::to_string(seen.result) + " " + name;
}

TEST(DaemonRequests, ReadsHandOverOnlyWholeRecords)
{
    const Lines table = synchronous("q4", "op905");
    EXPECT_EQ(observe({{"recv", replies(interface_table(1))}}, read_interface_table), (Seen{2, table}));
    EXPECT_EQ(observe({{"send", fails(ECONNREFUSED)}}, read_interface_table),
              (Seen{-1, {table[0]}, {}, kNoWexd}));
    EXPECT_EQ(observe({{"recv", fails(ETIME)}}, read_interface_table),
              (Seen{-1, Lines(table.begin(), table.begin() + 4), {}, kNoWexd}));
    const Bytes short_table(sizeof(intf_table) - 1, 0);
    for (const Answer &bad :
         {Answer{}, replies(short_table), replies(interface_table(24)), replies(interface_table(-2))})
        EXPECT_EQ(observe({{"recv", bad}}, read_interface_table), (Seen{-1, table, {}, kNoWexd}));

    const Lines config = {rr("q3 37 op916 type1 len0 t10")};
    EXPECT_EQ(observe({{"req_resp", replies(Image(124).text(0, "edge-1"))}}, read_config_record),
              (Seen{0, config}));
    for (const Answer &bad : {replies(Bytes(123, 0)), fails(EIO), Answer{}})
        EXPECT_EQ(observe({{"req_resp", bad}}, read_config_record), (Seen{-1, config}));
    EXPECT_EQ(observe({{"recv", replies(Image(130, 0x22).le(92, 24))}},
                      [] { return read_config_synchronously(24); }),
              (Seen{0, synchronous("q3", "op916")}));
    EXPECT_EQ(observe({{"recv", replies(Bytes(123, 0x33))}}, [] { return read_config_synchronously(7); }),
              (Seen{-1, synchronous("q3", "op916")}));

    EXPECT_EQ(read_file_name(replies({'d', '3', 0, 'x'})), "0 d3");
    Bytes fits(63, 'p');
    EXPECT_EQ(read_file_name(replies(fits)), "-1 old"); // no terminator in the reply
    fits.push_back(0);
    EXPECT_EQ(read_file_name(replies(fits)), "0 " + std::string(63, 'p'));
}

int32_t read_tree_table()
{
    tree_table *trees = reinterpret_cast<tree_table *>(1);
    const int32_t result = wexd_tree_table_get(2, &trees);
    EXPECT_EQ(trees == nullptr, result != 0);
    std::free(trees);
    return result;
}

Bytes range_message(std::string_view name, uint32_t lower, uint32_t upper)
{
    return Image(108).text(0, name).le(100, lower).le(104, upper);
}

int32_t register_subtype(int32_t code)
{
    const int32_t range[2] = {1, 2};
    return wexd_param_subtype_register(7, code, range);
}

TEST(DaemonRequests, SubtypesRangesAndTrees)
{
    const std::string send = "send q7 FE000000:296 op947 len108 flags0";
    const Bytes port = range_message("<ficon-port-addr>", 1, 2),
                hex = range_message("<ficon-port-addr-hex>", 1, 2);
    EXPECT_EQ(observe([] { return register_subtype(-2); }), (Seen{0, {send, send}, {port, hex}}));
    EXPECT_EQ(observe({{"send", fails(EAGAIN)}}, [] { return register_subtype(-2); }),
              (Seen{0x40540001, {send, send}, {port, hex}}));
    EXPECT_EQ(observe([] { return register_subtype(-3); }).payloads,
              (std::vector<Bytes>{range_message("<ficon-log-if>", 1, 2),
                                  range_message("<ficon-log-if-hex>", 1, 2)}));
    EXPECT_EQ(observe([] { return register_subtype(-9) == 0x40540001 ? register_subtype(1) : 0; }),
              (Seen{0x40540001,
                    {},
                    {},
                    "ERROR: non existing param subtype"
                    "ERROR: non existing param subtype"}));

    wex_test::syslog_lines().clear();
    const int32_t five = 5, six = 6, minus = -5;
    EXPECT_EQ(observe([&] {
                  return wexd_set_dynamic_integer_range(7, std::string(120, 'n').c_str(), &minus, &six);
              }),
              (Seen{0, {send}, {range_message(std::string(99, 'n'), -5u, 6)}}));
    EXPECT_EQ(observe({{"send", fails(EAGAIN, -2)}},
                      [&] {
                          const int64_t sum =
                              int64_t{wexd_set_dynamic_integer_range(7, "<module>", &five, &six)} +
                              wexd_set_dynamic_integer_range(7, "<module>", &six, &five) +
                              wexd_set_dynamic_integer_range(7, nullptr, &five, &six) +
                              wexd_set_dynamic_integer_range(7, "<module>", nullptr, &five);
                          return static_cast<int32_t>(sum - 3 * int64_t{0x40540001});
                      }),
              (Seen{0x40540001, {send}, {range_message("<module>", 5, 6)}}));
    const std::string notice = "Call to wexd_set_dynamic_integer_range, setting ";
    const std::string invalid =
        "ERROR, the name, the lower or the upper value of the subtype are not correct";
    const std::vector<wex_test::LogLine> log = {
        {5, notice + std::string(120, 'n')},
        {5, notice + "<module>"},
        {3, "ERROR, ipcq_send failed, ERROR = -2, ERRNO = 11\n"},
        {5, notice + "<module>"},
        {3, "ERROR, the lower bound value of the dynamic range is higher that the upper bound value"},
        {5, notice + "(null)"},
        {3, invalid},
        {5, notice + "<module>"},
        {3, invalid},
    };
    EXPECT_EQ(wex_test::syslog_lines(), log);

    EXPECT_EQ(observe({{"req_resp", replies({1, 2, 3})}},
                      [] {
                          return read_reply(
                              [](void **b, uint32_t *) { return wexd_param_subtype_table_get(2, b); }, {});
                      }),
              (Seen{0, {rr("q2 37 op948 type1 len0 t10")}}));
    const Lines trees = {rr("q2 37 op938 type1 len0 t10")};
    EXPECT_EQ(observe({{"req_resp", replies(Bytes(sizeof(tree_table), 0))}}, read_tree_table),
              (Seen{0, trees}));
    EXPECT_EQ(observe({{"req_resp", replies(Bytes(sizeof(tree_table) - 1, 0))}}, read_tree_table),
              (Seen{-1, trees}));
    EXPECT_EQ(
        observe([] { return wexd_tree_table_get(2, nullptr) + wexd_param_subtype_table_get(2, nullptr); }),
        (Seen{-2, {}})); // nowhere to put the reply: nothing is asked
    const Lines generate = {rr("q2 37 op937 type1 len0 t10")};
    const auto generate_main_tree = [] { return wexd_generate_main_tree(2); };
    EXPECT_EQ(observe({{"req_resp", replies(Image(8).le(0, 42))}}, generate_main_tree), (Seen{42, generate}));
    for (const Answer &bad : {replies({1, 2, 3}), Answer{}, fails(EIO)})
        EXPECT_EQ(observe({{"req_resp", bad}}, generate_main_tree), (Seen{-1, generate}));
}

TEST(DaemonRequests, SendOptionsPopulationClearsOnlyItsBytes)
{
    Bytes options(68, 0xAB);
    auto *record = reinterpret_cast<ipcq_send_options *>(options.data());
    EXPECT_EQ(populate_ipcq_send_options(record), record);
    EXPECT_EQ(options, Bytes(Image(68, 0xAB).text(4, std::string(24, '\0'))));
    EXPECT_EQ(populate_ipcq_send_options(nullptr), nullptr);
}

TEST(DaemonRequests, EventHistoryPrintsHeaderThenTextOrUnknown)
{
    const uint32_t time_s = 1795386605; // 2026-11-22 22:30:05 UTC
    EXPECT_EQ(wex_test::capture_stdout([&] {
                  EXPECT_EQ(wexd_hist_print_event("lock taken", 2, 0x80280005, 4, 5, time_s), 0);
                  wexd_hist_print_event("beat", 0, 0x280000, 0, 0, 0);
                  wexd_hist_print_event("x", 1, 0x280006, 2, 3, time_s);
                  wexd_hist_print_event("x", 1, 0x27FFFF, 2, 3, time_s);
                  EXPECT_EQ(wexd_hist_print_event(nullptr, 1, 0x280001, 2, 3, 4), 1);
              }),
              "2026-11-22 22:30:05 E_WEXD_LOCK 2 4 5\n    lock taken\n"
              "1970-01-01 00:00:00 E_WEXD_HEARTBEAT 0 0 0\n    beat\n"
              "2026-11-22 22:30:05 E_WEXD_UNKNOWN 1 2 3\nUnknown Event\n"
              "2026-11-22 22:30:05 E_WEXD_UNKNOWN 1 2 3\nUnknown Event\n"
              "NULL buffer pointer\n");
    EXPECT_EQ(wait_for_chassis_box_online(), 0);
}

} // namespace
