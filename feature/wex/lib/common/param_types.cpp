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

// The value through the printer of its type, which takes it by address.
template <typename T, auto Print> void print_pointed(const param_arg *arg) noexcept
{
    Print(value_of<T>(arg));
}

// The number through the printer of its type, which takes it by value.
template <typename T, auto Print> void print_number(const param_arg *arg) noexcept
{
    Print(*value_of<T>(arg));
}

// The first Count bytes of the value in hex.
template <int Count> void print_bytes(const param_arg *arg) noexcept
{
    print_hex(arg->value, Count);
}

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

// An interface or range through its printer, then the mask of interface
// types the parameter takes.
template <typename T, auto Print> void print_interface_value(const param_arg *arg) noexcept
{
    Print(value_of<T>(arg));
    std::fputs("Interface mask: ", stdout);
    print_u_long_long(arg->intf_mask);
}

constexpr ParamType kParamTypes[] = {
    {TYPE_NONE, "TYPE_NONE", DescriptorShows::none, "None :", print_nothing},
    {TYPE_STRING, "TYPE_STRING", DescriptorShows::name_and_min, "String : ", print_text},
    {TYPE_LINE, "TYPE_LINE", DescriptorShows::name, "Line : ", print_text},
    {TYPE_URI, "TYPE_URI", DescriptorShows::uri_mask, "URI: ", print_pointed<uri_info, wex_uri_info_print>},
    {TYPE_DNS_NAME, "TYPE_DNS_NAME", DescriptorShows::name,
     "DNS name: ", print_pointed<char, print_dns_name>},
    {TYPE_USERATHOST, "TYPE_USERATHOST", DescriptorShows::name,
     "user@host: ", print_pointed<char, print_user_at_host>},
    {TYPE_LEN_VALUE, "TYPE_LEN_VALUE", DescriptorShows::none, "", print_len_value},
    {TYPE_IP, "TYPE_IP", DescriptorShows::name, "IP : ", print_pointed<uint32_t, print_ip>},
    {TYPE_IPV4, "TYPE_IPV4", DescriptorShows::name,
     "IPv4 address: ", print_pointed<wex_inet_addr_t, print_ipv4>},
    {TYPE_IPV6, "TYPE_IPV6", DescriptorShows::name,
     "IPv6 address: ", print_pointed<wex_inet_addr_t, print_ipv6>},
    {TYPE_IPV4_OR_IPV6, "TYPE_IPV4_OR_IPV6", DescriptorShows::none, "IPv4 OR v6", print_either_address},
    {TYPE_INET_NAME, "TYPE_INET_NAME", DescriptorShows::name,
     "INET name: ", print_pointed<char, print_inet_name>},
    {TYPE_INT, "TYPE_INT", DescriptorShows::decimal_range, "Integer :", print_number<int32_t, print_integer>},
    {TYPE_INT_RANGE, "TYPE_INT_RANGE", DescriptorShows::decimal_range,
     "Integer Range :", print_pointed<integer_range, print_integer_range>},
    {TYPE_HEX, "TYPE_HEX", DescriptorShows::hex_range, "Hex :", print_number<uint32_t, print_intx>},
    {TYPE_INT_MULTI_RANGE, "TYPE_INT_MULTI_RANGE", DescriptorShows::decimal_range,
     "Int Multi Range: ", print_pointed<integer_multi_range, print_integer_multi_range>},
    {TYPE_HEX_RANGE, "TYPE_HEX_RANGE", DescriptorShows::hex_range,
     "Hex Range:", print_pointed<integer_range, print_hex_range>},
    {TYPE_HEX_MULTI_RANGE, "TYPE_HEX_MULTI_RANGE", DescriptorShows::hex_range,
     "Hex Range:", print_pointed<hex_multi_range, print_hex_multi_range>},
    {TYPE_INTERFACE, "TYPE_INTERFACE", DescriptorShows::interface_mask,
     "Ifindex: ", print_interface_value<uint32_t, print_interface>},
    {TYPE_INTERFACE_RANGE, "TYPE_INTERFACE_RANGE", DescriptorShows::interface_mask,
     "Ifindex Range : ", print_interface_value<intf_range_list, print_interface_range>},
    {TYPE_MAC, "TYPE_MAC", DescriptorShows::name, "MAC : ", print_bytes<6>},
    {TYPE_WWN, "TYPE_WWN", DescriptorShows::name, "WWN : ", print_bytes<8>},
    {TYPE_LUN, "TYPE_LUN", DescriptorShows::name, "Lun : ", print_bytes<8>},
    {TYPE_VSAN, "TYPE_VSAN", DescriptorShows::name, "Vsan:", print_number<int32_t, print_integer>},
    {TYPE_VSAN_RANGE, "TYPE_VSAN_RANGE", DescriptorShows::name,
     "Vsan Range: ", print_pointed<integer_range, print_integer_range>},
    {TYPE_VSAN_MULTI_RANGE, "TYPE_VSAN_MULTI_RANGE", DescriptorShows::decimal_range,
     "Vsan Multi Range: ", print_pointed<integer_multi_range, print_integer_multi_range>},
    {TYPE_GUID, "TYPE_GUID", DescriptorShows::name, "GUID: ", print_pointed<guid, print_guid>},
    {TYPE_FC_ID, "TYPE_FC_ID", DescriptorShows::name, "Fcid : ", print_bytes<4>},
    {TYPE_COMMUNITY, "TYPE_COMMUNITY", DescriptorShows::none,
     "Community: ", print_pointed<community, print_community>},
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
