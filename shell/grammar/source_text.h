// The words of a grammar source, line by line: bare words, quoted texts and
// the marks that shape a command ("<>{}[]|()=,"), each with its position.
// A "#" outside a quoted text starts a comment that runs to the line end.
#ifndef WEX_GRAMMAR_SOURCE_TEXT_H
#define WEX_GRAMMAR_SOURCE_TEXT_H

#include "diagnostics.h"

#include <cstdint>
#include <functional>
#include <span>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wex_grammar
{

struct Token {
    enum class Kind { word, text, mark };
    Kind kind;
    std::string value; // a quoted text with its escapes undone; a mark's one character
    Position at;
};

// One line's tokens, read from the front; at() is where the next one
// stands, or the last one when none is left.
class TokenCursor
{
  public:
    explicit TokenCursor(std::span<const Token> tokens) : tokens_(tokens) {}
    bool done() const { return next_ == tokens_.size(); }
    const Token *peek() const { return done() ? nullptr : &tokens_[next_]; }
    const Token *take() { return done() ? nullptr : &tokens_[next_++]; }
    bool take_mark(char mark)
    {
        if (done() || tokens_[next_].kind != Token::Kind::mark || tokens_[next_].value[0] != mark)
            return false;
        ++next_;
        return true;
    }
    Position at() const
    {
        return done() ? (tokens_.empty() ? Position{} : tokens_.back().at) : tokens_[next_].at;
    }

  private:
    std::span<const Token> tokens_;
    std::size_t next_ = 0;
};

// Calls each_line with the tokens of every line that has any, in order; a
// text left open or a bad escape is reported, and the tokens around it are
// kept. One line's tokens at a time are held, however long the text.
using LineTokens = std::function<void(std::span<const Token>)>;
void tokenize_lines(std::string_view text, const std::string &file, Diagnostics &diagnostics,
                    const LineTokens &each_line);

// The first bare word of text, past blanks, line ends and comments; empty
// when the text has none before anything else.
std::string_view first_word(std::string_view text);

// The value of a hexadecimal digit, or -1.
int hex_digit(char c);

// A decimal or 0x-hexadecimal number that fits width bytes; a negative
// decimal is taken in two's complement for widths up to 4.
std::optional<uint64_t> parse_number(std::string_view word, int width);

// value as 0x and lowercase hexadecimal digits.
std::string hex_number(uint64_t value);

// text as a quoted text that tokenize reads back exactly: '"' and '\'
// escaped, bytes outside printable ASCII as \xHH.
std::string quoted(std::string_view text);

} // namespace wex_grammar

#endif
