#include <wex/parse_tree.h>

#include "support/alloc_failure.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{

// A 12-byte destination pre-filled with 'X', shown whole after the call.
std::string after_strncpy(const char *src, uint32_t size)
{
    char dst[12];
    std::memset(dst, 'X', sizeof dst);
    robust_strncpy(dst, src, size);
    return std::string(dst, sizeof dst);
}

std::string after_strncat(const char *start, const char *src, uint32_t size)
{
    char dst[12];
    std::memset(dst, 'X', sizeof dst);
    std::memcpy(dst, start, std::strlen(start) + 1);
    robust_strncat(dst, src, size);
    return std::string(dst, sizeof dst);
}

} // namespace

TEST(RobustStrings, BoundedCopyTerminatesPadsAndNeverPassesSize)
{
    using namespace std::string_literals;
    EXPECT_EQ(after_strncpy("abcdef", 4), "abc\0XXXXXXXX"s);
    EXPECT_EQ(after_strncpy("ab", 6), "ab\0\0\0\0XXXXXX"s);
    EXPECT_EQ(after_strncpy("abc", 1), "\0XXXXXXXXXXX"s);
    EXPECT_EQ(after_strncpy(nullptr, 6), "\0XXXXXXXXXXX"s);
    EXPECT_EQ(after_strncpy("abc", 0), "XXXXXXXXXXXX"s) << "no room: nothing written";

    EXPECT_EQ(after_strncat("abcdefg", "xyz", 8), "abcdefg\0XXXX"s);
    EXPECT_EQ(after_strncat("ab", "cdefghij", 8), "abcdefg\0XXXX"s);
    EXPECT_EQ(after_strncat("ab", nullptr, 8), "ab\0XXXXXXXXX"s) << "NULL source: one NUL only";
    EXPECT_EQ(after_strncat("abcdef", "gh", 3), "abcdef\0XXXXX"s) << "fuller than size";

    char dst[8] = "zzz";
    robust_strcpy(dst, nullptr);
    EXPECT_STREQ(dst, "");
    robust_strcpy(dst, "abc");
    EXPECT_STREQ(dst, "abc");
    EXPECT_EQ(robust_strlen(nullptr), 0u);
    EXPECT_EQ(robust_strlen("abc"), 3u);
}

TEST(RobustStrings, MissingStringsSortAfterPresentOnes)
{
    EXPECT_EQ(robust_strcasecmp("ABC", "abc"), 0);
    EXPECT_EQ(robust_strcasecmp(nullptr, "x"), 1);
    EXPECT_EQ(robust_strcasecmp("x", nullptr), -1);
    EXPECT_EQ(robust_strcasecmp(nullptr, nullptr), -1);
    EXPECT_LT(robust_strcasecmp("alpha", "BETA"), 0);
    EXPECT_GT(robust_strcasecmp("Gamma", "beta"), 0);

    std::vector<parse_tree_node> nodes(3);
    std::memset(nodes.data(), 0, nodes.size() * sizeof nodes[0]);
    std::strcpy(nodes[0].Token, "show");
    std::strcpy(nodes[1].Token, "Config");
    std::strcpy(nodes[2].Token, "interface");
    std::qsort(nodes.data(), nodes.size(), sizeof nodes[0],
               [](const void *a, const void *b) { return static_cast<int>(treelink_lexicograph_cmp(a, b)); });
    EXPECT_STREQ(nodes[0].Token, "Config");
    EXPECT_STREQ(nodes[1].Token, "interface");
    EXPECT_STREQ(nodes[2].Token, "show");

    char show[] = "show", config[] = "CONFIG";
    generator_node gen[3] = {};
    gen[0].Token = show;
    gen[1].Token = nullptr;
    gen[2].Token = config;
    std::qsort(gen, 3, sizeof gen[0],
               [](const void *a, const void *b) { return static_cast<int>(treegen_lexicograph_cmp(a, b)); });
    EXPECT_EQ(gen[0].Token, config);
    EXPECT_EQ(gen[1].Token, show);
    EXPECT_EQ(gen[2].Token, nullptr);
}

TEST(Strtrim, RemovesOnlyBlanksAndHandsBackANewText)
{
    const struct {
        std::string in;
        const char *out;
    } cases[] = {{"  a b  ", "a b"}, {"    ", nullptr}, {"", nullptr},
                 {"\tx ", "\tx"},    {"x", "x"},        {" \n ", "\n"}};
    for (const auto &c : cases) {
        char *out = reinterpret_cast<char *>(1);
        const uint32_t len = strtrim(c.in.c_str(), &out);
        if (!c.out) {
            EXPECT_EQ(out, nullptr) << '"' << c.in << '"';
            EXPECT_EQ(len, 0u);
            continue;
        }
        ASSERT_NE(out, nullptr);
        EXPECT_STREQ(out, c.out);
        EXPECT_EQ(len, std::strlen(c.out));
        std::free(out);
    }

    char *out = reinterpret_cast<char *>(1);
    EXPECT_EQ(strtrim(nullptr, &out), 0u);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(strtrim("  a  ", nullptr), 0u);
}

TEST(Strtrim, WarnsAboveTheBufferSizeAndStillReturnsTheWholeText)
{
    const std::string exact(STRING_BUFFER_SIZE, 'y');
    const std::string over = "  " + std::string(STRING_BUFFER_SIZE + 900, 'z') + "  ";
    char *out = nullptr;
    uint32_t len = 0;
    EXPECT_EQ(wex_test::capture_stdout([&] { len = strtrim(exact.c_str(), &out); }), "");
    EXPECT_EQ(len, exact.size());
    std::free(out);

    EXPECT_EQ(wex_test::capture_stdout([&] { len = strtrim(over.c_str(), &out); }),
              "Error: String length bigger than STRING_BUFFER_SIZE\n");
    ASSERT_EQ(len, STRING_BUFFER_SIZE + 900u);
    EXPECT_EQ(std::string(out), over.substr(2, len));
    std::free(out);
}

TEST(Strtrim, OutOfMemoryGivesNoTextAndZero)
{
    char *out = nullptr;
    uint32_t len = 1;
    const int failed = wex_test::for_each_allocation_failure([&] { len = strtrim("  ab ", &out); },
                                                             [&] {
                                                                 EXPECT_EQ(out, nullptr);
                                                                 EXPECT_EQ(len, 0u);
                                                             });
    EXPECT_EQ(failed, 1);
    EXPECT_STREQ(out, "ab");
    std::free(out);
}

TEST(Conversions, ReadNumbersAsTheFormatsDo)
{
    const struct {
        const char *text;
        int32_t value;
    } ints[] = {{"010", 8}, {"0x10", 16}, {"  -42xyz", -42},          {"abc", 0},
                {"+7", 7},  {"0X1f", 31}, {"99999999999", INT32_MAX}, {"-99999999999", INT32_MIN},
                {"", 0}};
    for (const auto &c : ints)
        EXPECT_EQ(convert_str_to_int(c.text), c.value) << c.text;

    const struct {
        const char *text;
        uint32_t value;
    } uints[] = {{"123", 123},
                 {"  42abc", 42},
                 {"abc", 0},
                 {"", 0},
                 {"4294967295", UINT32_MAX},
                 {"4294967296", UINT32_MAX},
                 {"-1", UINT32_MAX},
                 {"-5", 4294967291u},
                 {"+8", 8},
                 {"010", 10}};
    for (const auto &c : uints)
        EXPECT_EQ(convert_str_to_uint(c.text), c.value) << c.text;

    const struct {
        const char *text;
        uint64_t value;
    } hex[] = {{"ff", 255},
               {"0x1F", 31},
               {"10", 16},
               {" 0xA", 10},
               {"zz", 0},
               {"ffffffffffffffff", UINT64_MAX},
               {"123456789abcdef0", 0x123456789abcdef0ull}};
    for (const auto &c : hex)
        EXPECT_EQ(convert_str_to_uint64(c.text), c.value) << c.text;

    EXPECT_EQ(convert_str_to_int(nullptr), 0);
    EXPECT_EQ(convert_str_to_uint(nullptr), 0u);
    EXPECT_EQ(convert_str_to_uint64(nullptr), 0u);
}
