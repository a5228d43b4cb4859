#include <wex/parse_tree.h>

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace
{

const char *skip_white_space(const char *s) noexcept
{
    while (std::isspace(static_cast<unsigned char>(*s)))
        ++s;
    return s;
}

// The library runs on a 32-bit system, where long is 32 bits wide; values
// are saturated to that width so that every build reads a text the same way.
template <typename T> T saturate(long long v) noexcept
{
    if (v > std::numeric_limits<T>::max())
        return std::numeric_limits<T>::max();
    if (v < std::numeric_limits<T>::min())
        return std::numeric_limits<T>::min();
    return static_cast<T>(v);
}

} // namespace

// A missing text reads as no number (0), like a text without digits.
extern "C" {

WEX_API int32_t convert_str_to_int(const char *s) noexcept
{
    return s ? saturate<int32_t>(std::strtoll(s, nullptr, 0)) : 0;
}

WEX_API uint32_t convert_str_to_uint(const char *s) noexcept
{
    // "%u" semantics on a 32-bit system: an optional sign, decimal digits,
    // out of range saturating to the largest value, a minus sign negating.
    if (!s)
        return 0;
    const char *p = skip_white_space(s);
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    // No digits, no number: 0, which no caller mistakes for a read value.
    if (!std::isdigit(static_cast<unsigned char>(*p)))
        return 0;
    errno = 0;
    const unsigned long long magnitude = std::strtoull(p, nullptr, 10);
    if (errno == ERANGE || magnitude > std::numeric_limits<uint32_t>::max())
        return std::numeric_limits<uint32_t>::max();
    const auto value = static_cast<uint32_t>(magnitude);
    return negative ? static_cast<uint32_t>(0u - value) : value;
}

WEX_API uint64_t convert_str_to_uint64(const char *s) noexcept
{
    // strtoull in base 16 reads what "%llx" reads, and gives 0 (the value
    // chosen for "no number") when there are no digits.
    return s ? std::strtoull(s, nullptr, 16) : 0;
}

} // extern "C"
