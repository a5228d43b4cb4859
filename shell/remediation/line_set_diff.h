// The line-set difference of two configuration texts, as data: lines only
// in the first ('-'), only in the second ('+'), and their unchanged parents
// (' '), each with its line number. Lines are paired one to one by their
// exact text among their siblings, whatever their order, in time linear in
// the texts' size.
#ifndef WEX_REMEDIATION_LINE_SET_DIFF_H
#define WEX_REMEDIATION_LINE_SET_DIFF_H

#include "config_text.h"

#include <string>
#include <vector>

namespace wex_remediation
{

struct DiffEntry {
    char mark;              // ' ', '-' or '+'
    uint32_t first, second; // its line number in each text, 0 where it is not
    std::string_view text;  // as written, its indentation included
    std::vector<DiffEntry> children;
};

// Contexts and removals in the first text's order, then additions in the
// second's; a context only above a difference.
std::vector<DiffEntry> line_set_diff(const ConfigText &first, const ConfigText &second);

// The entries as the comparison prints them: four blanks, the mark, the
// line, depth first.
std::string diff_text(const std::vector<DiffEntry> &entries);

// The entries as one JSON array of objects {"mark", "first", "second",
// "text", "children"}, line numbers 0 where a line is not in that text.
std::string diff_json(const std::vector<DiffEntry> &entries);

} // namespace wex_remediation

#endif
