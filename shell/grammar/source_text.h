// The words of a grammar source: bare words, quoted texts, the marks that
// shape a command ("<>{}[]|()=,") and line ends, each with its position.
// A "#" outside a quoted text starts a comment that runs to the line end.
#ifndef WEX_GRAMMAR_SOURCE_TEXT_H
#define WEX_GRAMMAR_SOURCE_TEXT_H

#include "diagnostics.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wex_grammar
{

struct Token {
    enum class Kind { word, text, mark, line_end };
    Kind kind;
    std::string value; // a quoted text with its escapes undone; a mark's one character
    Position at;
};

// The tokens of text; a text left open or a bad escape is reported, and the
// tokens around it are kept. The last token is always a line end.
std::vector<Token> tokenize(std::string_view text, const std::string &file, Diagnostics &diagnostics);

// The value of a hexadecimal digit, or -1.
int hex_digit(char c);

// A decimal or 0x-hexadecimal number that fits width bytes; a negative
// decimal is taken in two's complement for widths up to 4.
std::optional<uint64_t> parse_number(std::string_view word, int width);

// text as a quoted text that tokenize reads back exactly: '"' and '\'
// escaped, bytes outside printable ASCII as \xHH.
std::string quoted(std::string_view text);

} // namespace wex_grammar

#endif
