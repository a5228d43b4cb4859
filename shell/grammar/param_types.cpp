#include "param_types.h"

#include "source_text.h"

#include <wex/parse_tree.h>

#include <array>

namespace wex_grammar
{
namespace
{

constexpr std::array kTypes = {
    ParamType{TYPE_NONE, "TYPE_NONE", "", Bounds::none},
    ParamType{TYPE_STRING, "TYPE_STRING", "string", Bounds::length},
    ParamType{TYPE_LINE, "TYPE_LINE", "line", Bounds::none},
    ParamType{TYPE_URI, "TYPE_URI", "uri", Bounds::uri_mask},
    ParamType{TYPE_DNS_NAME, "TYPE_DNS_NAME", "dns-name", Bounds::none},
    ParamType{TYPE_USERATHOST, "TYPE_USERATHOST", "user-at-host", Bounds::none},
    ParamType{TYPE_LEN_VALUE, "TYPE_LEN_VALUE", "", Bounds::none},
    ParamType{TYPE_IP, "TYPE_IP", "ip", Bounds::none},
    ParamType{TYPE_IPV4, "TYPE_IPV4", "ipv4", Bounds::none},
    ParamType{TYPE_IPV6, "TYPE_IPV6", "ipv6", Bounds::none},
    ParamType{TYPE_IPV4_OR_IPV6, "TYPE_IPV4_OR_IPV6", "ipv4-or-ipv6", Bounds::none},
    ParamType{TYPE_INET_NAME, "TYPE_INET_NAME", "inet-name", Bounds::none},
    ParamType{TYPE_INT, "TYPE_INT", "int", Bounds::decimal},
    ParamType{TYPE_INT_RANGE, "TYPE_INT_RANGE", "int-range", Bounds::decimal},
    ParamType{TYPE_HEX, "TYPE_HEX", "hex", Bounds::hex},
    ParamType{TYPE_INT_MULTI_RANGE, "TYPE_INT_MULTI_RANGE", "int-multi-range", Bounds::decimal},
    ParamType{TYPE_HEX_RANGE, "TYPE_HEX_RANGE", "hex-range", Bounds::hex},
    ParamType{TYPE_HEX_MULTI_RANGE, "TYPE_HEX_MULTI_RANGE", "hex-multi-range", Bounds::hex},
    ParamType{TYPE_INTERFACE, "TYPE_INTERFACE", "interface", Bounds::interfaces},
    ParamType{TYPE_INTERFACE_RANGE, "TYPE_INTERFACE_RANGE", "interface-range", Bounds::interfaces},
    ParamType{TYPE_MAC, "TYPE_MAC", "mac", Bounds::none},
    ParamType{TYPE_WWN, "TYPE_WWN", "wwn", Bounds::none},
    ParamType{TYPE_LUN, "TYPE_LUN", "lun", Bounds::none},
    ParamType{TYPE_VSAN, "TYPE_VSAN", "vsan", Bounds::none},
    ParamType{TYPE_VSAN_RANGE, "TYPE_VSAN_RANGE", "vsan-range", Bounds::none},
    ParamType{TYPE_VSAN_MULTI_RANGE, "TYPE_VSAN_MULTI_RANGE", "vsan-multi-range", Bounds::decimal},
    ParamType{TYPE_GUID, "TYPE_GUID", "guid", Bounds::none},
    ParamType{TYPE_FC_ID, "TYPE_FC_ID", "fc-id", Bounds::none},
    ParamType{TYPE_COMMUNITY, "TYPE_COMMUNITY", "", Bounds::none},
};

constexpr Subtype kSubtypes[] = {
    {"module", -1, TYPE_INT},
    {"ficon-port-addr", -2, TYPE_INT},
    {"ficon-port-addr-hex", -2, TYPE_HEX},
    {"ficon-log-if", -3, TYPE_INT},
    {"ficon-log-if-hex", -3, TYPE_HEX},
    {"ficon-impl-port-addr", -4, TYPE_INT},
    {"lakeshore-range", -5, TYPE_INT},
    {"lakeshore-asic", -6, TYPE_INT},
    {"xbar", -7, TYPE_INT},
    {"xbar_asic_inst", -8, TYPE_INT},
};

template <typename Match> const ParamType *find(Match match)
{
    for (const ParamType &type : kTypes) {
        if (match(type))
            return &type;
    }
    return nullptr;
}

} // namespace

const ParamType *type_by_code(uint32_t code)
{
    return find([&](const ParamType &t) { return t.code == code; });
}

const ParamType *type_by_name(std::string_view name)
{
    return find([&](const ParamType &t) { return t.name == name; });
}

const ParamType *type_by_word(std::string_view word)
{
    return find([&](const ParamType &t) { return !t.word.empty() && t.word == word; });
}

const Subtype *subtype_by_placeholder(std::string_view placeholder)
{
    for (const Subtype &s : kSubtypes) {
        if (s.placeholder == placeholder)
            return &s;
    }
    return nullptr;
}

const Subtype *subtype_by_code(int32_t code, uint32_t type)
{
    for (const Subtype &s : kSubtypes) {
        if (s.code == code && s.type == type)
            return &s;
    }
    return nullptr;
}

std::string bound_number(uint32_t value, Bounds bounds)
{
    if (bounds == Bounds::hex)
        return hex_number(value);
    if (bounds == Bounds::decimal)
        return std::to_string(static_cast<int32_t>(value));
    return std::to_string(value);
}

std::string bounds_text(const ParamFields &param, Bounds bounds)
{
    switch (bounds) {
    case Bounds::length:
        return std::to_string(param.min);
    case Bounds::uri_mask:
        return hex_number(param.min);
    case Bounds::decimal:
    case Bounds::hex:
        return bound_number(param.min, bounds) + ".." + bound_number(param.max, bounds);
    case Bounds::interfaces:
        return hex_number(param.mask);
    case Bounds::none:
        break;
    }
    return "";
}

} // namespace wex_grammar
