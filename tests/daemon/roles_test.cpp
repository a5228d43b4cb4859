// Roles: built-in groups, lookups, record builders, verification by
// context, and their text forms.
#include <wex/wexd_client.h>

#include "fakes/transport_fake.h"
#include "support/bytes.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using wex_fake::Bytes;
using wex_fake::transport;
using wex_test::capture_buffered;
using wex_test::capture_stdout;
using wex_test::Image;

namespace
{

wexd_perm_group_conf_entry rule(int32_t type, int32_t cmd, const char *feature, int32_t all,
                                int32_t absent = 0)
{
    wexd_perm_group_conf_entry r;
    std::memset(&r, 0x77, sizeof r);
    wexd_perm_group_conf_entry_populate(&r, type, cmd, feature, all);
    r.absent = absent;
    return r;
}

TEST(Roles, LookupsMatchTheirCaseRuleAndSkipInvalidSlots)
{
    EXPECT_EQ(wexd_static_perm_group_table_size, 4u);
    EXPECT_STREQ(wexd_static_perm_group_table[3].name, "svc-operator");
    for (const char *name : {"network-admin", "network-operator", "kel-admin", "kel-operator", "dev-ops"})
        EXPECT_EQ(wex_lib_is_static_role(name), 1) << name;
    for (const char *name :
         {"svc-admin", "Network-admin", "dev-ops ", "", static_cast<const char *>(nullptr)})
        EXPECT_EQ(wex_lib_is_static_role(name), 0) << (name ? name : "null");
    const auto *fixed = wexd_static_perm_group_table;
    EXPECT_EQ(wexd_static_perm_group_locate_entry_by_name(fixed, 4, "svc-operator"), 4);
    EXPECT_EQ(wexd_static_perm_group_locate_entry_by_name(fixed, 4, "SVC-operator"), -1);
    EXPECT_EQ(wexd_static_perm_group_locate_entry_by_name(fixed, 0, "network-admin"), -1);

    wexd_perm_group_entry roles[4];
    std::memset(roles, 0, sizeof roles);
    std::memset(roles[0].name, 'a', sizeof roles[0].name); // fills its field, no terminator
    std::strcpy(roles[1].name, "beta");
    std::strcpy(roles[2].name, "GammaRole");
    std::strcpy(roles[3].name, "beta");
    const uint32_t valid[] = {1, 0, 2, 1};
    for (int i = 0; i < 4; ++i)
        roles[i].valid = valid[i];
    const std::string a32(32, 'a'), A32(32, 'A');
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 4, A32.c_str()), 1);
    EXPECT_EQ(wexd_perm_group_locate_case_sensitive_entry_by_name(roles, 4, a32.c_str()), 1);
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 4, a32.substr(1).c_str()), -1);
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 4, "gammarole"), 3);
    EXPECT_EQ(wexd_perm_group_locate_case_sensitive_entry_by_name(roles, 4, "gammarole"), -1);
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 4, "beta"), 4);
    EXPECT_EQ(wexd_perm_group_locate_entry_by_name(roles, 3, "beta"), -1);
    const int32_t next[][2] = {{0, 1}, {1, 4}, {4, -1}, {-1, -1}}; // valid flag 2 is no role of the walk
    for (const auto &n : next)
        EXPECT_EQ(wexd_perm_group_next_role_num_get(roles, n[0], 4), n[1]) << n[0];

    for (int i = 0; i < WEXD_ROLE_MAX_RULES; ++i)
        roles[0].rules[i].absent = i == 3;
    const int32_t max_rule[][2] = {{4, 3}, {40, 16}, {0, 0}}; // a damaged count is held to the 16 slots
    for (const auto &m : max_rule) {
        roles[0].rule_count = m[0];
        EXPECT_EQ(wexd_perm_group_max_rule_id_get(&roles[0]), m[1]) << m[0];
    }
    EXPECT_EQ(wexd_perm_group_next_rule_id_get(), -1);
    EXPECT_EQ(wexd_perm_group_table_get(), nullptr);
}

TEST(Roles, RecordBuildersFillTheirDocumentedBytes)
{
    wexd_perm_group_conf_entry r = rule(1, 4, std::string(40, 'f').c_str(), 0, 7);
    EXPECT_EQ(wex_test::bytes_of(r),
              Bytes(Image(48).le(0, 1).le(4, 4).text(8, std::string(31, 'f')).le(44, 7)));
    wexd_perm_group_conf_entry copy;
    copy.absent = 0;
    ASSERT_EQ(wexd_perm_group_conf_entry_copy(&copy, &r), 0);
    EXPECT_EQ(wex_test::bytes_of(copy), Bytes(Image(48).le(0, 1).le(4, 4).text(8, std::string(31, 'f'))));
    EXPECT_EQ(wexd_perm_group_conf_entry_copy(&copy, nullptr), -1);
    EXPECT_EQ(wexd_perm_group_conf_entry_populate(nullptr, 1, 1, "", 0), -1);

    wexd_perm_group_conf_cli_wrapper request;
    std::memset(&request, 0xFF, sizeof request);
    wexd_perm_group_conf_cli_wrapper_init(&request);
    EXPECT_EQ(wex_test::bytes_of(request), Bytes(Image(2352).le(172, 512).le(888, 512)));
    wexd_role_comp_group_conf_cli_wrapper comp;
    std::memset(&comp, 0xFF, sizeof comp);
    wexd_role_comp_group_conf_cli_wrapper_init(&comp);
    EXPECT_EQ(wex_test::bytes_of(comp), Bytes(76, 0));

    wexd_role_rule_entry_msg msg;
    ASSERT_EQ(wexd_role_rule_entry_msg_populate(&msg, 4, 5, 6, 3, std::string(200, 't').c_str()), 0);
    EXPECT_EQ(wex_test::bytes_of(msg),
              Bytes(Image(148).le(0, 4).le(4, 5).le(8, 6).le(12, 3).text(16, std::string(128, 't'))));
    wexd_role_rule_entry_msg_populate(&msg, 0, 0, 0, 3, nullptr);
    EXPECT_EQ(wex_test::bytes_of(msg), Bytes(Image(148).le(12, 3)));
}

TEST(Roles, BuiltInNamesAreVerifiedByContextWithoutARequest)
{
    transport().reset();
    const struct {
        const char *context, *name;
        uint32_t msg_type;
        int32_t result;
    } cases[] = {
        {nullptr, "network-admin", 1, 0}, {"2", "network-admin", 1, -1}, {"2", "kel-admin", 1, 0},
        {"65537", "network-admin", 1, 0}, {"3", "network-admin", 5, -1}, {nullptr, "network-admin", 2, -1},
        {nullptr, nullptr, 1, -1},
    };
    for (const auto &c : cases) {
        c.context ? setenv("WARDEN_KEL_ID", c.context, 1) : unsetenv("WARDEN_KEL_ID");
        EXPECT_EQ(wexd_perm_group_role_name_verify2(9, c.name, c.msg_type), c.result)
            << (c.context ? c.context : "unset") << " " << (c.name ? c.name : "null") << " " << c.msg_type;
    }
    unsetenv("WARDEN_KEL_ID");
    EXPECT_TRUE(transport().lines().empty());
}

TEST(Roles, RuleWordsAndLines)
{
    const struct {
        int32_t code;
        const char *rule_word, *command_word;
    } words[] = {{0, "xyz", "xyz"},   {1, "permit", "clear"}, {2, "deny", "config"},
                 {3, "xyz", "debug"}, {5, "xyz", "exec"},     {6, "xyz", "xyz"}};
    for (const auto &w : words) {
        char rule_word[8] = "xyz", command_word[8] = "xyz";
        EXPECT_EQ(wexd_perm_group_rule_type_str_get(rule_word, w.code), 0);
        EXPECT_EQ(wexd_perm_group_command_type_str_get(command_word, w.code), 0);
        EXPECT_EQ(std::string(rule_word) + "/" + command_word,
                  std::string(w.rule_word) + "/" + w.command_word)
            << w.code;
    }
    EXPECT_EQ(wexd_perm_group_rule_type_str_get(nullptr, 1), -1);

    wexd_perm_group_conf_entry permit_show = rule(1, 4, nullptr, 0);
    std::memset(permit_show.feature, 'f', sizeof permit_show.feature); // no terminator
    const struct {
        wexd_perm_group_conf_entry rule;
        int32_t id;
        std::string line;
    } lines[] = {
        {rule(2, 5, "ignored", 1), 3, "rule 3 deny exec "},
        {permit_show, -12, "rule -12 permit show feature " + std::string(32, 'f')},
        {rule(9, 9, "x", 0), 1, "rule 1   feature x"},
    };
    for (const auto &l : lines) {
        char line[WEXD_RULE_CLI_STR_SIZE];
        ASSERT_EQ(wexd_perm_group_conf_entry_cli_str_get(line, &l.rule, l.id), 0);
        EXPECT_EQ(line, l.line);
    }
    char line[WEXD_RULE_CLI_STR_SIZE];
    EXPECT_EQ(wexd_perm_group_conf_entry_cli_str_get(line, nullptr, 1), -1);
    EXPECT_EQ(capture_buffered([&] {
                  EXPECT_EQ(wexd_perm_group_conf_entry_cli_show(&lines[0].rule, 3), 0);
                  const wexd_perm_group_conf_entry config = rule(1, 2, "zone", 0);
                  wexd_perm_group_conf_entry_cli_show(&config, 10);
                  EXPECT_EQ(wexd_perm_group_conf_entry_cli_show(nullptr, 1), -1);
              }),
              "    3.     deny      exec                   *\n"
              "   10.   permit    config                zone\n");
}

// "ops": rule 1 permit show for all features, slot 2 empty, rule 3 deny
// config for the feature "zone".
wexd_perm_group_entry ops_role(const char *description, int32_t rule_count = 3)
{
    wexd_perm_group_entry role;
    std::memset(&role, 0, sizeof role);
    std::strcpy(role.name, "ops");
    std::strcpy(role.description, description);
    role.rules[0] = rule(1, 4, nullptr, 1);
    role.rules[1] = rule(0, 0, nullptr, 0, 1);
    role.rules[2] = rule(2, 2, "zone", 0);
    role.rule_count = rule_count;
    role.valid = 1;
    return role;
}

TEST(Roles, RoleShowListsPolicyAndRules)
{
    vsan_mask restricted{};
    restricted.len = WEX_VSAN_MASK_BYTES;
    restricted.bits[0] = 0x7C; // ids 1 to 5
    vsan_mask everything = restricted;
    std::memset(everything.bits, 0xFF, sizeof everything.bits);
    const wexd_perm_group_entry ops = ops_role("Operators"), bare = ops_role("", 0);
    EXPECT_EQ(capture_buffered([&] {
                  wexd_perm_group_entry_cli_show(&ops, &restricted);
                  wexd_perm_group_entry_cli_show(&bare, &everything);
                  wexd_perm_group_entry_cli_show(nullptr, nullptr);
              }),
              "\nRole: ops\n  Description: Operators\n  vsan policy: deny\n  Permitted vsans: 1-5\n\n"
              "  ---------------------------------------------\n"
              "  Rule    Type    Command-type      Feature\n"
              "  ---------------------------------------------\n"
              "    1.   permit      show                   *\n"
              "    3.     deny    config                zone\n"
              "\nRole: ops\n  vsan policy: permit (default)\n");

    wexd_static_perm_group_entry plain{};
    std::strcpy(plain.name, "plain");
    wexd_perm_group_conf_cli_wrapper request;
    wexd_perm_group_conf_cli_wrapper_init(&request);
    request.no_flag = 1;
    std::strcpy(request.name, "ops");
    EXPECT_EQ(
        capture_stdout([&] {
            wexd_static_perm_group_entry_cli_show(&wexd_static_perm_group_table[0]);
            wexd_static_perm_group_entry_cli_show(&plain);
            wexd_perm_group_conf_cli_wrapper_show(&request);
            wexd_perm_group_entry_show(&ops);
        }),
        "\nRole: network-admin\nDescription: Predefined Network Admin group. This role cannot be modified\n"
        "Access to all the switch commands\n"
        "\nRole: plain\n"
        "No flag:1 Role name:ops "
        "\nRole name:ops description:Operators\n"
        "0. Rule type:1 Cmd type:4 Feature: All_feature:1 \n"
        "2. Rule type:2 Cmd type:2 Feature:zone All_feature:0 \n");
}

TEST(Roles, ChangeTextsOfRoleOpcodes)
{
    wexd_perm_group_conf_cli_wrapper request;
    wexd_perm_group_conf_cli_wrapper_init(&request);
    std::strcpy(request.name, "ops");
    std::strcpy(request.description, "Operators");
    const struct {
        uint32_t opcode, no_flag;
        std::string text;
    } cases[] = {
        {913, 1, "Deleted description for role ops"},
        {913, 0, "Configured description for role ops to be Operators"},
        {919, 0, "Created role name ops"},
    };
    for (const auto &c : cases) {
        char text[WEXD_ROLE_CHANGE_STR_SIZE];
        request.no_flag = c.no_flag;
        EXPECT_EQ(wexd_perm_group_wrapper_cli_str_get(text, c.opcode, &request),
                  static_cast<int32_t>(c.text.size()));
        EXPECT_EQ(text, c.text);
    }
    char untouched[8] = "same";
    EXPECT_EQ(wexd_perm_group_wrapper_cli_str_get(untouched, 914, &request), 914);
    EXPECT_STREQ(untouched, "same");
}

} // namespace
