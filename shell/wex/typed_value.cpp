#include "typed_value.h"

#include <wex/param.h>

#include "if_index.h"

#include <arpa/inet.h>
#include <charconv>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace wex_shell
{
namespace
{

// The longest text value: far beyond any name the features keep, and small
// enough that every argument of a command fits one request to its feature.
constexpr std::size_t kMaxText = 1024;
// Ranges in one list: as many as an interface list holds.
constexpr std::size_t kMaxRanges = WEX_INTF_RANGE_MAX_INDEX + 1;

struct Span {
    int64_t low, high;
};

constexpr Span kVsans{1, 4094};
constexpr Span kAnyInt{INT32_MIN, INT32_MAX};
constexpr Span kAnyHex{0, UINT32_MAX};

using Bytes = std::vector<uint8_t>;

template <typename Record> Bytes bytes_of(const Record &record)
{
    Bytes bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

Bytes text_bytes(std::string_view text)
{
    Bytes bytes(text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

std::optional<int64_t> decimal(std::string_view word)
{
    int64_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (word.empty() || error != std::errc() || end != word.data() + word.size())
        return std::nullopt;
    return value;
}

// Bare hexadecimal digits, at most max_digits of them.
std::optional<uint64_t> hex_digits(std::string_view digits, std::size_t max_digits)
{
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.empty() || digits.size() > max_digits || error != std::errc() ||
        end != digits.data() + digits.size())
        return std::nullopt;
    return value;
}

// A number written 0x and hexadecimal digits.
std::optional<uint64_t> hexadecimal(std::string_view word, std::size_t max_digits = 8)
{
    if (word.size() < 3 || word[0] != '0' || (word[1] != 'x' && word[1] != 'X'))
        return std::nullopt;
    return hex_digits(word.substr(2), max_digits);
}

bool is_hex(uint32_t type)
{
    return type == TYPE_HEX || type == TYPE_HEX_RANGE || type == TYPE_HEX_MULTI_RANGE;
}

bool is_vsan(uint32_t type)
{
    return type == TYPE_VSAN || type == TYPE_VSAN_RANGE || type == TYPE_VSAN_MULTI_RANGE;
}

// The bounds of a numeric parameter. A descriptor with no bounds set (a
// subtype whose hardware has not reported its range yet) takes any value of
// its kind: refusing every value would make the command unusable.
Span bounds_of(const param_descriptor &param)
{
    if (param.min == 0 && param.max == 0)
        return is_vsan(param.type) ? kVsans : is_hex(param.type) ? kAnyHex : kAnyInt;
    if (is_hex(param.type))
        return {param.min, param.max};
    return {static_cast<int32_t>(param.min), static_cast<int32_t>(param.max)};
}

std::optional<int64_t> number_in(const param_descriptor &param, std::string_view word)
{
    std::optional<int64_t> value;
    if (!is_hex(param.type))
        value = decimal(word);
    else if (const auto hex = hexadecimal(word))
        value = static_cast<int64_t>(*hex);
    const Span span = bounds_of(param);
    if (!value || *value < span.low || *value > span.high)
        return std::nullopt;
    return value;
}

// "A" or "A-B" with A no greater than B; a leading minus belongs to A.
std::optional<integer_range> range_in(const param_descriptor &param, std::string_view word)
{
    const std::size_t dash = word.find('-', 1);
    const auto low = number_in(param, word.substr(0, dash));
    const auto high = dash == std::string_view::npos ? low : number_in(param, word.substr(dash + 1));
    if (!low || !high || *low > *high)
        return std::nullopt;
    return integer_range{static_cast<uint32_t>(*low), static_cast<uint32_t>(*high)};
}

std::optional<std::vector<integer_range>> ranges_in(const param_descriptor &param, std::string_view word)
{
    std::vector<integer_range> ranges;
    while (ranges.size() < kMaxRanges) {
        const std::size_t comma = word.find(',');
        const auto range = range_in(param, word.substr(0, comma));
        if (!range)
            return std::nullopt;
        ranges.push_back(*range);
        if (comma == std::string_view::npos)
            return ranges;
        word.remove_prefix(comma + 1);
    }
    return std::nullopt;
}

std::optional<Bytes> read_number(const param_descriptor &param, std::string_view word)
{
    const auto value = number_in(param, word);
    if (!value)
        return std::nullopt;
    return bytes_of(static_cast<uint32_t>(*value));
}

std::optional<Bytes> read_range(const param_descriptor &param, std::string_view word)
{
    const auto range = range_in(param, word);
    return range ? std::optional(bytes_of(*range)) : std::nullopt;
}

// The integer and VSAN lists carry a word before their count; the
// hexadecimal list starts with its count.
std::optional<Bytes> read_multi_range(const param_descriptor &param, std::string_view word)
{
    const auto ranges = ranges_in(param, word);
    if (!ranges)
        return std::nullopt;
    Bytes bytes;
    if (param.type != TYPE_HEX_MULTI_RANGE)
        bytes = bytes_of(uint32_t{0});
    const Bytes count = bytes_of(static_cast<uint32_t>(ranges->size()));
    bytes.insert(bytes.end(), count.begin(), count.end());
    for (const integer_range &range : *ranges) {
        const Bytes pair = bytes_of(range);
        bytes.insert(bytes.end(), pair.begin(), pair.end());
    }
    return bytes;
}

std::optional<Bytes> read_string(const param_descriptor &param, std::string_view word)
{
    const std::size_t longest = param.type == TYPE_STRING && param.min ? param.min : kMaxText;
    if (word.empty() || word.size() > std::min(longest, kMaxText))
        return std::nullopt;
    return text_bytes(word);
}

bool is_label(std::string_view label)
{
    if (label.empty() || label.size() > 63 || label.front() == '-' || label.back() == '-')
        return false;
    for (const char c : label) {
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-')
            return false;
    }
    return true;
}

bool is_dns_name(std::string_view name)
{
    if (name.empty() || name.size() > 253)
        return false;
    for (std::size_t dot; (dot = name.find('.')) != std::string_view::npos; name.remove_prefix(dot + 1)) {
        if (!is_label(name.substr(0, dot)))
            return false;
    }
    return is_label(name);
}

std::optional<uint32_t> ipv4_in(std::string_view word)
{
    in_addr address{};
    if (word.size() > 15 || inet_pton(AF_INET, std::string(word).c_str(), &address) != 1)
        return std::nullopt;
    return address.s_addr;
}

std::optional<Bytes> read_dns_name(const param_descriptor &, std::string_view word)
{
    return is_dns_name(word) ? std::optional(text_bytes(word)) : std::nullopt;
}

std::optional<Bytes> read_inet_name(const param_descriptor &, std::string_view word)
{
    return ipv4_in(word) || is_dns_name(word) ? std::optional(text_bytes(word)) : std::nullopt;
}

std::optional<Bytes> read_user_at_host(const param_descriptor &, std::string_view word)
{
    const std::size_t at = word.find('@');
    if (at == 0 || at == std::string_view::npos || !is_dns_name(word.substr(at + 1)) ||
        word.substr(0, at).find_first_of(" :/") != std::string_view::npos)
        return std::nullopt;
    return text_bytes(word);
}

std::optional<Bytes> read_ip(const param_descriptor &, std::string_view word)
{
    const auto address = ipv4_in(word);
    return address ? std::optional(bytes_of(*address)) : std::nullopt;
}

std::optional<wex_inet_addr_t> inet_in(std::string_view word, int family)
{
    wex_inet_addr_t address{};
    if (word.size() > 45 || inet_pton(family, std::string(word).c_str(), address.address) != 1)
        return std::nullopt;
    address.family = family == AF_INET ? 1 : 2;
    address.prefix_len = family == AF_INET ? 32 : 128;
    return address;
}

std::optional<Bytes> read_ipv4(const param_descriptor &, std::string_view word)
{
    const auto address = inet_in(word, AF_INET);
    return address ? std::optional(bytes_of(*address)) : std::nullopt;
}

std::optional<Bytes> read_ipv6(const param_descriptor &, std::string_view word)
{
    const auto address = inet_in(word, AF_INET6);
    return address ? std::optional(bytes_of(*address)) : std::nullopt;
}

std::optional<Bytes> read_uri(const param_descriptor &param, std::string_view word)
{
    uri_info info{};
    if (word.size() > kMaxText || wex_xml_parse_uri(&info, std::string(word).c_str()) != 0)
        return std::nullopt;
    // The descriptor's number is the set of URI kinds accepted, kind n at bit n - 1.
    if (info.type == 0 || info.type > 32 || !(param.min >> (info.type - 1) & 1))
        return std::nullopt;
    return bytes_of(info);
}

// Bytes as hexadecimal pairs with one separator between them ("10:00:...").
std::optional<Bytes> pairs_in(std::string_view word, std::size_t count, char separator)
{
    if (word.size() != count * 3 - 1)
        return std::nullopt;
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        const char *pair = word.data() + 3 * i;
        if ((i + 1 < count && pair[2] != separator) ||
            std::from_chars(pair, pair + 2, bytes[i], 16).ptr != pair + 2)
            return std::nullopt;
    }
    return bytes;
}

Bytes big_endian(uint64_t value, std::size_t size)
{
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(value >> (8 * (size - 1 - i)));
    return bytes;
}

std::optional<Bytes> read_mac(const param_descriptor &, std::string_view word)
{
    if (auto bytes = pairs_in(word, 6, ':'))
        return bytes;
    // The dotted form: three groups of four digits, "001b.21aa.0f10".
    if (word.size() != 14 || word[4] != '.' || word[9] != '.')
        return std::nullopt;
    const std::string joined =
        std::string(word.substr(0, 4)) + std::string(word.substr(5, 4)) + std::string(word.substr(10, 4));
    const auto value = hex_digits(joined, 12);
    return value ? std::optional(big_endian(*value, 6)) : std::nullopt;
}

std::optional<Bytes> read_wwn(const param_descriptor &param, std::string_view word)
{
    if (param.type == TYPE_LUN) {
        if (const auto value = hexadecimal(word, 16))
            return big_endian(*value, 8);
    }
    return pairs_in(word, 8, ':');
}

std::optional<Bytes> read_fc_id(const param_descriptor &, std::string_view word)
{
    const auto value = hexadecimal(word, 6);
    return value ? std::optional(big_endian(*value, 4)) : std::nullopt;
}

std::optional<Bytes> read_guid(const param_descriptor &, std::string_view word)
{
    if (word.size() == 38 && word.front() == '{' && word.back() == '}')
        word = word.substr(1, 36);
    if (word.size() != 36 || word[8] != '-' || word[13] != '-' || word[18] != '-' || word[23] != '-')
        return std::nullopt;
    const auto part = [&](std::size_t at, std::size_t digits) {
        return hex_digits(word.substr(at, digits), digits);
    };
    const auto data1 = part(0, 8), data2 = part(9, 4), data3 = part(14, 4), head = part(19, 4),
               tail = part(24, 12);
    if (!data1 || !data2 || !data3 || !head || !tail)
        return std::nullopt;
    guid value{
        static_cast<uint32_t>(*data1), static_cast<uint16_t>(*data2), static_cast<uint16_t>(*data3), {}};
    const uint64_t low = *head << 48 | *tail;
    for (int i = 0; i < 8; ++i)
        value.data4[i] = static_cast<uint8_t>(low >> (8 * (7 - i)));
    return bytes_of(value);
}

std::optional<Bytes> read_community(const param_descriptor &, std::string_view word)
{
    const std::size_t colon = word.find(':');
    const auto first = decimal(word.substr(0, colon));
    const auto second = colon == std::string_view::npos ? std::nullopt : decimal(word.substr(colon + 1));
    if (!first || !second || *first < 0 || *first > 65535 || *second < 0 || *second > 65535)
        return std::nullopt;
    return bytes_of(community{static_cast<int32_t>(*first), static_cast<int32_t>(*second)});
}

// A number is carried as the number; anything else as a text longer than
// the eight bytes that mark a number.
std::optional<Bytes> read_len_value(const param_descriptor &, std::string_view word)
{
    Bytes bytes(8);
    const auto number = decimal(word);
    if (number && *number >= INT32_MIN && *number <= INT32_MAX) {
        const len_value head{static_cast<int32_t>(*number), 4};
        std::memcpy(bytes.data(), &head, sizeof head);
        return bytes;
    }
    if (word.empty() || word.size() > kMaxText)
        return std::nullopt;
    const len_value head{0, static_cast<uint32_t>(std::max<std::size_t>(word.size() + 1, 9))};
    std::memcpy(bytes.data(), &head, sizeof head);
    const Bytes text = text_bytes(word);
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.resize(8 + head.length, 0);
    return bytes;
}

bool type_accepted(const param_descriptor &param, uint32_t if_index)
{
    uint8_t type = 0;
    const uint64_t mask = param.mask;
    return if_index_get_type(if_index, &type) == 0 && type < 64 && (mask == 0 || (mask >> type & 1));
}

// One run: a name, or a name, a dash and the last port of the same slot or
// the last interface's name ("fc1/1-4", "fc1/5-fc2/3").
std::optional<intf_range> run_in(const param_descriptor &param, const std::string &text)
{
    uint32_t first = 0, last = 0;
    const int taken = if_index_parse(text.c_str(), &first);
    if (taken < 0 || !type_accepted(param, first))
        return std::nullopt;
    const std::string rest = text.substr(static_cast<std::size_t>(taken));
    if (rest.empty())
        return intf_range{first, first};
    if (rest[0] != '-')
        return std::nullopt;
    const auto port = decimal(rest.substr(1));
    if (port && *port >= 0 && *port <= 0xFFFF)
        last = (first & 0xFFFF0000u) | static_cast<uint32_t>(*port);
    else if (if_index_parse(rest.c_str() + 1, &last) != static_cast<int>(rest.size() - 1))
        return std::nullopt;
    uint8_t first_type = 0, last_type = 0;
    if (if_index_get_type(last, &last_type) != 0 || if_index_get_type(first, &first_type) != 0 ||
        first_type != last_type || last < first)
        return std::nullopt;
    return intf_range{first, last};
}

uint64_t type_bit(uint32_t if_index)
{
    uint8_t type = 0;
    if_index_get_type(if_index, &type);
    return type < 64 ? uint64_t{1} << type : 0;
}

std::optional<TypedValue> read_interfaces(const param_descriptor &param, std::string_view word)
{
    TypedValue value{param.type, 0, 0, {}};
    if (param.type == TYPE_INTERFACE) {
        uint32_t index = 0;
        if (if_index_parse(std::string(word).c_str(), &index) != static_cast<int>(word.size()) ||
            !type_accepted(param, index))
            return std::nullopt;
        value.intf_mask = type_bit(index);
        value.bytes = bytes_of(index);
        return value;
    }
    intf_range_list list{};
    for (std::size_t comma = 0; comma != std::string_view::npos; word.remove_prefix(comma + 1)) {
        comma = word.find(',');
        const auto run =
            list.count < kMaxRanges ? run_in(param, std::string(word.substr(0, comma))) : std::nullopt;
        if (!run)
            return std::nullopt;
        list.ranges[list.count++] = *run;
        value.intf_mask |= type_bit(run->first);
        if (comma == std::string_view::npos)
            break;
    }
    value.bytes = bytes_of(list);
    return value;
}

using Reader = std::optional<Bytes> (*)(const param_descriptor &, std::string_view);

struct TypeRule {
    uint32_t type;
    Reader read;
    const char *form; // what the type expects; %L and %H stand for its bounds
};

constexpr TypeRule kRules[] = {
    {TYPE_STRING, read_string, "a text of at most %N characters"},
    {TYPE_LINE, read_string, "a text"},
    {TYPE_URI, read_uri, "a URI of kind %U, as ftp://host/path"},
    {TYPE_DNS_NAME, read_dns_name, "a domain name, as example.com"},
    {TYPE_USERATHOST, read_user_at_host, "user@host"},
    {TYPE_LEN_VALUE, read_len_value, "a number or a text"},
    {TYPE_IP, read_ip, "an IPv4 address, as 10.0.0.1"},
    {TYPE_IPV4, read_ipv4, "an IPv4 address, as 10.0.0.1"},
    {TYPE_IPV6, read_ipv6, "an IPv6 address, as 2001:db8::1"},
    {TYPE_IPV4_OR_IPV6, nullptr, "an IPv4 or IPv6 address, as 10.0.0.1 or 2001:db8::1"},
    {TYPE_INET_NAME, read_inet_name, "a host name or IPv4 address"},
    {TYPE_INT, read_number, "an integer from %L to %H"},
    {TYPE_INT_RANGE, read_range, "an integer or range from %L to %H, as %L-%H"},
    {TYPE_HEX, read_number, "a hexadecimal number from %L to %H"},
    {TYPE_INT_MULTI_RANGE, read_multi_range, "integers or ranges from %L to %H, as %L-%H,%H"},
    {TYPE_HEX_RANGE, read_range, "a hexadecimal number or range from %L to %H, as %L-%H"},
    {TYPE_HEX_MULTI_RANGE, read_multi_range, "hexadecimal numbers or ranges from %L to %H, as %L-%H,%H"},
    {TYPE_INTERFACE, nullptr, "an interface, as fc1/3"},
    {TYPE_INTERFACE_RANGE, nullptr, "interfaces, as fc1/1-4 or fc1/1,fc2/5-8"},
    {TYPE_MAC, read_mac, "a MAC address, as 00:1b:21:aa:0f:10"},
    {TYPE_WWN, read_wwn, "a WWN, as 10:00:00:00:c9:12:34:56"},
    {TYPE_LUN, read_wwn, "a LUN, as 0x0001000000000000"},
    {TYPE_VSAN, read_number, "a VSAN id from %L to %H"},
    {TYPE_VSAN_RANGE, read_range, "a VSAN id or range from %L to %H, as %L-%H"},
    {TYPE_VSAN_MULTI_RANGE, read_multi_range, "VSAN ids or ranges from %L to %H, as %L-%H,%H"},
    {TYPE_GUID, read_guid, "a GUID, as {01234567-89ab-cdef-0123-456789abcdef}"},
    {TYPE_FC_ID, read_fc_id, "an FC ID, as 0x010203"},
    {TYPE_COMMUNITY, read_community, "a community, as 100:200"},
};

const TypeRule *rule_of(uint32_t type)
{
    for (const TypeRule &rule : kRules) {
        if (rule.type == type)
            return &rule;
    }
    return nullptr;
}

std::string bound_text(const param_descriptor &param, int64_t bound)
{
    if (!is_hex(param.type))
        return std::to_string(bound);
    char text[16];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(bound));
    return text;
}

std::string uri_kinds(uint32_t mask)
{
    static constexpr const char *kKinds[] = {"bootflash", "slot0", "ftp",  "tftp",
                                             "scp",       "sftp",  "http", "volatile"};
    std::string kinds;
    for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
        if (mask >> kind & 1)
            kinds += (kinds.empty() ? "" : "/") + std::string(kKinds[kind]);
    }
    return kinds.empty() ? "none" : kinds;
}

std::optional<TypedValue> read_either_address(std::string_view word)
{
    for (const int family : {AF_INET, AF_INET6}) {
        if (const auto address = inet_in(word, family))
            return TypedValue{TYPE_IPV4_OR_IPV6, 0, family == AF_INET ? TYPE_IPV4 : TYPE_IPV6,
                              bytes_of(*address)};
    }
    return std::nullopt;
}

} // namespace

bool takes_rest_of_line(uint32_t type)
{
    return type == TYPE_LINE;
}

std::string expected_form(const param_descriptor &param)
{
    const TypeRule *rule = rule_of(param.type);
    if (!rule)
        return "a value of a type this shell cannot read";
    const Span span = bounds_of(param);
    std::string form;
    for (const char *p = rule->form; *p; ++p) {
        if (*p != '%' || !p[1]) {
            form += *p;
            continue;
        }
        switch (*++p) {
        case 'L':
            form += bound_text(param, span.low);
            break;
        case 'H':
            form += bound_text(param, span.high);
            break;
        case 'N':
            form += std::to_string(param.min ? std::min<std::size_t>(param.min, kMaxText) : kMaxText);
            break;
        default:
            form += uri_kinds(param.min);
            break;
        }
    }
    return form;
}

std::optional<TypedValue> read_value(const param_descriptor &param, std::string_view word, std::string &why)
{
    std::optional<TypedValue> value;
    const TypeRule *rule = rule_of(param.type);
    if (param.type == TYPE_INTERFACE || param.type == TYPE_INTERFACE_RANGE)
        value = read_interfaces(param, word);
    else if (param.type == TYPE_IPV4_OR_IPV6)
        value = read_either_address(word);
    else if (rule && rule->read) {
        if (auto bytes = rule->read(param, word))
            value = TypedValue{param.type, 0, 0, std::move(*bytes)};
    }
    if (!value)
        why = expected_form(param);
    return value;
}

bool value_fits(uint32_t type, std::span<const uint8_t> bytes)
{
    const auto word_at = [&](std::size_t at) {
        uint32_t word = 0;
        std::memcpy(&word, bytes.data() + at, sizeof word);
        return std::size_t{word};
    };
    switch (type) {
    case TYPE_INT_MULTI_RANGE:
    case TYPE_VSAN_MULTI_RANGE:
        return bytes.size() >= 8 && bytes.size() == 8 + sizeof(integer_range) * word_at(4);
    case TYPE_HEX_MULTI_RANGE:
        return bytes.size() >= 4 && bytes.size() == 4 + sizeof(integer_range) * word_at(0);
    case TYPE_INTERFACE_RANGE:
        return bytes.size() == sizeof(intf_range_list) && word_at(4) <= WEX_INTF_RANGE_MAX_INDEX + 1;
    case TYPE_INT_RANGE:
    case TYPE_HEX_RANGE:
    case TYPE_VSAN_RANGE:
    case TYPE_WWN:
    case TYPE_LUN:
    case TYPE_COMMUNITY:
        return bytes.size() == 8;
    case TYPE_INT:
    case TYPE_HEX:
    case TYPE_VSAN:
    case TYPE_FC_ID:
    case TYPE_INTERFACE:
        return bytes.size() == 4;
    default: // texts end inside their record whatever they hold
        return true;
    }
}

} // namespace wex_shell
