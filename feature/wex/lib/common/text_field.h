// Fixed-width text fields of wire records. A record that came from another
// process, or a damaged one, may fill a field to its last byte without a
// terminator; these helpers never read or write past the field.
#ifndef WEX_COMMON_TEXT_FIELD_H
#define WEX_COMMON_TEXT_FIELD_H

#include <cstddef>
#include <string_view>

namespace wex
{

// The text a field holds: up to its first NUL, at most width characters.
inline std::string_view field_text(const char *field, std::size_t width) noexcept
{
    std::size_t len = 0;
    while (len < width && field[len] != '\0')
        ++len;
    return {field, len};
}

template <std::size_t N> std::string_view field_text(const char (&field)[N]) noexcept
{
    return field_text(field, N);
}

// The length of a text as printf's "%.*s" precision.
inline int print_width(std::string_view text) noexcept
{
    return static_cast<int>(text.size());
}

// print_str of a character field of the given width, read no further.
void print_text_field(const char *label, const char *field, std::size_t width) noexcept;

} // namespace wex

#endif
