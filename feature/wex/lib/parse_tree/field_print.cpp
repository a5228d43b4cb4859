#include "field_print.h"
#include "walk_limits.h"

#include <wex/parse_tree.h>

#include "swapbits.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace wex::tree
{

void print_reversed_bytes(const char *label, const uint8_t *bytes, std::size_t count) noexcept
{
    std::fputs(label, stdout);
    for (std::size_t i = 0; i < count; ++i)
        std::printf("%02x", swapbits(bytes[i]));
}

void print_indent(int32_t count) noexcept
{
    for (int32_t i = 0; i < count; ++i)
        std::putchar(' ');
}

void end_walk(std::FILE *stream, const char *message) noexcept
{
    std::fputs(message, stream);
    std::exit(-1);
}

} // namespace wex::tree

extern "C" {

WEX_API void print_str(const char *label, const char *s) noexcept
{
    if (s && *s)
        std::printf("%s:%s ", label, s);
}

WEX_API void print_int(const char *label, int32_t v) noexcept
{
    if (v != 0)
        std::printf("%s:%d ", label, v);
}

WEX_API void print_u_l_long(const char *label, uint64_t v) noexcept
{
    if (v != 0)
        std::printf("%s:%lld ", label, static_cast<long long>(v));
}

WEX_API void print_hex_value(const char *label, const uint8_t *bytes, int32_t len) noexcept
{
    std::printf("%s:0x", label);
    for (int32_t i = len - 1; i >= 0; --i)
        std::printf("%02hhx", bytes[i]);
    std::putchar(' ');
}

} // extern "C"
