// Printers shared by the dumps, for fixed-width fields that a damaged record
// may leave without a terminator.
#ifndef WEX_PARSE_TREE_FIELD_PRINT_H
#define WEX_PARSE_TREE_FIELD_PRINT_H

#include <cstddef>
#include <cstdint>

namespace wex::tree
{

// Prints label, then each byte bit-reversed as two hexadecimal digits.
void print_reversed_bytes(const char *label, const uint8_t *bytes, std::size_t count) noexcept;

// Prints count blanks of indentation.
void print_indent(int32_t count) noexcept;

} // namespace wex::tree

#endif
