#include "interface_feature.h"

#include "if_index.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace wex_feature
{
namespace
{

// The command ids of the interface grammar.
enum : uint32_t {
    kInterface = 200,
    kShutdown = 201,
    kSpeed = 202,
    kPortMode = 203,
    kDescription = 204,
    kPortVsan = 205,
    kVsanName = 206,
    kVsanSuspend = 207,
    kShowBrief = 208,
    kShowCounters = 209,
    kShowMac = 210,
    kShowPortChannel = 211,
    kShowVsan = 212,
    kShowDomainsAllowed = 213,
    kShowDomain = 214,
    kShowFlogiRange = 215,
};

// VSANs exist before the ports placed in them.
constexpr uint32_t kVsanPriority = 5, kInterfacePriority = 10;
// Interface types by the bit of their mask: fc (type 1) and port-channel (2).
constexpr uint64_t kFcMask = 0x2, kPortChannelMask = 0x4;
// The most ports one "interface" command selects: every port of 16 slots
// of 64, and a port-channel range beside them.
constexpr std::size_t kMaxSelected = 16 * 64 + 256;

std::string name_of(uint32_t if_index)
{
    char name[64] = "";
    sprintf_if_index(name, if_index);
    return name;
}

std::string vsan_text(int32_t vsan)
{
    return "VSAN " + std::to_string(vsan);
}

} // namespace

bool InterfaceFeature::register_types(int q)
{
    const int32_t slots[2] = {1, 16};
    if (wex_register_interface2(q, kFcMask, "fc", 2, 0, "fc_verify", "fc_list", 0, "libfc.so") != 0 ||
        wex_register_interface2(q, kPortChannelMask, "port-channel", 1, 0, "pc_verify", "pc_list", 0,
                                "libpc.so") != 0 ||
        wexd_param_subtype_register(q, -1, slots) != 0) {
        std::fprintf(stderr, "interface: wexd refused the interface types\n");
        return false;
    }
    return true;
}

Applied InterfaceFeature::apply(const pinfo &command)
{
    switch (command.command_id) {
    case kInterface:
        return enter(command);
    case kShutdown:
    case kSpeed:
    case kPortMode:
    case kDescription:
    case kPortVsan:
        return port_setting(command);
    case kVsanName:
    case kVsanSuspend:
        return vsan_command(command);
    case kShowBrief:
        return show_brief(command);
    case kShowCounters:
        return {0, name_of(static_cast<uint32_t>(number_argument(command, 0))) +
                       "\n  0 frames input, 0 bytes\n  0 frames output, 0 bytes\n  0 errors\n"};
    case kShowMac:
        return {0,
                name_of(static_cast<uint32_t>(number_argument(command, 0))) + ": no station with this MAC\n"};
    case kShowPortChannel:
        return {0, "No port channels are configured\n"};
    case kShowVsan:
        return show_vsans(command);
    case kShowDomainsAllowed:
    case kShowDomain:
        return {0, "The fabric has one domain: 0x01\n"};
    case kShowFlogiRange:
        return {0, "No fabric logins in this range\n"};
    default:
        return refused("interface: command " + std::to_string(command.command_id) +
                       " is not an interface command");
    }
}

std::vector<uint32_t> InterfaceFeature::indexes_of(const param_arg *ranges) const
{
    std::vector<uint32_t> indexes;
    if (!ranges || !ranges->value)
        return indexes;
    intf_range_list list;
    std::memcpy(&list, ranges->value, sizeof list);
    for (uint32_t r = 0; r < std::min<uint32_t>(list.count, WEX_INTF_RANGE_MAX_INDEX + 1); ++r) {
        const intf_range &range = list.ranges[r];
        uint32_t at = range.first;
        for (indexes.push_back(at);
             indexes.size() < kMaxSelected &&
             if_index_get_next_if_index_in_range(range.first, range.last, at, &at) == 0;)
            indexes.push_back(at);
    }
    return indexes;
}

// "interface RANGE" selects ports; with "no" it puts them back to their
// defaults.
Applied InterfaceFeature::enter(const pinfo &command)
{
    sessions_.erase(command.session_id); // whatever happens, the old selection is left
    std::vector<uint32_t> indexes = indexes_of(argument(command, 0));
    if (indexes.empty())
        return refused("interface: no interface named");
    if (command.no_flag) {
        bool changed = false;
        for (const uint32_t index : indexes)
            changed |= ports_.erase(index) != 0;
        return {0, "", changed};
    }
    sessions_[command.session_id] = std::move(indexes);
    return {};
}

Applied InterfaceFeature::port_setting(const pinfo &command)
{
    const auto selected = sessions_.find(command.session_id);
    if (selected == sessions_.end())
        return refused("no interface is selected");
    const bool no = command.no_flag != 0;
    const int32_t vsan = number_argument(command, 0);
    if (command.command_id == kPortVsan && !no && vsan != 1 && !vsans_.count(vsan))
        return refused(vsan_text(vsan) + " does not exist");
    for (const uint32_t index : selected->second) {
        Port &port = ports_[index];
        switch (command.command_id) {
        case kShutdown:
            port.up = no;
            break;
        case kSpeed:
            port.speed = no ? "" : last_word(command);
            break;
        case kPortMode:
            port.port_mode = no ? "" : last_word(command);
            break;
        case kDescription:
            port.description = no ? "" : text_argument(command, 0);
            break;
        default:
            port.vsan = no ? 1 : vsan;
            break;
        }
        if (port == Port{})
            ports_.erase(index);
    }
    return {0, "", true};
}

Applied InterfaceFeature::vsan_command(const pinfo &command)
{
    const int32_t vsan = number_argument(command, 0);
    const auto found = vsans_.find(vsan);
    if (command.command_id == kVsanSuspend) {
        if (found == vsans_.end())
            return refused(vsan_text(vsan) + " does not exist");
        found->second.suspended = !command.no_flag;
        return {0, "", true};
    }
    if (!command.no_flag) {
        vsans_[vsan].name = text_argument(command, 1);
        return {0, "", true};
    }
    if (found == vsans_.end())
        return refused(vsan_text(vsan) + " does not exist");
    for (const auto &[index, port] : ports_) {
        if (port.vsan == vsan)
            return refused(vsan_text(vsan) + " still holds " + name_of(index));
    }
    vsans_.erase(found);
    return {0, "", true};
}

Applied InterfaceFeature::show_brief(const pinfo &command) const
{
    const param_arg *ranges = argument(command, 0);
    std::vector<uint32_t> wanted;
    if (ranges && ranges->type == TYPE_INTERFACE_RANGE)
        wanted = indexes_of(ranges);
    else
        for (const auto &entry : ports_)
            wanted.push_back(entry.first);
    std::string text = "Interface        VSAN  Admin  Speed  Mode  Description\n";
    char line[160];
    for (const uint32_t index : wanted) {
        const auto found = ports_.find(index);
        const Port port = found != ports_.end() ? found->second : Port{};
        std::snprintf(line, sizeof line, "%-16s %4d  %-5s  %-5s  %-4s  %s\n", name_of(index).c_str(),
                      port.vsan, port.up ? "up" : "down",
                      port.speed.empty() ? "auto" : port.speed.c_str(),
                      port.port_mode.empty() ? "auto" : port.port_mode.c_str(), port.description.c_str());
        text += line;
    }
    return {0, text, false};
}

Applied InterfaceFeature::show_vsans(const pinfo &command) const
{
    const std::vector<integer_range> ranges = range_list_argument(command, 0);
    if (ranges.empty())
        return refused("interface: VSANs without their ranges");
    std::map<int32_t, Vsan> all = vsans_;
    all.emplace(1, Vsan{"VSAN0001", false});
    std::string text;
    for (const auto &[id, vsan] : all) {
        const auto number = static_cast<uint32_t>(id); // a lambda may not name a structured binding
        const auto in = [number](const integer_range &r) { return number >= r.low && number <= r.high; };
        if (std::any_of(ranges.begin(), ranges.end(), in))
            text += "vsan " + std::to_string(id) + " information\n  name:" + vsan.name +
                    "  state:" + (vsan.suspended ? "suspended" : "active") + "\n";
    }
    return {0, text.empty() ? "No VSANs in these ranges\n" : text, false};
}

std::vector<wex_shell::ConfigBlock> InterfaceFeature::running_config() const
{
    std::vector<wex_shell::ConfigBlock> blocks;
    for (const auto &[id, vsan] : vsans_) {
        blocks.push_back({kVsanPriority, "vsan " + std::to_string(id) + " name " + vsan.name + "\n"});
        if (vsan.suspended)
            blocks.push_back({kVsanPriority, "vsan " + std::to_string(id) + " suspend\n"});
    }
    for (const auto &[index, port] : ports_) {
        std::string text = "interface " + name_of(index) + "\n";
        if (port.up)
            text += "no shutdown\n";
        if (!port.speed.empty())
            text += "speed " + port.speed + "\n";
        if (!port.port_mode.empty())
            text += "port-mode " + port.port_mode + "\n";
        if (!port.description.empty())
            text += "description " + port.description + "\n";
        if (port.vsan != 1)
            text += "vsan " + std::to_string(port.vsan) + "\n";
        blocks.push_back({kInterfacePriority, std::move(text)});
    }
    return blocks;
}

} // namespace wex_feature
