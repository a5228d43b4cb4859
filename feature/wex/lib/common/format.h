// Formatting into fixed buffers where a cut text would be wrong: a path or a
// command cut at the buffer's end names another file.
#ifndef WEX_COMMON_FORMAT_H
#define WEX_COMMON_FORMAT_H

#include <cstddef>

namespace wex
{

// snprintf into dst; true only when the whole text fit (dst is then
// complete), false when it would have been cut or could not be formatted.
bool format_whole(char *dst, std::size_t capacity, const char *format, ...) noexcept
    __attribute__((format(printf, 3, 4)));

} // namespace wex

#endif
