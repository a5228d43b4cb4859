// Comparison of two configuration texts as trees of lines. Lines are matched
// one to one among siblings by exact text, each line of the first text to the
// first unmatched sibling of the second with the same text; the search goes
// through a hash of the text, so a comparison costs time linear in the size
// of the two texts however many siblings a line has.
#include <wex/output.h>

#include "common/bulk_memory.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace
{

constexpr uint32_t kNone = UINT32_MAX;
constexpr int kMaxLevel = 3;

struct Line {
    std::string_view text;
    std::size_t hash;
    uint32_t next = kNone; // next sibling
    uint32_t first_child = kNone;
    uint32_t partner = kNone;        // the line of the other text it is matched to
    uint32_t next_same_text = kNone; // next sibling with equal text, while matching
};

// A million-line text has forty megabytes of them.
using Lines = std::vector<Line, wex::BulkAllocator<Line>>;

// The lines of one text, each list of siblings in text order.
struct LineTree {
    Lines lines;
    uint32_t first_top = kNone;
};

bool white_space_only(std::string_view line) noexcept
{
    return line.find_first_not_of(" \t\r\n\v\f") == std::string_view::npos;
}

int level_of(std::string_view line) noexcept
{
    if (line.empty() || line[0] != ' ')
        return 1;
    const std::size_t blanks = std::min(line.find_first_not_of(' '), line.size());
    return std::min<std::size_t>(blanks / 2 + 1, kMaxLevel);
}

// Appends lines to the tree, keeping the tail of each list that can grow:
// the top level, the children of the current level-1 and level-2 parents.
class TreeBuilder
{
  public:
    explicit TreeBuilder(LineTree &tree) : tree_(tree) {}

    void add(std::string_view text, int level)
    {
        // A line deeper than the parents seen so far hangs at the deepest
        // level that has a parent: a text opening with an indented line, or
        // a level-3 line straight under a level-1 line, still has one place.
        level = std::min(level, depth_ + 1);
        const auto index = static_cast<uint32_t>(tree_.lines.size());
        tree_.lines.push_back(Line{text, std::hash<std::string_view>{}(text)});
        if (level == 1)
            append(tree_.first_top, tail_[0], index);
        else
            append(tree_.lines[parent_[level - 2]].first_child, tail_[level - 1], index);
        if (level < kMaxLevel) {
            parent_[level - 1] = index;
            tail_[level] = kNone;
            depth_ = level;
        }
    }

  private:
    void append(uint32_t &head, uint32_t &tail, uint32_t index)
    {
        if (tail == kNone)
            head = index;
        else
            tree_.lines[tail].next = index;
        tail = index;
    }

    LineTree &tree_;
    uint32_t parent_[kMaxLevel - 1] = {kNone, kNone};
    uint32_t tail_[kMaxLevel] = {kNone, kNone, kNone};
    int depth_ = 0; // levels that have a current parent
};

std::size_t count_line_ends(std::string_view text) noexcept
{
    std::size_t count = 0;
    for (const char *p = text.data(), *end = p + text.size();
         (p = static_cast<const char *>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)))) != nullptr;
         ++p)
        ++count;
    return count;
}

// The lines of a text. When memory for them cannot be had, the tree keeps
// the lines read so far: all of them are taken in one block, so none.
LineTree parse(const char *text) noexcept
{
    LineTree tree;
    if (!text)
        return tree;
    std::string_view rest(text);
    try {
        tree.lines.reserve(count_line_ends(rest));
    } catch (const std::bad_alloc &) {
        return tree;
    }
    TreeBuilder builder(tree);
    // Only lines ended by a line end count; reserve() made room for all.
    for (std::size_t end; (end = rest.find('\n')) != std::string_view::npos; rest.remove_prefix(end + 1)) {
        const std::string_view line = rest.substr(0, end);
        if (!white_space_only(line))
            builder.add(line, level_of(line));
    }
    return tree;
}

std::size_t sibling_count(const Lines &lines, uint32_t first) noexcept
{
    std::size_t count = 0;
    for (uint32_t i = first; i != kNone; i = lines[i].next)
        ++count;
    return count;
}

// Pairs the lines of two sibling lists.
class Matcher
{
  public:
    Matcher(LineTree &a, LineTree &b) : a_(a.lines), b_(b.lines) {}

    void match(uint32_t first_a, uint32_t first_b)
    {
        const std::size_t count_b = sibling_count(b_, first_b);
        if (count_b <= kScanLimit)
            match_by_scan(first_a, first_b);
        else
            match_by_hash(first_a, first_b, count_b);
    }

  private:
    // Below this many siblings a scan costs less than a table.
    static constexpr std::size_t kScanLimit = 16;

    struct Group {
        uint32_t head = kNone; // first unmatched line of B with this text
        uint32_t tail = kNone;
    };

    bool same_text(const Line &x, const Line &y) const noexcept
    {
        return x.hash == y.hash && x.text == y.text;
    }

    void pair(uint32_t i, uint32_t j) noexcept
    {
        a_[i].partner = j;
        b_[j].partner = i;
    }

    void match_by_scan(uint32_t first_a, uint32_t first_b) noexcept
    {
        for (uint32_t i = first_a; i != kNone; i = a_[i].next) {
            for (uint32_t j = first_b; j != kNone; j = b_[j].next) {
                if (b_[j].partner == kNone && same_text(a_[i], b_[j])) {
                    pair(i, j);
                    break;
                }
            }
        }
    }

    // Open addressing over the texts of B; each group chains its lines in B's
    // order, so its head is always the first unmatched one.
    Group &group_of(const Line &line) noexcept
    {
        const std::size_t mask = groups_.size() - 1;
        for (std::size_t slot = line.hash & mask;; slot = (slot + 1) & mask) {
            Group &g = groups_[slot];
            if (g.tail == kNone || same_text(b_[g.tail], line))
                return g;
        }
    }

    void match_by_hash(uint32_t first_a, uint32_t first_b, std::size_t count_b)
    {
        std::size_t size = 1;
        while (size < 2 * count_b)
            size <<= 1;
        groups_.assign(size, Group{});
        for (uint32_t j = first_b; j != kNone; j = b_[j].next) {
            Group &g = group_of(b_[j]);
            if (g.tail == kNone)
                g.head = j;
            else
                b_[g.tail].next_same_text = j;
            g.tail = j;
        }
        for (uint32_t i = first_a; i != kNone; i = a_[i].next) {
            Group &g = group_of(a_[i]);
            if (g.head != kNone) {
                pair(i, g.head);
                g.head = b_[g.head].next_same_text;
            }
        }
    }

    Lines &a_;
    Lines &b_;
    std::vector<Group> groups_;
};

class Comparison
{
  public:
    Comparison(const char *first, const char *second) : a_(parse(first)), b_(parse(second)), matcher_(a_, b_)
    {
    }

    bool same() { return same_lists(a_.first_top, b_.first_top); }

    // The differences as printed lines; out keeps what was built when
    // memory runs out.
    void diff(std::string &out) { diff_lists(a_.first_top, b_.first_top, out); }

  private:
    bool same_lists(uint32_t first_a, uint32_t first_b)
    {
        // Matching is one to one, so lists of different lengths leave a line over.
        if (sibling_count(a_.lines, first_a) != sibling_count(b_.lines, first_b))
            return false;
        matcher_.match(first_a, first_b);
        for (uint32_t i = first_a; i != kNone; i = a_.lines[i].next) {
            const uint32_t j = a_.lines[i].partner;
            if (j == kNone || !same_lists(a_.lines[i].first_child, b_.lines[j].first_child))
                return false;
        }
        return true;
    }

    // Room is made first, so a line is added whole or not at all.
    static void print(std::string &out, char mark, std::string_view text)
    {
        const std::size_t needed = out.size() + text.size() + sizeof("    x\n");
        if (needed > out.capacity())
            out.reserve(needed);
        out.append("    ").append(1, mark).append(text).append(1, '\n');
    }

    static void print_subtree(std::string &out, const Lines &lines, uint32_t i, char mark)
    {
        print(out, mark, lines[i].text);
        for (uint32_t c = lines[i].first_child; c != kNone; c = lines[c].next)
            print_subtree(out, lines, c, mark);
    }

    void diff_lists(uint32_t first_a, uint32_t first_b, std::string &out)
    {
        matcher_.match(first_a, first_b);
        for (uint32_t i = first_a; i != kNone; i = a_.lines[i].next) {
            const uint32_t j = a_.lines[i].partner;
            if (j == kNone) {
                print_subtree(out, a_.lines, i, '-');
                continue;
            }
            // The context line stays only above differences.
            const std::size_t context_at = out.size();
            print(out, ' ', a_.lines[i].text);
            const std::size_t children_at = out.size();
            diff_lists(a_.lines[i].first_child, b_.lines[j].first_child, out);
            if (out.size() == children_at)
                out.resize(context_at);
        }
        for (uint32_t j = first_b; j != kNone; j = b_.lines[j].next)
            if (b_.lines[j].partner == kNone)
                print_subtree(out, b_.lines, j, '+');
    }

    LineTree a_, b_;
    Matcher matcher_;
};

} // namespace

extern "C" {

WEX_API int32_t wex_is_diff_same(const char *first, const char *second) noexcept
{
    // Out of memory while comparing, the texts cannot be shown to be the
    // same, so they count as different.
    try {
        Comparison comparison(first, second);
        return comparison.same() ? 1 : 0;
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

WEX_API void wex_diff(const char *first, const char *second) noexcept
{
    std::string out;
    try {
        Comparison comparison(first, second);
        comparison.diff(out);
    } catch (const std::bad_alloc &) {
        // The comparison ends there; the differences found so far are
        // printed, whole lines only.
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
}

} // extern "C"
