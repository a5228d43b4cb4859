#include "common/param_types.h"

#include <wex/parse_tree.h>

#include <cstdio>
#include <cstring>
#include <string_view>

namespace
{

using wex::DescriptorShows;
using wex::ParamType;

template <typename T> const T *value_of(const param_arg *arg) noexcept
{
    return static_cast<const T *>(arg->value);
}

void print_nothing(const param_arg *) noexcept {}

void print_text(const param_arg *arg) noexcept
{
    std::fputs(value_of<char>(arg), stdout);
}

// The text of a TYPE_LEN_VALUE is read no further than the length the
// value states, terminated or not.
void print_len_value(const param_arg *arg) noexcept
{
    const len_value *value = value_of<len_value>(arg);
    if (value->length <= 8) {
        std::printf("len %d val %d\n", static_cast<int>(value->length), value->number);
        return;
    }
    const std::string_view text(value->text, strnlen(value->text, value->length));
    std::printf("len %d str %.*s\n", static_cast<int>(value->length), static_cast<int>(text.size()),
                text.data());
}

void print_either_address(const param_arg *arg) noexcept
{
    if (arg->addr_type == TYPE_IPV4) {
        std::fputs("[IPv4]: ", stdout);
        print_ipv4(value_of<wex_inet_addr_t>(arg));
    } else {
        std::fputs("[IPv6]: ", stdout);
        print_ipv6(value_of<wex_inet_addr_t>(arg));
    }
}

void print_interface_mask(uint64_t mask) noexcept
{
    std::fputs("Interface mask: ", stdout);
    print_u_long_long(mask);
}

constexpr ParamType kParamTypes[] = {
    {TYPE_NONE, "TYPE_NONE", DescriptorShows::none, "None :", print_nothing},
    {TYPE_STRING, "TYPE_STRING", DescriptorShows::name_and_min, "String : ", print_text},
    {TYPE_LINE, "TYPE_LINE", DescriptorShows::name, "Line : ", print_text},
    {TYPE_URI, "TYPE_URI", DescriptorShows::uri_mask,
     "URI: ", [](const param_arg *arg) noexcept { wex_uri_info_print(value_of<uri_info>(arg)); }},
    {TYPE_DNS_NAME, "TYPE_DNS_NAME", DescriptorShows::name,
     "DNS name: ", [](const param_arg *arg) noexcept { print_dns_name(value_of<char>(arg)); }},
    {TYPE_USERATHOST, "TYPE_USERATHOST", DescriptorShows::name,
     "user@host: ", [](const param_arg *arg) noexcept { print_user_at_host(value_of<char>(arg)); }},
    {TYPE_LEN_VALUE, "TYPE_LEN_VALUE", DescriptorShows::none, "", print_len_value},
    {TYPE_IP, "TYPE_IP", DescriptorShows::name,
     "IP : ", [](const param_arg *arg) noexcept { print_ip(value_of<uint32_t>(arg)); }},
    {TYPE_IPV4, "TYPE_IPV4", DescriptorShows::name,
     "IPv4 address: ", [](const param_arg *arg) noexcept { print_ipv4(value_of<wex_inet_addr_t>(arg)); }},
    {TYPE_IPV6, "TYPE_IPV6", DescriptorShows::name,
     "IPv6 address: ", [](const param_arg *arg) noexcept { print_ipv6(value_of<wex_inet_addr_t>(arg)); }},
    {TYPE_IPV4_OR_IPV6, "TYPE_IPV4_OR_IPV6", DescriptorShows::none, "IPv4 OR v6", print_either_address},
    {TYPE_INET_NAME, "TYPE_INET_NAME", DescriptorShows::name,
     "INET name: ", [](const param_arg *arg) noexcept { print_inet_name(value_of<char>(arg)); }},
    {TYPE_INT, "TYPE_INT", DescriptorShows::decimal_range,
     "Integer :", [](const param_arg *arg) noexcept { print_integer(*value_of<int32_t>(arg)); }},
    {TYPE_INT_RANGE, "TYPE_INT_RANGE", DescriptorShows::decimal_range, "Integer Range :",
     [](const param_arg *arg) noexcept { print_integer_range(value_of<integer_range>(arg)); }},
    {TYPE_HEX, "TYPE_HEX", DescriptorShows::hex_range,
     "Hex :", [](const param_arg *arg) noexcept { print_intx(*value_of<uint32_t>(arg)); }},
    {TYPE_INT_MULTI_RANGE, "TYPE_INT_MULTI_RANGE", DescriptorShows::decimal_range, "Int Multi Range: ",
     [](const param_arg *arg) noexcept { print_integer_multi_range(value_of<integer_multi_range>(arg)); }},
    {TYPE_HEX_RANGE, "TYPE_HEX_RANGE", DescriptorShows::hex_range,
     "Hex Range:", [](const param_arg *arg) noexcept { print_hex_range(value_of<integer_range>(arg)); }},
    {TYPE_HEX_MULTI_RANGE, "TYPE_HEX_MULTI_RANGE", DescriptorShows::hex_range, "Hex Range:",
     [](const param_arg *arg) noexcept { print_hex_multi_range(value_of<hex_multi_range>(arg)); }},
    {TYPE_INTERFACE, "TYPE_INTERFACE", DescriptorShows::interface_mask, "Ifindex: ",
     [](const param_arg *arg) noexcept {
         print_interface(value_of<uint32_t>(arg));
         print_interface_mask(arg->intf_mask);
     }},
    {TYPE_INTERFACE_RANGE, "TYPE_INTERFACE_RANGE", DescriptorShows::interface_mask, "Ifindex Range : ",
     [](const param_arg *arg) noexcept {
         print_interface_range(value_of<intf_range_list>(arg));
         print_interface_mask(arg->intf_mask);
     }},
    {TYPE_MAC, "TYPE_MAC", DescriptorShows::name,
     "MAC : ", [](const param_arg *arg) noexcept { print_hex(arg->value, 6); }},
    {TYPE_WWN, "TYPE_WWN", DescriptorShows::name,
     "WWN : ", [](const param_arg *arg) noexcept { print_hex(arg->value, 8); }},
    {TYPE_LUN, "TYPE_LUN", DescriptorShows::name,
     "Lun : ", [](const param_arg *arg) noexcept { print_hex(arg->value, 8); }},
    {TYPE_VSAN, "TYPE_VSAN", DescriptorShows::name,
     "Vsan:", [](const param_arg *arg) noexcept { print_integer(*value_of<int32_t>(arg)); }},
    {TYPE_VSAN_RANGE, "TYPE_VSAN_RANGE", DescriptorShows::name, "Vsan Range: ",
     [](const param_arg *arg) noexcept { print_integer_range(value_of<integer_range>(arg)); }},
    {TYPE_VSAN_MULTI_RANGE, "TYPE_VSAN_MULTI_RANGE", DescriptorShows::decimal_range, "Vsan Multi Range: ",
     [](const param_arg *arg) noexcept { print_integer_multi_range(value_of<integer_multi_range>(arg)); }},
    {TYPE_GUID, "TYPE_GUID", DescriptorShows::name,
     "GUID: ", [](const param_arg *arg) noexcept { print_guid(value_of<guid>(arg)); }},
    {TYPE_FC_ID, "TYPE_FC_ID", DescriptorShows::name,
     "Fcid : ", [](const param_arg *arg) noexcept { print_hex(arg->value, 4); }},
    {TYPE_COMMUNITY, "TYPE_COMMUNITY", DescriptorShows::none,
     "Community: ", [](const param_arg *arg) noexcept { print_community(value_of<community>(arg)); }},
};

} // namespace

namespace wex
{

const ParamType *find_param_type(uint32_t code) noexcept
{
    for (const ParamType &t : kParamTypes) {
        if (t.code == code)
            return &t;
    }
    return nullptr;
}

} // namespace wex
