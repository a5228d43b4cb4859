// Formatters of argument values. Every pair works the same way: the _to_str
// member formats into a working buffer and returns a copy of the text, the
// printer prints that copy and frees it. The formatters print on standard
// output directly; they are not captured.
#include <wex/param.h>

#include "common/alloc.h"
#include "if_index.h"

#include <arpa/inet.h>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

constexpr std::size_t kWorkingBufferSize = 4096;
constexpr int kIpv4Family = 1;

__attribute__((format(printf, 1, 2))) char *format_to_str(const char *format, ...) noexcept
{
    char working[kWorkingBufferSize];
    va_list args;
    va_start(args, format);
    std::vsnprintf(working, sizeof working, format, args);
    va_end(args);
    return create_str(working);
}

void print_owned(char *text) noexcept
{
    print_string(text);
    std::free(text);
}

// The text of an inet_ntop conversion, or "" when it fails.
char *address_to_str(int family, const void *bytes) noexcept
{
    char working[kWorkingBufferSize];
    if (!inet_ntop(family, bytes, working, sizeof working))
        working[0] = '\0';
    return create_str(working);
}

// The prefix form "address/length" of an IPv4 or IPv6 record.
char *prefix_to_str(char *(*address_text)(const wex_inet_addr_t *), const wex_inet_addr_t *address) noexcept
{
    char *text = address_text(address);
    if (!text)
        return nullptr;
    char *prefix = format_to_str("%s/%d", text, address->prefix_len);
    std::free(text);
    return prefix;
}

// Appends text to the result, keeping the whole within the working buffer.
void append_bounded(char (&result)[kWorkingBufferSize], std::size_t &length, std::string_view text) noexcept
{
    const std::size_t room = kWorkingBufferSize - 1 - length;
    const std::size_t taken = text.size() < room ? text.size() : room;
    std::memcpy(result + length, text.data(), taken);
    length += taken;
    result[length] = '\0';
}

} // namespace

extern "C" {

WEX_API char *create_str(const char *text) noexcept
{
    if (!text)
        return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    char *copy = static_cast<char *>(wex::mem_alloc(size));
    if (copy)
        std::memcpy(copy, text, size);
    return copy;
}

WEX_API void print_string(const char *text) noexcept
{
    if (!text)
        return;
    std::printf("%s", text);
    std::fflush(stdout);
}

WEX_API void print_user_at_host(const char *text) noexcept
{
    print_string(text);
}
WEX_API void print_dns_name(const char *text) noexcept
{
    print_string(text);
}
WEX_API void print_inet_name(const char *text) noexcept
{
    print_string(text);
}

WEX_API char *print_integer_to_str(int32_t value) noexcept
{
    return format_to_str("%d", value);
}
WEX_API void print_integer(int32_t value) noexcept
{
    print_owned(print_integer_to_str(value));
}

WEX_API char *print_intx_to_str(uint32_t value) noexcept
{
    return format_to_str("0x%0x", value);
}
WEX_API void print_intx(uint32_t value) noexcept
{
    print_owned(print_intx_to_str(value));
}

WEX_API char *print_u_long_long_to_str(uint64_t value) noexcept
{
    return format_to_str("%lld", static_cast<long long>(value));
}
WEX_API void print_u_long_long(uint64_t value) noexcept
{
    print_owned(print_u_long_long_to_str(value));
}

WEX_API char *print_integer_range_to_str(const integer_range *range) noexcept
{
    return format_to_str("%d - %d", static_cast<int>(range->low), static_cast<int>(range->high));
}
WEX_API void print_integer_range(const integer_range *range) noexcept
{
    print_owned(print_integer_range_to_str(range));
}

WEX_API char *print_community_to_str(const community *value) noexcept
{
    return format_to_str("%d:%d", value->first, value->second);
}
WEX_API void print_community(const community *value) noexcept
{
    print_owned(print_community_to_str(value));
}

WEX_API char *print_hex_to_str(const void *bytes, int32_t count) noexcept
{
    // Sized to the bytes given, so a long value is shown whole rather than
    // overrunning a fixed working buffer.
    const std::size_t digits = count > 0 ? 2 * static_cast<std::size_t>(count) : 0;
    char *text = static_cast<char *>(wex::mem_alloc(2 + digits + 1));
    if (!text)
        return nullptr;
    static constexpr char kHexDigits[] = "0123456789abcdef";
    const auto *byte = static_cast<const unsigned char *>(bytes);
    char *out = text;
    *out++ = '0';
    *out++ = 'x';
    for (std::size_t i = 0; i < digits / 2; ++i) {
        *out++ = kHexDigits[byte[i] >> 4];
        *out++ = kHexDigits[byte[i] & 0xF];
    }
    *out = '\0';
    return text;
}
WEX_API void print_hex(const void *bytes, int32_t count) noexcept
{
    print_owned(print_hex_to_str(bytes, count));
}

WEX_API char *print_ip_to_str(const uint32_t *address) noexcept
{
    in_addr value{};
    value.s_addr = *address;
    return format_to_str("%s", inet_ntoa(value));
}
WEX_API void print_ip(const uint32_t *address) noexcept
{
    print_owned(print_ip_to_str(address));
}

WEX_API char *print_ipv4_to_str(const wex_inet_addr_t *address) noexcept
{
    return address_to_str(AF_INET, address->address);
}
WEX_API void print_ipv4(const wex_inet_addr_t *address) noexcept
{
    print_owned(print_ipv4_to_str(address));
}

WEX_API char *print_ipv6_to_str(const wex_inet_addr_t *address) noexcept
{
    return address_to_str(AF_INET6, address->address);
}
WEX_API void print_ipv6(const wex_inet_addr_t *address) noexcept
{
    print_owned(print_ipv6_to_str(address));
}

WEX_API char *print_inet_addr_to_str(const wex_inet_addr_t *address) noexcept
{
    return address->family == kIpv4Family ? print_ipv4_to_str(address) : print_ipv6_to_str(address);
}
WEX_API void print_inet_addr(const wex_inet_addr_t *address) noexcept
{
    print_owned(print_inet_addr_to_str(address));
}

WEX_API char *print_ipv4_prefix_to_str(const wex_inet_addr_t *address) noexcept
{
    return prefix_to_str(print_ipv4_to_str, address);
}
WEX_API void print_ipv4_prefix(const wex_inet_addr_t *address) noexcept
{
    print_owned(print_ipv4_prefix_to_str(address));
}

WEX_API char *print_ipv6_prefix_to_str(const wex_inet_addr_t *address) noexcept
{
    return prefix_to_str(print_ipv6_to_str, address);
}
WEX_API void print_ipv6_prefix(const wex_inet_addr_t *address) noexcept
{
    print_owned(print_ipv6_prefix_to_str(address));
}

WEX_API char *print_interface_to_str(const uint32_t *if_index) noexcept
{
    char working[kWorkingBufferSize] = "";
    sprintf_if_index(working, *if_index);
    working[sizeof working - 1] = '\0';
    return create_str(working);
}
WEX_API void print_interface(const uint32_t *if_index) noexcept
{
    print_owned(print_interface_to_str(if_index));
}

WEX_API char *print_interface_range_to_str(const intf_range_list *list) noexcept
{
    char result[kWorkingBufferSize] = "";
    std::size_t length = 0;
    // The list has room for 65 entries whatever its count says.
    const uint32_t count =
        list->count <= WEX_INTF_RANGE_MAX_INDEX + 1 ? list->count : WEX_INTF_RANGE_MAX_INDEX + 1;
    for (uint32_t i = 0; i < count; ++i) {
        char piece[kWorkingBufferSize] = "";
        snprintf_if_index_range(piece, sizeof piece, &list->ranges[i]);
        append_bounded(result, length, piece);
        if (i + 1 < count)
            append_bounded(result, length, " , ");
    }
    return create_str(result);
}
WEX_API void print_interface_range(const intf_range_list *list) noexcept
{
    print_owned(print_interface_range_to_str(list));
}

WEX_API char *print_type_net_to_str(const type_net *net) noexcept
{
    const uint8_t *p = net->pairs;
    return format_to_str("%02x.%02x%02x.%02x%02x.%02x%02x.%02x%02x.%02x%02x.%02x%02x.%04x.%04x.%04x.%02x",
                         net->head, p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11],
                         net->words[0], net->words[1], net->words[2], net->tail);
}
WEX_API void print_type_net(const type_net *net) noexcept
{
    print_owned(print_type_net_to_str(net));
}

WEX_API char *print_type_lid_to_str(const type_lid *lid) noexcept
{
    return format_to_str("%04x.%04x.%04x.%02d-%02d", lid->words[0], lid->words[1], lid->words[2],
                         lid->bytes[0], lid->bytes[1]);
}
WEX_API void print_type_lid(const type_lid *lid) noexcept
{
    print_owned(print_type_lid_to_str(lid));
}

WEX_API void print_guid(const guid *value) noexcept
{
    const uint8_t *d = value->data4;
    std::printf("{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", value->data1, value->data2,
                value->data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
}

WEX_API void print_hex_range(const integer_range *range) noexcept
{
    print_intx(range->low);
    std::printf(" - ");
    print_intx(range->high);
    std::printf("\n");
}

} // extern "C"
