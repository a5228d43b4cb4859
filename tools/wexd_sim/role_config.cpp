#include "role_config.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace wexd_sim
{
namespace
{

int32_t code_of(const std::string &word, std::initializer_list<const char *> words)
{
    int32_t code = 1;
    for (const char *known : words) {
        if (word == known)
            return code;
        ++code;
    }
    return 0;
}

// Whether one more name of a kind may be defined: not twice, and no more
// than max of them.
bool admissible(const char *kind, const std::string &name, bool defined, std::size_t count, std::size_t max,
                std::string &why)
{
    if (defined)
        why = std::string(kind) + " " + name + " is already defined";
    else if (count == max)
        why = "more than " + std::to_string(max) + " " + kind + "s";
    return !defined && count < max;
}

bool add_role(std::istringstream &line, RoleConfig &config, std::string &why)
{
    std::string name, description;
    if (!(line >> name) || name.size() >= WEXD_ROLE_NAME_SIZE) {
        why = "a role needs a name of at most 31 characters";
        return false;
    }
    const bool defined = std::any_of(config.roles.begin(), config.roles.end(),
                                     [&](const wexd_perm_group_entry &known) { return name == known.name; });
    if (!admissible("role", name, defined, config.roles.size(), kMaxRoles, why))
        return false;
    std::getline(line >> std::ws, description);
    wexd_perm_group_entry role;
    std::memset(&role, 0, sizeof role);
    robust_strncpy(role.name, name.c_str(), sizeof role.name);
    robust_strncpy(role.description, description.c_str(), sizeof role.description);
    role.valid = 1;
    config.roles.push_back(role);
    return true;
}

bool add_rule(std::istringstream &line, RoleConfig &config, std::string &why)
{
    int number = 0;
    std::string type, command, scope, feature;
    if (config.roles.empty()) {
        why = "a rule needs a role above it";
        return false;
    }
    if (!(line >> number >> type >> command >> scope) || number < 1 || number > WEXD_ROLE_MAX_RULES) {
        why = "expected: rule <1-16> permit|deny clear|config|debug|show|exec all|feature <name>";
        return false;
    }
    const int32_t rule_type = code_of(type, {"permit", "deny"});
    const int32_t cmd_type = code_of(command, {"clear", "config", "debug", "show", "exec"});
    const bool all = scope == "all";
    if (!rule_type || !cmd_type || (!all && (scope != "feature" || !(line >> feature)))) {
        why = "expected: rule <1-16> permit|deny clear|config|debug|show|exec all|feature <name>";
        return false;
    }
    wexd_perm_group_entry &role = config.roles.back();
    // Slots up to the highest number exist; the ones not named are absent.
    for (int32_t slot = role.rule_count; slot < number; ++slot)
        role.rules[slot].absent = 1;
    role.rule_count = std::max<int32_t>(role.rule_count, number);
    wexd_perm_group_conf_entry &rule = role.rules[number - 1];
    wexd_perm_group_conf_entry_populate(&rule, rule_type, cmd_type, feature.c_str(), all ? 1 : 0);
    rule.absent = 0;
    return true;
}

bool add_locale(std::istringstream &line, RoleConfig &config, std::string &why)
{
    std::string name;
    if (!(line >> name) || name.size() >= WEXD_LOCALE_NAME_SIZE) {
        why = "a locale needs a name of at most " + std::to_string(WEXD_LOCALE_NAME_SIZE - 1) + " characters";
        return false;
    }
    const bool defined =
        std::find(config.locales.begin(), config.locales.end(), name) != config.locales.end();
    if (!admissible("locale", name, defined, config.locales.size(), kMaxLocales, why))
        return false;
    config.locales.push_back(name);
    return true;
}

bool role_known(const RoleConfig &config, const std::string &name)
{
    return wex_lib_is_static_role(name.c_str()) ||
           std::any_of(config.roles.begin(), config.roles.end(),
                       [&](const wexd_perm_group_entry &known) { return name == known.name; });
}

bool add_user(std::istringstream &line, RoleConfig &config, std::string &why)
{
    std::string name, role;
    std::vector<std::string> roles;
    // A user name travels in the command record's user field.
    constexpr std::size_t kMaxName = sizeof(pinfo::username) - 1;
    if (!(line >> name) || name.size() > kMaxName) {
        why = "a user needs a name of at most " + std::to_string(kMaxName) + " characters";
        return false;
    }
    if (!admissible("user", name, config.users.count(name) > 0, config.users.size(), kMaxUsers, why))
        return false;
    while (line >> role) {
        if (!role_known(config, role)) {
            why = "user " + name + ": role " + role + " is not defined above";
            return false;
        }
        roles.push_back(role);
    }
    if (roles.empty() || roles.size() > kMaxRolesPerUser) {
        why = "user " + name + " needs from 1 to " + std::to_string(kMaxRolesPerUser) + " roles";
        return false;
    }
    config.users[name] = std::move(roles);
    return true;
}

} // namespace

bool read_role_config(std::istream &in, RoleConfig &config, std::string &error)
{
    std::string text;
    for (int number = 1; std::getline(in, text); ++number) {
        std::istringstream line(text);
        std::string keyword, why;
        if (!(line >> keyword) || keyword[0] == '#')
            continue;
        bool used = false;
        if (keyword == "role")
            used = add_role(line, config, why);
        else if (keyword == "rule")
            used = add_rule(line, config, why);
        else if (keyword == "locale")
            used = add_locale(line, config, why);
        else if (keyword == "user")
            used = add_user(line, config, why);
        else
            why = "unknown line (role, rule, locale, user)";
        if (!used) {
            error = "line " + std::to_string(number) + ": " + why;
            return false;
        }
    }
    return true;
}

} // namespace wexd_sim
