#include "config_text.h"

#include <algorithm>
#include <array>

namespace wex_remediation
{
namespace
{

constexpr int kMaxLevel = 3;

// Space, tab, carriage return, line feed, vertical tab, form feed.
bool white(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

int level_of(std::string_view line)
{
    if (line.empty() || line[0] != ' ')
        return 1;
    const std::size_t blanks = std::min(line.find_first_not_of(' '), line.size());
    return static_cast<int>(std::min<std::size_t>(blanks / 2 + 1, kMaxLevel));
}

} // namespace

ConfigText::ConfigText(std::string_view text, LastLine last) : text_(text)
{
    // A guess at the line count, short of a pass over the text to count them.
    lines_.reserve(text.size() / 24 + 1);
    // open[l] is the line whose block is open at level l + 1, or none.
    constexpr uint32_t kNone = UINT32_MAX;
    std::array<uint32_t, kMaxLevel> open;
    open.fill(kNone);
    int depth = 0; // the levels that have an open parent
    const auto close_from = [&](int level) {
        for (int l = level; l < kMaxLevel; ++l) {
            if (open[l] != kNone)
                lines_[open[l]].end = static_cast<uint32_t>(lines_.size());
            open[l] = kNone;
        }
    };
    uint32_t number = 0;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos && last == LastLine::ignored)
            break;
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        ++number;
        if (command_of(line).empty())
            continue;
        const int level = std::min(level_of(line), depth + 1);
        close_from(level - 1);
        open[level - 1] = static_cast<uint32_t>(lines_.size());
        lines_.push_back({static_cast<uint32_t>(line.data() - text_.data()),
                          static_cast<uint32_t>(line.size()), number, 0});
        depth = level;
    }
    close_from(0);
}

std::string_view command_of(std::string_view line)
{
    std::size_t first = 0, end = line.size();
    while (first < end && white(line[first]))
        ++first;
    while (end > first && white(line[end - 1]))
        --end;
    return line.substr(first, end - first);
}

} // namespace wex_remediation
