#include "source_text.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace wex_grammar
{
namespace
{

constexpr std::string_view kMarks = "<>{}[]|()=,";

bool ends_word(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '"' || c == '#' ||
           kMarks.find(c) != std::string_view::npos;
}

class Tokenizer
{
  public:
    Tokenizer(std::string_view text, const std::string &file, Diagnostics &diagnostics,
              const LineTokens &each_line)
        : text_(text), file_(file), diagnostics_(diagnostics), each_line_(each_line)
    {
    }

    void run()
    {
        while (i_ < text_.size()) {
            const char c = text_[i_];
            if (c == '\n') {
                end_line();
                advance();
                line_++;
                column_ = 1;
            } else if (c == ' ' || c == '\t' || c == '\r') {
                advance();
            } else if (c == '#') {
                while (i_ < text_.size() && text_[i_] != '\n')
                    advance();
            } else if (c == '"') {
                quoted_text();
            } else if (kMarks.find(c) != std::string_view::npos) {
                push(Token::Kind::mark, std::string(1, c), here());
                advance();
            } else {
                bare_word();
            }
        }
        end_line();
    }

  private:
    void end_line()
    {
        if (!tokens_.empty())
            each_line_(tokens_);
        tokens_.clear();
    }

    Position here() const { return Position{line_, column_}; }
    void advance()
    {
        ++i_;
        ++column_;
    }
    void push(Token::Kind kind, std::string value, Position at)
    {
        tokens_.push_back({kind, std::move(value), at});
    }

    void bare_word()
    {
        const Position at = here();
        const std::size_t start = i_;
        while (i_ < text_.size() && !ends_word(text_[i_]))
            advance();
        push(Token::Kind::word, std::string(text_.substr(start, i_ - start)), at);
    }

    void quoted_text()
    {
        const Position at = here();
        advance();
        std::string value;
        while (i_ < text_.size() && text_[i_] != '"' && text_[i_] != '\n') {
            if (text_[i_] == '\\')
                escape(value);
            else {
                value += text_[i_];
                advance();
            }
        }
        if (i_ >= text_.size() || text_[i_] != '"') {
            diagnostics_.error(file_, at, "the quoted text is not closed on its line");
        } else {
            advance();
        }
        push(Token::Kind::text, std::move(value), at);
    }

    void escape(std::string &value)
    {
        const Position at = here();
        advance();
        const char c = i_ < text_.size() ? text_[i_] : '\0';
        if (c == '"' || c == '\\') {
            value += c;
            advance();
        } else if (c == 'n' || c == 't') {
            value += c == 'n' ? '\n' : '\t';
            advance();
        } else if (c == 'x' && i_ + 2 < text_.size() && hex_digit(text_[i_ + 1]) >= 0 &&
                   hex_digit(text_[i_ + 2]) >= 0) {
            value += static_cast<char>(hex_digit(text_[i_ + 1]) * 16 + hex_digit(text_[i_ + 2]));
            advance();
            advance();
            advance();
        } else {
            diagnostics_.error(file_, at, "unknown escape in a quoted text (use \\\" \\\\ \\n \\t or \\xHH)");
        }
    }

    std::string_view text_;
    const std::string &file_;
    Diagnostics &diagnostics_;
    const LineTokens &each_line_;
    std::vector<Token> tokens_;
    std::size_t i_ = 0;
    uint32_t line_ = 1, column_ = 1;
};

} // namespace

int hex_digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::optional<uint64_t> parse_number(std::string_view word, int width)
{
    const bool negative = !word.empty() && word[0] == '-';
    if (negative)
        word.remove_prefix(1);
    const bool hex = word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
    if (hex)
        word.remove_prefix(2);
    if (word.empty() || (negative && (hex || width > 4)))
        return std::nullopt;
    const uint64_t limit = width == 8 ? UINT64_MAX : (uint64_t{1} << (8 * width)) - 1;
    const unsigned base = hex ? 16 : 10;
    uint64_t value = 0;
    for (const char c : word) {
        const int digit = hex_digit(c);
        if (digit < 0 || static_cast<unsigned>(digit) >= base ||
            value > (limit - static_cast<unsigned>(digit)) / base)
            return std::nullopt;
        value = value * base + static_cast<unsigned>(digit);
    }
    if (!negative)
        return value;
    if (value > (limit >> 1) + 1)
        return std::nullopt;
    return (limit + 1 - value) & limit;
}

void tokenize_lines(std::string_view text, const std::string &file, Diagnostics &diagnostics,
                    const LineTokens &each_line)
{
    Tokenizer(text, file, diagnostics, each_line).run();
}

std::string_view first_word(std::string_view text)
{
    std::size_t i = 0;
    for (;;) {
        i = text.find_first_not_of(" \t\r\n", i);
        if (i == std::string_view::npos)
            return {};
        if (text[i] != '#')
            break;
        i = text.find('\n', i);
    }
    std::size_t end = i;
    while (end < text.size() && !ends_word(text[end]))
        ++end;
    return text.substr(i, end - i);
}

std::string hex_number(uint64_t value)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%" PRIx64, value);
    return text;
}

std::string quoted(std::string_view text)
{
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20 || byte > 0x7e) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", byte);
            out += hex;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

} // namespace wex_grammar
