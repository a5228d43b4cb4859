// The text forms of roles and rules: show output, configuration lines,
// debugging dumps and the descriptions of role changes.
#include <wex/output.h>
#include <wex/wexd_client.h>

#include "common/text_field.h"
#include "daemon/role_rules.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace
{

constexpr const char *kRuleTypeWords[] = {"permit", "deny"};
constexpr const char *kCommandTypeWords[] = {"clear", "config", "debug", "show", "exec"};

// Room for the longest word and its terminator.
constexpr std::size_t kWordSize = 7;

template <std::size_t N> int32_t write_word(char *buf, const char *const (&words)[N], int32_t code) noexcept
{
    if (!buf)
        return -1;
    if (code >= 1 && code <= static_cast<int32_t>(N))
        std::strcpy(buf, words[code - 1]);
    return 0;
}

// The words of a rule. Codes outside the tables print as empty words
// rather than as whatever a buffer held before.
struct RuleWords {
    char rule_type[kWordSize] = "";
    char cmd_type[kWordSize] = "";

    explicit RuleWords(const wexd_perm_group_conf_entry &rule) noexcept
    {
        wexd_perm_group_rule_type_str_get(rule_type, rule.rule_type);
        wexd_perm_group_command_type_str_get(cmd_type, rule.cmd_type);
    }
};

void show_vsan_policy(const vsan_mask *mask) noexcept
{
    // Without the user's mask there is no restriction to show.
    if (mask && wex_is_user_vsan_restricted(mask)) {
        wex_buf_printf("  vsan policy: deny\n");
        wex_buf_printf("  ");
        wex_print_vsan_mask(mask);
        wex_buf_printf("\n");
    } else {
        wex_buf_printf("  vsan policy: permit (default)\n");
    }
}

void show_rule_table(const wexd_perm_group_entry &role) noexcept
{
    wex_buf_printf("  ---------------------------------------------\n");
    wex_buf_printf("  Rule    Type    Command-type      Feature\n");
    wex_buf_printf("  ---------------------------------------------\n");
    for (int32_t number = 1; number <= wex::daemon::rules_in_use(role); ++number) {
        if (role.rules[number - 1].absent == 0)
            wexd_perm_group_conf_entry_cli_show(&role.rules[number - 1], number);
    }
}

} // namespace

extern "C" {

WEX_API int32_t wexd_perm_group_rule_type_str_get(char *buf, int32_t rule_type) noexcept
{
    return write_word(buf, kRuleTypeWords, rule_type);
}

WEX_API int32_t wexd_perm_group_command_type_str_get(char *buf, int32_t cmd_type) noexcept
{
    return write_word(buf, kCommandTypeWords, cmd_type);
}

WEX_API int32_t wexd_perm_group_conf_entry_cli_str_get(char *dst, const wexd_perm_group_conf_entry *rule,
                                                       int32_t rule_no) noexcept
{
    if (!dst || !rule)
        return -1;
    const RuleWords words(*rule);
    const std::string_view feature = wex::field_text(rule->feature);
    char feature_part[sizeof "feature " + sizeof rule->feature] = "";
    if (rule->all_features != 1)
        std::snprintf(feature_part, sizeof feature_part, "feature %.*s", wex::print_width(feature),
                      feature.data());
    std::snprintf(dst, WEXD_RULE_CLI_STR_SIZE, "rule %d %s %s %s", rule_no, words.rule_type, words.cmd_type,
                  feature_part);
    return 0;
}

WEX_API int32_t wexd_perm_group_conf_entry_cli_show(const wexd_perm_group_conf_entry *rule,
                                                    int32_t rule_no) noexcept
{
    if (!rule)
        return -1;
    const RuleWords words(*rule);
    const std::string_view feature = rule->all_features == 1 ? "*" : wex::field_text(rule->feature);
    wex_buf_printf("  %3d.%9s%10s%20.*s\n", rule_no, words.rule_type, words.cmd_type,
                   wex::print_width(feature), feature.data());
    return 0;
}

WEX_API void wexd_perm_group_entry_cli_show(const wexd_perm_group_entry *role, const vsan_mask *mask) noexcept
{
    if (!role)
        return;
    const std::string_view name = wex::field_text(role->name);
    const std::string_view description = wex::field_text(role->description);
    wex_buf_printf("\nRole: %.*s\n", wex::print_width(name), name.data());
    if (!description.empty())
        wex_buf_printf("  Description: %.*s\n", wex::print_width(description), description.data());
    show_vsan_policy(mask);
    if (wex::daemon::rules_in_use(*role) >= 1)
        show_rule_table(*role);
}

WEX_API void wexd_static_perm_group_entry_cli_show(const wexd_static_perm_group_entry *group) noexcept
{
    if (!group)
        return;
    const std::string_view name = wex::field_text(group->name);
    const std::string_view description = wex::field_text(group->description);
    const std::string_view details = wex::field_text(group->details);
    std::printf("\nRole: %.*s\n", wex::print_width(name), name.data());
    if (!description.empty())
        std::printf("Description: %.*s\n", wex::print_width(description), description.data());
    if (!details.empty())
        std::printf("%.*s\n", wex::print_width(details), details.data());
}

WEX_API void wexd_perm_group_conf_cli_wrapper_show(const wexd_perm_group_conf_cli_wrapper *request) noexcept
{
    if (!request)
        return;
    const std::string_view name = wex::field_text(request->name);
    std::printf("No flag:%d ", static_cast<int>(request->no_flag));
    std::printf("Role name:%.*s ", wex::print_width(name), name.data());
}

WEX_API void wexd_perm_group_conf_entry_show(const wexd_perm_group_conf_entry *rule) noexcept
{
    if (!rule)
        return;
    const std::string_view feature = wex::field_text(rule->feature);
    std::printf("Rule type:%d ", rule->rule_type);
    std::printf("Cmd type:%d ", rule->cmd_type);
    std::printf("Feature:%.*s ", wex::print_width(feature), feature.data());
    std::printf("All_feature:%d \n", rule->all_features);
}

WEX_API void wexd_perm_group_entry_show(const wexd_perm_group_entry *role) noexcept
{
    if (!role)
        return;
    const std::string_view name = wex::field_text(role->name);
    const std::string_view description = wex::field_text(role->description);
    std::printf("\nRole name:%.*s description:%.*s\n", wex::print_width(name), name.data(),
                wex::print_width(description), description.data());
    // The slots in use, as the show output walks them, numbered from 0.
    for (int32_t slot = 0; slot < wex::daemon::rules_in_use(*role); ++slot) {
        if (role->rules[slot].absent != 0)
            continue;
        std::printf("%d. ", slot);
        wexd_perm_group_conf_entry_show(&role->rules[slot]);
    }
}

WEX_API int32_t wexd_perm_group_wrapper_cli_str_get(char *dst, uint32_t opcode,
                                                    const wexd_perm_group_conf_cli_wrapper *request) noexcept
{
    if (opcode != WEX_OPC_ROLE_DESCRIPTION_CHANGED && opcode != WEX_OPC_ROLE_CHANGED)
        return static_cast<int32_t>(opcode);
    if (!dst || !request)
        return -1;
    const std::string_view name = wex::field_text(request->name);
    const std::string_view description = wex::field_text(request->description);
    const bool removed = request->no_flag == 1;
    int written = 0;
    if (opcode == WEX_OPC_ROLE_DESCRIPTION_CHANGED && removed)
        written = std::snprintf(dst, WEXD_ROLE_CHANGE_STR_SIZE, "Deleted description for role %.*s",
                                wex::print_width(name), name.data());
    else if (opcode == WEX_OPC_ROLE_DESCRIPTION_CHANGED)
        written = std::snprintf(dst, WEXD_ROLE_CHANGE_STR_SIZE,
                                "Configured description for role %.*s to be %.*s", wex::print_width(name),
                                name.data(), wex::print_width(description), description.data());
    else
        written = std::snprintf(dst, WEXD_ROLE_CHANGE_STR_SIZE,
                                removed ? "Deleted role name %.*s" : "Created role name %.*s",
                                wex::print_width(name), name.data());
    return std::min<int32_t>(written, WEXD_ROLE_CHANGE_STR_SIZE - 1);
}

} // extern "C"
