#include "authorization.h"

#include "daemon_queries.h"

#include <cstdlib>
#include <cstring>

namespace wex_shell
{
namespace
{

const char *class_name(int32_t command_class)
{
    static const char *const names[] = {"", "clear", "config", "debug", "show", "exec"};
    return command_class >= 1 && command_class <= 5 ? names[command_class] : "other";
}

bool rule_applies(const wexd_perm_group_conf_entry &rule, int32_t command_class, const std::string &feature)
{
    return !rule.absent && rule.cmd_type == command_class &&
           (rule.all_features || strncmp(rule.feature, feature.c_str(), sizeof rule.feature) == 0);
}

} // namespace

int32_t command_class(const std::string &first_word, bool in_configuration)
{
    if (in_configuration)
        return WEXD_CMD_CONFIG;
    if (first_word == "show")
        return WEXD_CMD_SHOW;
    if (first_word == "clear")
        return WEXD_CMD_CLEAR;
    if (first_word == "debug")
        return WEXD_CMD_DEBUG;
    return WEXD_CMD_EXEC;
}

std::optional<Authorization> Authorization::fetch(int q, const std::string &user, std::string &why)
{
    int status = 0;
    const auto names = wex_tools::user_roles(q, user, status);
    if (!names) {
        why = "wexd did not give the roles of user " + user;
        return std::nullopt;
    }
    Authorization authorization;
    for (const std::string &name : *names) {
        Role role{name};
        if (wex_lib_is_static_role(name.c_str())) {
            role.built_in_admin = name.find("admin") != std::string::npos;
            role.built_in_viewer = !role.built_in_admin;
            authorization.roles_.push_back(role);
            continue;
        }
        void *reply = nullptr;
        uint32_t len = 0;
        if (wexd_role_info_get(q, WEX_MSG_TYPE_READ, WEXD_ROLE_QUERY_ALL, name.c_str(), &reply, &len) != 0 ||
            len < sizeof(wex_tools::SimRoleReply)) {
            std::free(reply);
            why = "wexd did not give the rules of role " + name;
            return std::nullopt;
        }
        wex_tools::SimRoleReply record;
        std::memcpy(&record, reply, sizeof record);
        std::free(reply);
        role.entry = record.role;
        authorization.roles_.push_back(role);
    }
    return authorization;
}

std::optional<std::string> Authorization::refusal(int32_t command_class, const std::string &feature) const
{
    std::string why = "no role of this user permits " + std::string(class_name(command_class)) +
                      " commands of feature " + feature;
    for (const Role &role : roles_) {
        if (role.built_in_admin || (role.built_in_viewer && command_class == WEXD_CMD_SHOW))
            return std::nullopt;
        // A role's first rule for the command decides for that role.
        const int32_t count = std::min<int32_t>(role.entry.rule_count, WEXD_ROLE_MAX_RULES);
        for (int32_t i = 0; i < count; ++i) {
            const wexd_perm_group_conf_entry &rule = role.entry.rules[i];
            if (!rule_applies(rule, command_class, feature))
                continue;
            if (rule.rule_type == WEXD_RULE_PERMIT)
                return std::nullopt;
            why = "rule " + std::to_string(i + 1) + " of role " + role.name + " denies " +
                  class_name(command_class) + " commands of feature " + feature;
            break;
        }
    }
    return "Permission denied: " + why;
}

} // namespace wex_shell
