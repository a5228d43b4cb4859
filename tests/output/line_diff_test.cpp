#include "support/alloc_failure.h"
#include "support/capture.h"

#include <wex/output.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace wex_test;

namespace
{

struct DiffCase {
    const char *what;
    const char *first, *second;
    const char *printed; // empty when the texts are the same
};

const DiffCase kCases[] = {
    {"order at every level", "a\n  b\n    c\n    d\n  e\nf\n", "f\na\n  e\n  b\n    d\n    c\n", ""},
    {"duplicate removed once", "x\nx\n", "x\n", "    -x\n"},
    {"child changed", "interface a\n  shutdown\n", "interface a\n  no shutdown\n",
     "     interface a\n    -  shutdown\n    +  no shutdown\n"},
    {"trailing blank kept", "a \n", "a\n", "    -a \n    +a\n"},
    {"blank lines and an unended last line ignored", "a\n\n \t\r\n\v\f\nb", "a\n", ""},
    {"removed parent with its children", "vsan database\n  vsan 2\n    x\nz\n", "z\n",
     "    -vsan database\n    -  vsan 2\n    -    x\n"},
    {"added parent with its children", "z\n", "z\nzone a\n  member 1\n", "    +zone a\n    +  member 1\n"},
    {"level 3 change under both parents", "zs A\n  zone Z\n    m 1\n    m 2\n",
     "zs A\n  zone Z\n    m 3\n    m 1\n", "     zs A\n       zone Z\n    -    m 2\n    +    m 3\n"},
    {"equal lines paired in order, not by content", "a\n  x\na\n  y\n", "a\n  y\na\n  x\n",
     "     a\n    -  x\n    +  y\n     a\n    -  y\n    +  x\n"},
    {"odd blanks: 1 is level 1, 3 is level 2", " a\n   b\n", " a\n", "      a\n    -   b\n"},
    {"text opening at level 3", "    deep\n    deeper\nroot\n", "    deep\n",
     "         deep\n    -    deeper\n    -root\n"},
    {"level 3 straight under level 1", "a\n    c\n    d\n", "a\n    c\n", "     a\n         c\n    -    d\n"},
    {"no first text", nullptr, "a\n", "    +a\n"},
    {"no second text", "a\n", nullptr, "    -a\n"},
};

TEST(LineDiff, ComparesAndPrintsByTheLineTree)
{
    for (const DiffCase &c : kCases) {
        EXPECT_EQ(wex_is_diff_same(c.first, c.second), *c.printed == '\0') << c.what;
        EXPECT_EQ(capture_stdout([&] { wex_diff(c.first, c.second); }), c.printed) << c.what;
    }
}

// A configuration of blocks with children and grandchildren, many siblings
// at each level, every block and line repeated so that equal texts have to
// pair up (repeated blocks are identical, so any pairing is the same).
std::vector<std::string> blocks(int count)
{
    std::vector<std::string> out;
    for (int i = 0; i < count; ++i) {
        std::string block = "interface fc1/" + std::to_string(i % 500) + "\n";
        for (int k = 0; k < 20; ++k)
            block += "  zone " + std::to_string(k % 7) + "\n    member " + std::to_string(i % 500 % 3) + "\n";
        out.push_back(block);
    }
    return out;
}

std::string join(const std::vector<std::string> &parts)
{
    std::string text;
    for (const std::string &p : parts)
        text += p;
    return text;
}

TEST(LineDiff, LargeTextsInAnotherOrderAreTheSame)
{
    std::vector<std::string> parts = blocks(2000);
    const std::string first = join(parts) + "interface fc9/1\n  zone 3\n";
    std::reverse(parts.begin(), parts.end());
    std::string second = "interface fc9/1\n  zone 3\n" + join(parts);
    EXPECT_EQ(wex_is_diff_same(first.c_str(), second.c_str()), 1);
    // Lines this many are held in memory taken whole from the system, which
    // can run out as the heap does: each text's lines, then the pairing table.
    int32_t same = -1;
    EXPECT_EQ(for_each_allocation_failure([&] { same = wex_is_diff_same(first.c_str(), second.c_str()); },
                                          [&] { EXPECT_EQ(same, 0); }),
              3);

    second.insert(second.find("  zone 3\n") + 9, "    member 9\n");
    second += "interface fc1/7\n";
    EXPECT_EQ(wex_is_diff_same(first.c_str(), second.c_str()), 0);
    EXPECT_EQ(capture_stdout([&] { wex_diff(second.c_str(), first.c_str()); }),
              "     interface fc9/1\n       zone 3\n    -    member 9\n    -interface fc1/7\n");
}

TEST(LineDiff, ManySiblingsPairEqualLinesInOrderToo)
{
    std::string filler;
    for (int i = 0; i < 40; ++i)
        filler += "f" + std::to_string(i) + "\n";
    const std::string first = filler + "a\n  x\na\n  y\n", second = "a\n  y\n" + filler + "a\n  x\n";
    EXPECT_EQ(capture_stdout([&] { wex_diff(first.c_str(), second.c_str()); }),
              "     a\n    -  x\n    +  y\n     a\n    -  y\n    +  x\n");
}

TEST(LineDiff, RunningOutOfMemoryEndsTheComparison)
{
    // Parsing fails first for one text, then the other; the comparison's
    // own table last. Each failure leaves the texts different.
    std::string text;
    for (int i = 0; i < 20; ++i)
        text += "line " + std::to_string(i) + "\n";
    int32_t result = -1;
    const int failures = for_each_allocation_failure(
        [&] { result = wex_is_diff_same(text.c_str(), text.c_str()); }, [&] { EXPECT_EQ(result, 0); });
    EXPECT_EQ(failures, 3);
    EXPECT_EQ(result, 1);

    const std::string out = capture_stdout(
        [] { for_each_allocation_failure([] { wex_diff("a\n", "b\n"); }, [] { std::fputs("|", stdout); }); });
    EXPECT_EQ(out, "    +b\n|    -a\n|    -a\n    +b\n");
}

} // namespace
