#include "common/format.h"

#include <cstdarg>
#include <cstdio>

namespace wex
{

bool format_whole(char *dst, std::size_t capacity, const char *format, ...) noexcept
{
    std::va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(dst, capacity, format, args);
    va_end(args);
    return length >= 0 && static_cast<std::size_t>(length) < capacity;
}

} // namespace wex
