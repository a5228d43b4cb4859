#include "zone_feature.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace wex_feature
{
namespace
{

// The command ids of the zone grammar.
enum : uint32_t {
    kZoneName = 100,
    kZoneMember = 101,
    kZoneSetName = 102,
    kZoneSetMember = 103,
    kZoneSetActivate = 104,
    kShowZone = 105,
    kShowZoneFcids = 106,
};

// Priorities of the running configuration: zones exist before the zone
// sets that name them, and zone sets before their activation.
constexpr uint32_t kZonePriority = 20, kZoneSetPriority = 21, kActivationPriority = 22;

std::string colon_hex(const uint8_t *bytes, std::size_t count)
{
    std::string text;
    char pair[4];
    for (std::size_t i = 0; i < count; ++i) {
        std::snprintf(pair, sizeof pair, i ? ":%02x" : "%02x", bytes[i]);
        text += pair;
    }
    return text;
}

uint64_t big_endian_value(const void *value, std::size_t count)
{
    const auto *bytes = static_cast<const uint8_t *>(value);
    uint64_t number = 0;
    for (std::size_t i = 0; i < count; ++i)
        number = number << 8 | bytes[i];
    return number;
}

std::string fc_id_text(uint32_t fc_id)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%06x", fc_id);
    return text;
}

// The member line of a zone member command, written the same way whatever
// the form typed: lower-case WWNs, six-digit FC IDs.
std::string member_line(const pinfo &command)
{
    const param_arg *first = argument(command, 0);
    if (!first || !first->value)
        return "";
    if (first->type == TYPE_WWN) {
        std::string line = "member wwn " + colon_hex(static_cast<const uint8_t *>(first->value), 8);
        if (const param_arg *lun = argument(command, 1)) {
            char text[24];
            std::snprintf(text, sizeof text, " lun 0x%016llx",
                          static_cast<unsigned long long>(big_endian_value(lun->value, 8)));
            line += text;
        }
        return line;
    }
    if (first->type == TYPE_FC_ID)
        return "member fcid " + fc_id_text(static_cast<uint32_t>(big_endian_value(first->value, 4)));
    return "member interface " +
           taken(print_interface_range_to_str(static_cast<const intf_range_list *>(first->value)));
}

std::string key_text(const char *kind, const std::pair<int32_t, std::string> &key)
{
    return std::string(kind) + " " + key.second + " in VSAN " + std::to_string(key.first);
}

} // namespace

Applied ZoneFeature::apply(const pinfo &command)
{
    switch (command.command_id) {
    case kZoneName:
        return name_command(command, false);
    case kZoneSetName:
        return name_command(command, true);
    case kZoneMember:
        return zone_member(command);
    case kZoneSetMember:
        return zone_set_member(command);
    case kZoneSetActivate:
        return activate(command);
    case kShowZone:
        return show(command);
    case kShowZoneFcids:
        return show_fcids(command);
    default:
        return refused("zone: command " + std::to_string(command.command_id) + " is not a zone command");
    }
}

std::string ZoneFeature::zone_set_naming(const Key &zone) const
{
    for (const auto &[set, names] : zone_sets_) {
        if (set.first == zone.first && std::find(names.begin(), names.end(), zone.second) != names.end())
            return set.second;
    }
    return "";
}

// "zone name N vsan V" and "zone-set name N vsan V": create, select, or
// with "no" remove.
Applied ZoneFeature::name_command(const pinfo &command, bool zone_set)
{
    auto &table = zone_set ? zone_sets_ : zones_;
    const char *kind = zone_set ? "zone set" : "zone";
    const Key key{number_argument(command, 1), text_argument(command, 0)};
    const auto found = table.find(key);
    sessions_.erase(command.session_id); // whatever happens, the old selection is left
    if (command.no_flag) {
        if (found == table.end())
            return refused(key_text(kind, key) + " does not exist");
        if (const std::string set = zone_set ? "" : zone_set_naming(key); !set.empty())
            return refused(key_text(kind, key) + " is a member of zone set " + set);
        if (zone_set && active_.count(key.first) && active_[key.first] == key.second)
            return refused(key_text(kind, key) + " is active");
        table.erase(found);
        return {0, "", true};
    }
    sessions_[command.session_id] = Selection{zone_set, key};
    if (found != table.end())
        return {};
    table[key];
    return {0, "", true};
}

std::vector<std::string> *ZoneFeature::selected_members(const pinfo &command, bool zone_set, Applied &refusal)
{
    const auto selection = sessions_.find(command.session_id);
    auto &table = zone_set ? zone_sets_ : zones_;
    if (selection == sessions_.end() || selection->second.zone_set != zone_set) {
        refusal = refused(std::string("no ") + (zone_set ? "zone set" : "zone") + " is selected");
        return nullptr;
    }
    const auto found = table.find(selection->second.key);
    if (found == table.end()) {
        refusal = refused(key_text(zone_set ? "zone set" : "zone", selection->second.key) + " was removed");
        return nullptr;
    }
    return &found->second;
}

// Adds a line to a member list, or with "no" removes it.
Applied change_members(std::vector<std::string> &members, const std::string &line, bool remove)
{
    const auto found = std::find(members.begin(), members.end(), line);
    if (remove) {
        if (found == members.end())
            return refused(line + " is not configured");
        members.erase(found);
        return {0, "", true};
    }
    if (found != members.end())
        return {};
    members.push_back(line);
    return {0, "", true};
}

Applied ZoneFeature::zone_member(const pinfo &command)
{
    Applied refusal;
    std::vector<std::string> *members = selected_members(command, false, refusal);
    const std::string line = member_line(command);
    if (!members || line.empty())
        return members ? refused("zone: a member without its value") : refusal;
    return change_members(*members, line, command.no_flag != 0);
}

Applied ZoneFeature::zone_set_member(const pinfo &command)
{
    Applied refusal;
    std::vector<std::string> *members = selected_members(command, true, refusal);
    if (!members)
        return refusal;
    const std::string zone = text_argument(command, 0);
    const int32_t vsan = sessions_[command.session_id].key.first;
    if (!command.no_flag && !zones_.count({vsan, zone}))
        return refused(key_text("zone", {vsan, zone}) + " does not exist");
    return change_members(*members, zone, command.no_flag != 0);
}

// "zone-set activate N vsan V" puts zone set N in force in VSAN V; with
// "no" it takes it out of force again.
Applied ZoneFeature::activate(const pinfo &command)
{
    const Key key{number_argument(command, 1), text_argument(command, 0)};
    if (command.no_flag) {
        const auto active = active_.find(key.first);
        if (active == active_.end() || active->second != key.second)
            return refused(key_text("zone set", key) + " is not active");
        active_.erase(active);
        return {0, "", true};
    }
    if (!zone_sets_.count(key))
        return refused(key_text("zone set", key) + " does not exist");
    const bool changed = active_[key.first] != key.second;
    active_[key.first] = key.second;
    return {0, "", changed};
}

Applied ZoneFeature::show(const pinfo &command) const
{
    integer_range vsans{1, 4094};
    if (const param_arg *range = argument(command, 0))
        std::memcpy(&vsans, range->value, sizeof vsans);
    std::string text;
    for (const auto &[key, members] : zones_) {
        if (static_cast<uint32_t>(key.first) < vsans.low || static_cast<uint32_t>(key.first) > vsans.high)
            continue;
        text += "zone name " + key.second + " vsan " + std::to_string(key.first) + "\n";
        for (const std::string &member : members)
            text += "  " + member + "\n";
    }
    return {0, text.empty() ? "No zones\n" : text, false};
}

Applied ZoneFeature::show_fcids(const pinfo &command) const
{
    const std::vector<integer_range> ranges = range_list_argument(command, 0);
    if (ranges.empty())
        return refused("zone: FC IDs without their ranges");
    std::string text;
    for (const auto &[key, members] : zones_) {
        for (const std::string &member : members) {
            if (member.rfind("member fcid ", 0) != 0)
                continue;
            const auto fc_id = static_cast<uint32_t>(std::stoul(member.substr(12), nullptr, 16));
            if (std::any_of(ranges.begin(), ranges.end(),
                            [&](const integer_range &r) { return fc_id >= r.low && fc_id <= r.high; }))
                text += key.second + " vsan " + std::to_string(key.first) + ": " + fc_id_text(fc_id) + "\n";
        }
    }
    return {0, text.empty() ? "No zone holds these FC IDs\n" : text, false};
}

std::vector<wex_shell::ConfigBlock> ZoneFeature::running_config() const
{
    std::vector<wex_shell::ConfigBlock> blocks;
    const auto add = [&](uint32_t priority, const char *command, const Key &key,
                         const std::vector<std::string> &lines, const char *prefix) {
        std::string text =
            std::string(command) + " name " + key.second + " vsan " + std::to_string(key.first) + "\n";
        for (const std::string &line : lines)
            text += prefix + line + "\n";
        blocks.push_back({priority, std::move(text)});
    };
    for (const auto &[key, members] : zones_)
        add(kZonePriority, "zone", key, members, "");
    for (const auto &[key, names] : zone_sets_)
        add(kZoneSetPriority, "zone-set", key, names, "member ");
    for (const auto &[vsan, name] : active_)
        blocks.push_back(
            {kActivationPriority, "zone-set activate " + name + " vsan " + std::to_string(vsan) + "\n"});
    return blocks;
}

} // namespace wex_feature
