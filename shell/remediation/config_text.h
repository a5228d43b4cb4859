// A configuration text as a tree of lines: top-level lines, and under each
// the lines indented below it, up to three levels. The lines stay in text
// order; a line's block is the run of deeper lines after it.
#ifndef WEX_REMEDIATION_CONFIG_TEXT_H
#define WEX_REMEDIATION_CONFIG_TEXT_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace wex_remediation
{

// Sixteen bytes a line: a million-line configuration is read into 16 MB.
struct ConfigLine {
    uint32_t offset, length; // of its text, as written, indentation included, without the line end
    uint32_t number;         // in the text, from 1
    uint32_t end;            // the index past the last line of its block
};

// What counts as a line besides those ended by a line end.
enum class LastLine {
    ignored, // as the line-set comparison reads texts
    counts,  // as a configuration to apply is read: no line of it is lost
};

class ConfigText
{
  public:
    // The lines of text, which must outlive the result. Blank lines take no
    // part. A line's level comes from its leading blanks (one level for
    // each two, at most three); a line deeper than the parents before it
    // hangs at the deepest level that has one.
    ConfigText(std::string_view text, LastLine last);

    const ConfigLine &operator[](uint32_t i) const { return lines_[i]; }
    std::string_view text(uint32_t i) const { return text_.substr(lines_[i].offset, lines_[i].length); }
    uint32_t size() const { return static_cast<uint32_t>(lines_.size()); }

    // The blocks of one level: the top level is (0, size()), a line's
    // children are (i + 1, lines()[i].end). Each is visited with its index.
    template <typename Visit> void each_block(uint32_t first, uint32_t end, Visit visit) const
    {
        for (uint32_t i = first; i < end; i = lines_[i].end)
            visit(i);
    }
    // The indices of the lines of one level, as each_block visits them.
    std::vector<uint32_t> block(uint32_t first, uint32_t end) const
    {
        std::vector<uint32_t> lines;
        each_block(first, end, [&](uint32_t i) { lines.push_back(i); });
        return lines;
    }

  private:
    std::string_view text_;
    std::vector<ConfigLine> lines_;
};

// A line's words without its indentation and trailing blanks.
std::string_view command_of(std::string_view line);

} // namespace wex_remediation

#endif
