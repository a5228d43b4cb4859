// The errors found in a grammar source, each naming its file, line and
// column, so that an author fixes them all in one pass.
#ifndef WEX_GRAMMAR_DIAGNOSTICS_H
#define WEX_GRAMMAR_DIAGNOSTICS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace wex_grammar
{

struct Position {
    uint32_t line = 1;
    uint32_t column = 1;
};

class Diagnostics
{
  public:
    // Past this many errors the rest of a run's are counted, not listed:
    // one mistake early in a file can make every later line wrong.
    static constexpr std::size_t kListed = 50;

    // Records "FILE:LINE:COLUMN: message".
    void error(const std::string &file, Position at, const std::string &message);
    // Records "FILE: message", for a file that has no lines (an image).
    void error(const std::string &file, const std::string &message);

    bool any() const { return count_ > 0; }
    std::size_t count() const { return count_; }
    // The listed errors, one line each, and a last line for those left out.
    std::string report() const;

  private:
    std::vector<std::string> listed_;
    std::size_t count_ = 0;
};

} // namespace wex_grammar

#endif
