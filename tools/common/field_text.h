// The text of a fixed-width character field of a record, which need not end
// in a NUL: all its bytes when none does.
#ifndef WEX_TOOLS_FIELD_TEXT_H
#define WEX_TOOLS_FIELD_TEXT_H

#include <cstddef>
#include <cstring>
#include <string>

namespace wex_tools
{

template <std::size_t N> std::string field_text(const char (&field)[N])
{
    return std::string(field, strnlen(field, N));
}

} // namespace wex_tools

#endif
