// Roles: the built-in tables, lookups and record builders, the name
// verification and the role query, observed through the recording transport.
#include <wex/wexd_client.h>

#include "common/alloc_hook.h"
#include "daemon/wire_bytes.h"
#include "fakes/transport_fake.h"
#include "fakes/transport_test.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::replies;
using wex_fake::transport;
using wex_test::capture_stdout;
using wex_test::put_text;

namespace
{

constexpr int32_t kRoleUnknown = 0x40540009;

class RolesTest : public wex_fake::TransportTest
{
  protected:
    void SetUp() override
    {
        TransportTest::SetUp();
        unsetenv("WARDEN_KEL_ID");
    }
    void TearDown() override
    {
        unsetenv("WARDEN_KEL_ID");
        TransportTest::TearDown();
    }
};

// A role request record as init leaves it, with the name and query kind.
Bytes request_bytes(uint32_t query_kind, const std::string &name)
{
    Bytes bytes = wex_test::zeros(2352);
    wex_test::put_u32(bytes, 0, query_kind);
    put_text(bytes, 8, name);
    wex_test::put_u32(bytes, 172, 512);
    wex_test::put_u32(bytes, 888, 512);
    return bytes;
}

// A role reply: its length, with a role name at bytes 4 to 35.
Bytes role_reply(const std::string &name, std::size_t size)
{
    Bytes bytes(size, 0x11);
    if (size >= 36) {
        std::fill(bytes.begin() + 4, bytes.begin() + 36, 0);
        put_text(bytes, 4, name);
    }
    return bytes;
}

TEST_F(RolesTest, BuiltInTablesAndLookups)
{
    ASSERT_EQ(wexd_static_perm_group_table_size, 4u);
    EXPECT_STREQ(wexd_static_perm_group_table[3].name, "svc-operator");
    EXPECT_STREQ(wexd_static_perm_group_table[1].details,
                 "Access to Show commands and selected Exec commands");
    for (const char *name : {"network-admin", "network-operator", "kel-admin", "kel-operator", "dev-ops"})
        EXPECT_EQ(wex_lib_is_static_role(name), 1) << name;
    for (const char *name : {"svc-admin", "Network-admin", "dev-ops ", ""})
        EXPECT_EQ(wex_lib_is_static_role(name), 0) << name;
    EXPECT_EQ(wex_lib_is_static_role(nullptr), 0);
    EXPECT_EQ(wexd_static_perm_group_locate_entry_by_name(wexd_static_perm_group_table, 4, "svc-operator"),
              4);
    EXPECT_EQ(wexd_static_perm_group_locate_entry_by_name(wexd_static_perm_group_table, 4, "SVC-operator"),
              -1);
    EXPECT_EQ(wexd_static_perm_group_locate_entry_by_name(wexd_static_perm_group_table, 0, "network-admin"),
              -1);

    wexd_perm_group_entry roles[4];
    std::memset(roles, 0, sizeof roles);
    std::memset(roles[0].name, 'a', sizeof roles[0].name); // fills its field, no terminator
    std::strcpy(roles[1].name, "beta");
    std::strcpy(roles[2].name, "GammaRole");
    std::strcpy(roles[3].name, "beta");
    const uint32_t valid[] = {1, 0, 2, 1};
    for (int i = 0; i < 4; ++i)
        roles[i].valid = valid[i];
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 4, std::string(32, 'A').c_str()), 1);
    EXPECT_EQ(wexd_perm_group_locate_case_sensitive_entry_by_name(roles, 4, std::string(32, 'a').c_str()), 1);
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 4, std::string(31, 'a').c_str()), -1);
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 4, "gammarole"), 3);
    EXPECT_EQ(wexd_perm_group_locate_case_sensitive_entry_by_name(roles, 4, "gammarole"), -1);
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 4, "beta"), 4); // the invalid slot is skipped
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 3, "beta"), -1);

    EXPECT_EQ(wexd_perm_group_next_role_num_get(roles, 0, 4), 1);
    EXPECT_EQ(wexd_perm_group_next_role_num_get(roles, 1, 4), 4); // valid flag 2 is not a role of the walk
    EXPECT_EQ(wexd_perm_group_next_role_num_get(roles, 4, 4), -1);
    EXPECT_EQ(wexd_perm_group_next_role_num_get(roles, -1, 4), -1);

    for (int i = 0; i < WEXD_ROLE_MAX_RULES; ++i)
        roles[0].rules[i].absent = i == 3;
    roles[0].rule_count = 4;
    EXPECT_EQ(wexd_perm_group_max_rule_id_get(&roles[0]), 3);
    roles[0].rule_count = 40; // damaged: held to the 16 slots
    EXPECT_EQ(wexd_perm_group_max_rule_id_get(&roles[0]), 16);
    roles[0].rule_count = 0;
    EXPECT_EQ(wexd_perm_group_max_rule_id_get(&roles[0]), 0);
    EXPECT_EQ(wexd_perm_group_next_rule_id_get(), -1);
    EXPECT_EQ(wexd_perm_group_table_get(), nullptr);
}

TEST_F(RolesTest, RecordBuilders)
{
    wexd_perm_group_conf_entry rule, copy;
    std::memset(&rule, 0x77, sizeof rule);
    rule.absent = 7;
    ASSERT_EQ(wexd_perm_group_conf_entry_populate(&rule, 2, 5, nullptr, 1), 0);
    EXPECT_EQ(rule.rule_type, 2);
    EXPECT_EQ(rule.cmd_type, 5);
    EXPECT_STREQ(rule.feature, "");
    EXPECT_EQ(rule.all_features, 1);
    EXPECT_EQ(rule.absent, 7);
    wexd_perm_group_conf_entry_populate(&rule, 1, 4, std::string(40, 'f').c_str(), 0);
    EXPECT_EQ(std::string(rule.feature), std::string(31, 'f'));
    copy.absent = 0;
    ASSERT_EQ(wexd_perm_group_conf_entry_copy(&copy, &rule), 0);
    EXPECT_EQ(std::memcmp(&copy, &rule, offsetof(wexd_perm_group_conf_entry, absent)), 0);
    EXPECT_EQ(copy.absent, 0);
    EXPECT_EQ(wexd_perm_group_conf_entry_copy(&copy, nullptr), -1);
    EXPECT_EQ(wexd_perm_group_conf_entry_populate(nullptr, 1, 1, "", 0), -1);

    wexd_perm_group_conf_cli_wrapper request;
    std::memset(&request, 0xFF, sizeof request);
    wexd_perm_group_conf_cli_wrapper_init(&request);
    EXPECT_EQ(wex_test::bytes_of_record(request), request_bytes(0, ""));
    wexd_role_comp_group_conf_cli_wrapper comp;
    std::memset(&comp, 0xFF, sizeof comp);
    wexd_role_comp_group_conf_cli_wrapper_init(&comp);
    EXPECT_EQ(wex_test::bytes_of_record(comp), wex_test::zeros(76));

    wexd_role_rule_entry_msg msg;
    uint8_t raw[129];
    for (int i = 0; i < 129; ++i)
        raw[i] = static_cast<uint8_t>(i + 1);
    ASSERT_EQ(wexd_role_rule_entry_msg_populate(&msg, 1, 2, 3, 21, raw), 0);
    Bytes expected = wex_test::words_then_zeros({1, 2, 3, 21}, 148);
    std::copy(raw, raw + 129, expected.begin() + 16);
    EXPECT_EQ(wex_test::bytes_of_record(msg), expected);
    wexd_role_rule_entry_msg_populate(&msg, 4, 5, 6, 3, std::string(200, 't').c_str());
    expected = wex_test::words_then_zeros({4, 5, 6, 3}, 148);
    put_text(expected, 16, std::string(128, 't'));
    EXPECT_EQ(wex_test::bytes_of_record(msg), expected);
    wexd_role_rule_entry_msg_populate(&msg, 0, 0, 0, 3, nullptr);
    EXPECT_EQ(wex_test::bytes_of_record(msg), wex_test::words_then_zeros({0, 0, 0, 3}, 148));
}

TEST_F(RolesTest, BuiltInNamesAreVerifiedByContextWithoutARequest)
{
    const struct {
        const char *context;
        const char *name;
        uint32_t msg_type;
        int32_t result;
    } cases[] = {
        {nullptr, "network-admin", 1, 0},  {nullptr, "kel-admin", 5, 0},     {"2", "network-admin", 1, -1},
        {"2", "network-operator", 5, -1},  {"2", "kel-admin", 1, 0},         {"2", "dev-ops", 1, 0},
        {"65537", "network-admin", 1, 0},  {"0", "network-operator", 1, -1}, {"3", "network-admin", 5, -1},
        {nullptr, "network-admin", 2, -1}, {nullptr, "ops", 3, -1},          {nullptr, nullptr, 1, -1},
    };
    for (const auto &c : cases) {
        if (c.context)
            setenv("WARDEN_KEL_ID", c.context, 1);
        else
            unsetenv("WARDEN_KEL_ID");
        EXPECT_EQ(wexd_perm_group_role_name_verify2(9, c.name, c.msg_type), c.result)
            << (c.context ? c.context : "unset") << " " << (c.name ? c.name : "null") << " " << c.msg_type;
    }
    EXPECT_TRUE(transport().calls().empty());
}

TEST_F(RolesTest, ConfiguredNamesAreAskedOfWexd)
{
    transport().script("bcp_req_resp", replies(Bytes{1, 2, 3}));
    EXPECT_EQ(wexd_perm_group_role_name_verify2(9, "ops", 5), 0);
    transport().script("bcp_req_resp", wex_fake::Answer{kRoleUnknown, 0, std::nullopt});
    transport().script("bcp_req_resp", fails(ETIME));
    transport().script("bcp_req_resp", wex_fake::Answer{0x40540001, 0, std::nullopt});
    EXPECT_EQ(capture_stdout([] {
                  EXPECT_EQ(wexd_perm_group_role_name_verify(9, std::string(40, 'r').c_str()), -1);
                  EXPECT_EQ(wexd_perm_group_role_name_verify(9, "ops"), -1);
                  EXPECT_EQ(wexd_perm_group_role_name_verify(9, "ops"), -1);
              }),
              "Error in communicating with process\nError in communicating with process\n");

    const auto calls = transport().calls_of("bcp_req_resp");
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(calls[0].payload, request_bytes(0, "ops"));
    EXPECT_EQ(calls[1].payload, request_bytes(0, std::string(32, 'r')));
    const uint32_t types[] = {5, 1, 1, 1};
    for (std::size_t i = 0; i < calls.size(); ++i) {
        EXPECT_EQ(calls[i].opcode, 914u);
        EXPECT_EQ(calls[i].msg_type, types[i]);
        EXPECT_EQ(calls[i].dest_queue, 37u);
        EXPECT_EQ(calls[i].timeout, 10u);
        EXPECT_EQ(calls[i].length, 2352u);
        EXPECT_TRUE(calls[i].handle_given);
        EXPECT_EQ(calls[i].q, 9);
    }
}

TEST_F(RolesTest, OneRoleQueryHandsOverTheReply)
{
    transport().script("bcp_req_resp", replies(Bytes{7, 8, 9}));
    void *buf = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(wexd_role_info_get(3, 1, 7, "ops", &buf, &len), 0);
    ASSERT_EQ(len, 3u);
    EXPECT_EQ(Bytes(static_cast<uint8_t *>(buf), static_cast<uint8_t *>(buf) + 3), (Bytes{7, 8, 9}));
    std::free(buf);
    // WEXD_ROLE_QUERY_ALL with a name asks for that role alone.
    EXPECT_EQ(wexd_role_info_get(3, 5, 8195, "ops", &buf, &len), 0);
    EXPECT_EQ(len, 0u);
    EXPECT_EQ(buf, nullptr);

    const auto calls = transport().calls_of("bcp_req_resp");
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].opcode, 912u);
    EXPECT_EQ(calls[0].msg_type, 1u);
    EXPECT_EQ(calls[0].timeout, 10u);
    EXPECT_EQ(calls[0].payload, request_bytes(7, "ops"));
    EXPECT_EQ(calls[1].msg_type, 5u);
    EXPECT_EQ(calls[1].payload, request_bytes(8195, "ops"));

    void *untouched = &len;
    transport().script("bcp_req_resp", fails(EIO));
    EXPECT_EQ(wexd_role_info_get(3, 1, 7, "ops", &untouched, &len), 51);
    transport().script("bcp_req_resp", wex_fake::Answer{kRoleUnknown, 0, Bytes{1}});
    EXPECT_EQ(wexd_role_info_get(3, 1, 7, "ops", &untouched, &len), kRoleUnknown);
    EXPECT_EQ(untouched, &len);
    EXPECT_EQ(wexd_role_info_get(3, 1, 7, "ops", nullptr, &len), -1);
}

struct WalkResult {
    int32_t result;
    Bytes gathered;
    uint32_t len;
    std::string out;
};

WalkResult walk(uint32_t msg_type, const std::vector<wex_fake::Answer> &answers)
{
    for (const auto &answer : answers)
        transport().script("bcp_req_resp", answer);
    WalkResult walk{};
    void *buf = &walk;
    walk.out = capture_stdout(
        [&] { walk.result = wexd_role_info_get(3, msg_type, 8195, nullptr, &buf, &walk.len); });
    if (buf != &walk) {
        walk.gathered.assign(static_cast<uint8_t *>(buf), static_cast<uint8_t *>(buf) + walk.len);
        std::free(buf);
    }
    return walk;
}

Bytes joined(const Bytes &a, const Bytes &b)
{
    Bytes both = a;
    both.insert(both.end(), b.begin(), b.end());
    return both;
}

TEST_F(RolesTest, AllRolesAreGatheredOneReplyAfterAnother)
{
    const Bytes alpha = role_reply("alpha", 40), beta = role_reply("beta", 36);
    WalkResult w = walk(5, {replies(alpha), replies(beta), wex_fake::Answer{}});
    EXPECT_EQ(w.result, 0);
    EXPECT_EQ(w.gathered, joined(alpha, beta));
    EXPECT_EQ(w.out, "");
    auto calls = transport().calls_of("bcp_req_resp");
    ASSERT_EQ(calls.size(), 3u);
    const char *names[] = {"", "alpha", "beta"};
    const uint32_t types[] = {5, 6, 6};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(calls[i].payload, request_bytes(8195, names[i]));
        EXPECT_EQ(calls[i].msg_type, types[i]);
        EXPECT_EQ(calls[i].opcode, 912u);
    }

    transport().reset();
    w = walk(1, {replies(alpha), replies(Bytes(10, 0x22))});
    EXPECT_EQ(w.result, 0); // a reply too short to name a role is kept and ends the walk
    EXPECT_EQ(w.gathered, joined(alpha, Bytes(10, 0x22)));
    calls = transport().calls_of("bcp_req_resp");
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[1].msg_type, 2u);

    transport().reset();
    w = walk(1, {replies(alpha), fails(ETIME)});
    EXPECT_EQ(w.result, 51);
    EXPECT_TRUE(w.gathered.empty()); // no buffer handed out
    transport().reset();
    w = walk(1, {wex_fake::Answer{0x40540001, 0, std::nullopt}});
    EXPECT_EQ(w.result, 0x40540001);
    EXPECT_TRUE(w.gathered.empty());

    // No room to gather into: nothing is asked and nothing handed out.
    transport().reset();
    void *untouched = &w;
    uint32_t len = 0;
    wex::alloc_hook::arm(1);
    const int32_t result = wexd_role_info_get(3, 1, 8195, nullptr, &untouched, &len);
    wex::alloc_hook::arm(0);
    EXPECT_EQ(result, 51);
    EXPECT_EQ(untouched, &w);
    EXPECT_TRUE(transport().calls().empty());
}

TEST_F(RolesTest, GatheringStopsBeforeTheReplyThatWouldPassOneMebibyte)
{
    const Bytes big = role_reply("big", 1024 * 1024 - 40), fits = role_reply("fits", 40);
    WalkResult w = walk(1, {replies(big), replies(fits), replies(role_reply("over", 36))});
    EXPECT_EQ(w.result, 0);
    EXPECT_EQ(w.len, 1024u * 1024u);
    EXPECT_EQ(w.gathered, joined(big, fits));
    EXPECT_EQ(w.out, "Warning: the output may not have all the roles\n");
    EXPECT_EQ(transport().calls_of("bcp_req_resp").size(), 3u);
}

} // namespace
