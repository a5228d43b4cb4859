// The text forms of roles and rules, byte for byte.
#include <wex/output.h>
#include <wex/wexd_client.h>

#include "support/capture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

using wex_test::capture_stdout;

namespace
{

// What fn prints through wex_buf_printf, taken from the capture buffer.
std::string captured(const std::function<void()> &fn)
{
    wex_set_redir2buf();
    fn();
    char *buf = wex_get_buf();
    wex_reset_redir2buf();
    std::string text = buf ? buf : "";
    std::free(buf);
    return text;
}

wexd_perm_group_conf_entry rule(int32_t type, int32_t cmd, const char *feature, int32_t all,
                                int32_t absent = 0)
{
    wexd_perm_group_conf_entry r;
    std::memset(&r, 0, sizeof r);
    wexd_perm_group_conf_entry_populate(&r, type, cmd, feature, all);
    r.absent = absent;
    return r;
}

// "ops": rule 1 permit show for all features, slot 2 empty, rule 3 deny
// config for the feature "zone".
wexd_perm_group_entry ops_role(const char *description)
{
    wexd_perm_group_entry role;
    std::memset(&role, 0, sizeof role);
    std::strcpy(role.name, "ops");
    std::strcpy(role.description, description);
    role.rules[0] = rule(1, 4, nullptr, 1);
    role.rules[1] = rule(0, 0, nullptr, 0, 1);
    role.rules[2] = rule(2, 2, "zone", 0);
    role.rule_count = 3;
    role.valid = 1;
    return role;
}

const std::string kTableHeading = "  ---------------------------------------------\n"
                                  "  Rule    Type    Command-type      Feature\n"
                                  "  ---------------------------------------------\n";

TEST(RoleDisplay, WordsAndLinesOfOneRule)
{
    const struct {
        int32_t code;
        const char *rule_word, *command_word;
    } words[] = {{0, "xyz", "xyz"},  {1, "permit", "clear"}, {2, "deny", "config"}, {3, "xyz", "debug"},
                 {4, "xyz", "show"}, {5, "xyz", "exec"},     {6, "xyz", "xyz"},     {-1, "xyz", "xyz"}};
    for (const auto &w : words) {
        char rule_word[8] = "xyz", command_word[8] = "xyz";
        EXPECT_EQ(wexd_perm_group_rule_type_str_get(rule_word, w.code), 0);
        EXPECT_EQ(wexd_perm_group_command_type_str_get(command_word, w.code), 0);
        EXPECT_STREQ(rule_word, w.rule_word) << w.code;
        EXPECT_STREQ(command_word, w.command_word) << w.code;
    }
    EXPECT_EQ(wexd_perm_group_rule_type_str_get(nullptr, 1), -1);

    char line[WEXD_RULE_CLI_STR_SIZE];
    const wexd_perm_group_conf_entry deny_exec = rule(2, 5, "ignored", 1);
    ASSERT_EQ(wexd_perm_group_conf_entry_cli_str_get(line, &deny_exec, 3), 0);
    EXPECT_STREQ(line, "rule 3 deny exec ");
    wexd_perm_group_conf_entry permit_show = rule(1, 4, nullptr, 0);
    std::memset(permit_show.feature, 'f', sizeof permit_show.feature); // no terminator
    wexd_perm_group_conf_entry_cli_str_get(line, &permit_show, -12);
    EXPECT_EQ(std::string(line), "rule -12 permit show feature " + std::string(32, 'f'));
    const wexd_perm_group_conf_entry unknown = rule(9, 9, "x", 0);
    wexd_perm_group_conf_entry_cli_str_get(line, &unknown, 1);
    EXPECT_STREQ(line, "rule 1   feature x");
    EXPECT_EQ(wexd_perm_group_conf_entry_cli_str_get(line, nullptr, 1), -1);

    EXPECT_EQ(captured([&] { EXPECT_EQ(wexd_perm_group_conf_entry_cli_show(&deny_exec, 3), 0); }),
              "    3.     deny      exec                   *\n");
    EXPECT_EQ(captured([] {
                  const wexd_perm_group_conf_entry config = rule(1, 2, "zone", 0);
                  wexd_perm_group_conf_entry_cli_show(&config, 10);
              }),
              "   10.   permit    config                zone\n");
    EXPECT_EQ(wexd_perm_group_conf_entry_cli_show(nullptr, 1), -1);
}

TEST(RoleDisplay, RoleShowListsPolicyAndRulesWithTheirNumbers)
{
    vsan_mask restricted{};
    restricted.len = WEX_VSAN_MASK_BYTES;
    restricted.bits[0] = 0x7C; // ids 1 to 5
    const wexd_perm_group_entry ops = ops_role("Operators");
    EXPECT_EQ(captured([&] { wexd_perm_group_entry_cli_show(&ops, &restricted); }),
              "\nRole: ops\n  Description: Operators\n  vsan policy: deny\n  Permitted vsans: 1-5\n\n" +
                  kTableHeading +
                  "    1.   permit      show                   *\n"
                  "    3.     deny    config                zone\n");

    vsan_mask everything = restricted;
    std::memset(everything.bits, 0xFF, sizeof everything.bits);
    wexd_perm_group_entry bare = ops_role("");
    bare.rule_count = 0;
    EXPECT_EQ(captured([&] { wexd_perm_group_entry_cli_show(&bare, &everything); }),
              "\nRole: ops\n  vsan policy: permit (default)\n");
    EXPECT_EQ(captured([] { wexd_perm_group_entry_cli_show(nullptr, nullptr); }), "");
}

TEST(RoleDisplay, BuiltInGroupShowAndDebuggingDumps)
{
    EXPECT_EQ(
        capture_stdout([] { wexd_static_perm_group_entry_cli_show(&wexd_static_perm_group_table[0]); }),
        "\nRole: network-admin\nDescription: Predefined Network Admin group. This role cannot be modified\n"
        "Access to all the switch commands\n");
    wexd_static_perm_group_entry plain{};
    std::strcpy(plain.name, "plain");
    EXPECT_EQ(capture_stdout([&] { wexd_static_perm_group_entry_cli_show(&plain); }), "\nRole: plain\n");

    wexd_perm_group_conf_cli_wrapper request;
    wexd_perm_group_conf_cli_wrapper_init(&request);
    request.no_flag = 1;
    std::strcpy(request.name, "ops");
    EXPECT_EQ(capture_stdout([&] { wexd_perm_group_conf_cli_wrapper_show(&request); }),
              "No flag:1 Role name:ops ");
    const wexd_perm_group_entry ops = ops_role("Operators");
    EXPECT_EQ(capture_stdout([&] { wexd_perm_group_entry_show(&ops); }),
              "\nRole name:ops description:Operators\n"
              "0. Rule type:1 Cmd type:4 Feature: All_feature:1 \n"
              "2. Rule type:2 Cmd type:2 Feature:zone All_feature:0 \n");
}

TEST(RoleDisplay, ChangeTextsOfRoleOpcodes)
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
        {919, 1, "Deleted role name ops"},
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
