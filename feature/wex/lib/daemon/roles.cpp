// Roles (permission groups): the built-in tables, the lookups over a table
// of configured roles, and the records that role requests carry.
#include <wex/wexd_client.h>

#include "common/text_field.h"
#include "daemon/role_rules.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <strings.h>

namespace
{

// Roles that exist on every switch and cannot be configured: the context
// roles and the operations role beside the two network roles.
constexpr char kStaticRoleNames[][WEXD_ROLE_NAME_SIZE] = {
    "network-admin", "network-operator", "kel-admin", "kel-operator", "dev-ops",
};

bool same_text(std::string_view a, std::string_view b, bool ignore_case) noexcept
{
    if (a.size() != b.size())
        return false;
    return ignore_case ? strncasecmp(a.data(), b.data(), a.size()) == 0 : a == b;
}

// 1-based position of the first role of the table that counts and is named
// name; -1 when none. Fields are read no further than their width, so a
// name that fills its field matches without a terminator.
template <typename Entry, typename Counts>
int32_t locate(const Entry *table, int32_t count, const char *name, bool ignore_case, Counts counts) noexcept
{
    if (!table || !name)
        return -1;
    for (int32_t i = 0; i < count; ++i) {
        if (counts(table[i]) && same_text(wex::field_text(table[i].name), name, ignore_case))
            return i + 1;
    }
    return -1;
}

bool is_valid(const wexd_perm_group_entry &role) noexcept
{
    return role.valid != 0;
}

void init_mask(vsan_mask &mask) noexcept
{
    mask.len = WEX_VSAN_MASK_BYTES;
}

} // namespace

extern "C" {

const wexd_static_perm_group_entry wexd_static_perm_group_table[WEXD_STATIC_PERM_GROUP_COUNT] = {
    {"network-admin", "Predefined Network Admin group. This role cannot be modified",
     "Access to all the switch commands", 1},
    {"network-operator", "Predefined Network Operator group. This role cannot be modified",
     "Access to Show commands and selected Exec commands", 1},
    {"svc-admin", "Predefined SVC Admin group. This role cannot be modified",
     "Access to all SAN Volume Controller commands", 1},
    {"svc-operator", "Predefined SVC Operator group. This role cannot be modified",
     "Access to selected SAN Volume Controller commands", 1},
};

const uint32_t wexd_static_perm_group_table_size = WEXD_STATIC_PERM_GROUP_COUNT;

WEX_API int32_t wex_lib_is_static_role(const char *name) noexcept
{
    if (!name)
        return 0;
    return std::any_of(
               std::begin(kStaticRoleNames), std::end(kStaticRoleNames),
               [name](const char(&role)[WEXD_ROLE_NAME_SIZE]) { return std::strcmp(role, name) == 0; })
               ? 1
               : 0;
}

WEX_API int32_t wexd_static_perm_group_locate_entry_by_name(const wexd_static_perm_group_entry *table,
                                                            int32_t count, const char *name) noexcept
{
    return locate(table, count, name, false,
                  [](const wexd_static_perm_group_entry &e) { return e.valid != 0; });
}

WEX_API int32_t wexd_perm_group_locate_entry_by_name(const wexd_perm_group_entry *table, int32_t count,
                                                     const char *name) noexcept
{
    return locate(table, count, name, true, is_valid);
}

WEX_API int32_t wexd_perm_group_locate_case_sensitive_entry_by_name(const wexd_perm_group_entry *table,
                                                                    int32_t count, const char *name) noexcept
{
    return locate(table, count, name, false, is_valid);
}

WEX_API int32_t wexd_perm_group_next_role_num_get(const wexd_perm_group_entry *table, int32_t current,
                                                  int32_t count) noexcept
{
    // A number below 0 names no place in the walk.
    if (!table || current < 0)
        return -1;
    for (int32_t number = current + 1; number <= count; ++number) {
        if (table[number - 1].valid == 1)
            return number;
    }
    return -1;
}

WEX_API int32_t wexd_perm_group_max_rule_id_get(const wexd_perm_group_entry *role) noexcept
{
    if (!role)
        return 0;
    for (int32_t number = wex::daemon::rules_in_use(*role); number >= 1; --number) {
        if (role->rules[number - 1].absent == 0)
            return number;
    }
    return 0;
}

WEX_API int32_t wexd_perm_group_next_rule_id_get(void) noexcept
{
    return -1;
}

WEX_API wexd_perm_group_entry *wexd_perm_group_table_get(void) noexcept
{
    return nullptr;
}

WEX_API int32_t wexd_perm_group_conf_entry_populate(wexd_perm_group_conf_entry *rule, int32_t rule_type,
                                                    int32_t cmd_type, const char *feature,
                                                    int32_t all_features) noexcept
{
    if (!rule)
        return -1;
    rule->rule_type = rule_type;
    rule->cmd_type = cmd_type;
    robust_strncpy(rule->feature, feature, sizeof rule->feature);
    rule->all_features = all_features;
    return 0;
}

WEX_API int32_t wexd_perm_group_conf_entry_copy(wexd_perm_group_conf_entry *dst,
                                                const wexd_perm_group_conf_entry *src) noexcept
{
    if (!dst || !src)
        return -1;
    const wexd_perm_group_conf_entry source = *src;
    return wexd_perm_group_conf_entry_populate(dst, source.rule_type, source.cmd_type, source.feature,
                                               source.all_features);
}

WEX_API void wexd_perm_group_conf_cli_wrapper_init(wexd_perm_group_conf_cli_wrapper *request) noexcept
{
    if (!request)
        return;
    std::memset(request, 0, sizeof *request);
    init_mask(request->first_mask);
    init_mask(request->second_mask);
}

WEX_API void
wexd_role_comp_group_conf_cli_wrapper_init(wexd_role_comp_group_conf_cli_wrapper *request) noexcept
{
    if (request)
        std::memset(request, 0, sizeof *request);
}

WEX_API int32_t wexd_role_rule_entry_msg_populate(wexd_role_rule_entry_msg *msg, uint32_t word0,
                                                  uint32_t word1, uint32_t word2, uint32_t kind,
                                                  const void *value) noexcept
{
    if (!msg)
        return -1;
    std::memset(msg, 0, sizeof *msg);
    msg->words[0] = word0;
    msg->words[1] = word1;
    msg->words[2] = word2;
    msg->kind = kind;
    // A raw value without bytes to copy stays all zero.
    if (kind == WEXD_ROLE_RULE_VALUE_RAW && value)
        std::memcpy(msg->value, value, sizeof msg->value);
    else if (kind != WEXD_ROLE_RULE_VALUE_RAW)
        robust_strncpy(reinterpret_cast<char *>(msg->value), static_cast<const char *>(value),
                       sizeof msg->value);
    return 0;
}

} // extern "C"
