// Strings, numbers, the bit mask, the root pointer and the tree table.
#include <wex/parse_tree.h>

#include "support/alloc_failure.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

using namespace std::string_literals;

namespace
{

// A 12-byte destination pre-filled with 'X', shown whole after the call.
std::string after(void (*op)(char *, const char *, uint32_t), const char *start, const char *src,
                  uint32_t size)
{
    char dst[12];
    std::memset(dst, 'X', sizeof dst);
    std::memcpy(dst, start, std::strlen(start) + (*start ? 1 : 0));
    op(dst, src, size);
    return std::string(dst, sizeof dst);
}

TEST(Strings, BoundedCopiesTerminateAndNeverPassTheirSize)
{
    const auto cpy = [](char *d, const char *s, uint32_t n) { robust_strncpy(d, s, n); };
    const auto cat = [](char *d, const char *s, uint32_t n) { robust_strncat(d, s, n); };
    EXPECT_EQ(after(cpy, "", "abcdef", 4), "abc\0XXXXXXXX"s);
    EXPECT_EQ(after(cpy, "", "ab", 6), "ab\0\0\0\0XXXXXX"s);
    EXPECT_EQ(after(cpy, "", nullptr, 6), "\0XXXXXXXXXXX"s);
    EXPECT_EQ(after(cpy, "", "abc", 0), "XXXXXXXXXXXX"s);
    EXPECT_EQ(after(cat, "abcdefg", "xyz", 8), "abcdefg\0XXXX"s);
    EXPECT_EQ(after(cat, "ab", "cdefghij", 8), "abcdefg\0XXXX"s);
    EXPECT_EQ(after(cat, "ab", nullptr, 8), "ab\0XXXXXXXXX"s);
    EXPECT_EQ(after(cat, "abcdef", "gh", 3), "abcdef\0XXXXX"s);
    char dst[8] = "zzz";
    robust_strcpy(dst, nullptr);
    EXPECT_STREQ(dst, "");
    EXPECT_EQ(robust_strlen(nullptr), 0u);
    EXPECT_EQ(robust_strlen("abc"), 3u);

    const struct {
        const char *a, *b;
        int sign;
    } order[] = {{"ABC", "abc", 0},      {nullptr, "x", 1},     {"x", nullptr, -1},
                 {nullptr, nullptr, -1}, {"alpha", "BETA", -1}, {"Gamma", "beta", 1}};
    for (const auto &o : order) {
        const int32_t r = robust_strcasecmp(o.a, o.b);
        EXPECT_EQ((r > 0) - (r < 0), o.sign) << (o.a ? o.a : "null") << " " << (o.b ? o.b : "null");
    }
    parse_tree_node a{}, b{};
    std::strcpy(a.Token, "show");
    std::strcpy(b.Token, "Config");
    EXPECT_GT(treelink_lexicograph_cmp(&a, &b), 0);
    char show[] = "show";
    generator_node g1{}, g2{};
    g1.Token = show; // a missing token sorts last
    EXPECT_LT(treegen_lexicograph_cmp(&g1, &g2), 0);
}

TEST(Strings, TrimRemovesOnlyBlanksAndHandsBackANewText)
{
    const struct {
        std::string in;
        const char *out;
    } cases[] = {{"  a b  ", "a b"}, {"    ", nullptr}, {"", nullptr}, {"\tx ", "\tx"}, {" \n ", "\n"}};
    for (const auto &c : cases) {
        char *out = reinterpret_cast<char *>(1);
        const uint32_t len = strtrim(c.in.c_str(), &out);
        EXPECT_EQ(std::string(out ? out : "<none>") + std::to_string(len),
                  std::string(c.out ? c.out : "<none>") + std::to_string(c.out ? std::strlen(c.out) : 0));
        std::free(out);
    }
    char *out = reinterpret_cast<char *>(1);
    EXPECT_EQ(strtrim(nullptr, &out) + strtrim("  a  ", nullptr), 0u);
    EXPECT_EQ(out, nullptr);

    const std::string exact(STRING_BUFFER_SIZE, 'y'),
        over = "  " + std::string(STRING_BUFFER_SIZE + 1, 'z') + " ";
    uint32_t len = 0;
    EXPECT_EQ(wex_test::capture_stdout([&] { len = strtrim(exact.c_str(), &out); }), "");
    EXPECT_EQ(len, exact.size());
    std::free(out);
    EXPECT_EQ(wex_test::capture_stdout([&] { len = strtrim(over.c_str(), &out); }),
              "Error: String length bigger than STRING_BUFFER_SIZE\n");
    EXPECT_EQ(std::string(out), over.substr(2, STRING_BUFFER_SIZE + 1));
    std::free(out);

    const int failed = wex_test::for_each_allocation_failure([&] { len = strtrim("  ab ", &out); },
                                                             [&] {
                                                                 EXPECT_EQ(out, nullptr);
                                                                 EXPECT_EQ(len, 0u);
                                                             });
    EXPECT_EQ(failed, 1);
    std::free(out);
}

TEST(Strings, NumbersAreReadAsTheFormatsDo)
{
    const struct {
        const char *text;
        int64_t as_int, as_uint;
    } numbers[] = {{"010", 8, 10},
                   {"0x10", 16, 0},
                   {"  -42xyz", -42, 4294967254},
                   {"abc", 0, 0},
                   {"99999999999", INT32_MAX, UINT32_MAX},
                   {"-99999999999", INT32_MIN, UINT32_MAX},
                   {"-1", -1, UINT32_MAX},
                   {nullptr, 0, 0}};
    for (const auto &n : numbers) {
        EXPECT_EQ(convert_str_to_int(n.text), n.as_int) << (n.text ? n.text : "null");
        EXPECT_EQ(convert_str_to_uint(n.text), n.as_uint) << (n.text ? n.text : "null");
    }
    const struct {
        const char *text;
        uint64_t value;
    } hex[] = {{"0x1F", 31}, {" ff", 255}, {"zz", 0}, {"ffffffffffffffff", UINT64_MAX}, {nullptr, 0}};
    for (const auto &h : hex)
        EXPECT_EQ(convert_str_to_uint64(h.text), h.value) << (h.text ? h.text : "null");
}

TEST(Records, MaskBitsRootAndParameterType)
{
    const struct {
        uint32_t value;
        uint8_t first[4];
    } cases[] = {
        {0x00000001, {0x81, 0, 0, 0}}, {0x80000000, {0x01, 0, 0, 1}}, {0xFFFFFFFF, {0xFF, 0xFF, 0xFF, 0xFF}}};
    for (const auto &c : cases) {
        bmask128 m;
        std::memset(&m, 0xA5, sizeof m);
        std::memset(m.bits, 0, 4);
        m.bits[0] = 0x01; // bits already set stay set
        EXPECT_EQ(bmask128_uint32_copy(&m, c.value), 0);
        bmask128 expected;
        std::memset(&expected, 0xA5, sizeof expected);
        std::memcpy(expected.bits, c.first, 4);
        EXPECT_EQ(std::memcmp(&m, &expected, sizeof m), 0) << std::hex << c.value;
    }
    EXPECT_EQ(wex_parse_tree_root_get(), nullptr);
    int tree = 0;
    EXPECT_EQ(wex_parse_tree_root_set(&tree), 0);
    EXPECT_EQ(wex_parse_tree_root_get(), &tree);
    EXPECT_EQ(wex_get_param_type_from_mask(0x8000000000000001ull), 0x8000000000000001ull);
}

tree_table_entry entry(const char *module, const char *par)
{
    tree_table_entry e;
    std::memset(&e, 0x5A, sizeof e);
    set_tree_table_entry(&e, module, par);
    return e;
}

std::string names(const tree_table &t)
{
    std::string all;
    for (int i = 0; i <= t.last_index && i < 512; ++i)
        all += std::string(t.entries[i].module_id) + ":" + t.entries[i].par_file_name + " ";
    return all;
}

TEST(TreeTable, InsertSearchDeleteWithinTheirBounds)
{
    auto t = std::make_unique<tree_table>();
    std::memset(t.get(), 0, sizeof *t);
    t->last_index = -1;
    for (const char *module : {"A", "B", "C"}) {
        const tree_table_entry e = entry(module, module[0] == 'A' ? "a.par" : "dup.par");
        ASSERT_EQ(insert_entry_in_tree_table(t.get(), &e), 0);
    }
    EXPECT_EQ(names(*t), "A:a.par B:dup.par C:dup.par ");
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "dup.par"), 1);
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "DUP.par") + search_entry_in_tree_table(t.get(), "dup"),
              -2);
    for (int32_t bad : {-1, 3, 600})
        EXPECT_EQ(delete_entry_from_tree_table(t.get(), bad), -1) << bad;
    EXPECT_EQ(delete_entry_from_tree_table(t.get(), 0), 0);
    EXPECT_EQ(names(*t), "B:dup.par C:dup.par ");
    EXPECT_STREQ(t->entries[2].module_id, "C"); // the old last slot is left in place

    for (int i = 2; i < 512; ++i) {
        const tree_table_entry e = entry("m", ("t" + std::to_string(i) + ".par").c_str());
        ASSERT_EQ(insert_entry_in_tree_table(t.get(), &e), 0);
    }
    const auto full = std::make_unique<tree_table>(*t);
    const tree_table_entry extra = entry("m", "extra.par");
    EXPECT_EQ(insert_entry_in_tree_table(t.get(), &extra), -1);
    EXPECT_EQ(std::memcmp(t.get(), full.get(), sizeof *t), 0);
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "t511.par"), 511);

    t->last_index = 9000; // damaged: nothing leads outside the entries
    EXPECT_EQ(insert_entry_in_tree_table(t.get(), &extra) + search_entry_in_tree_table(t.get(), "x"), -2);
    EXPECT_EQ(delete_entry_from_tree_table(t.get(), 511), 0);
    EXPECT_EQ(t->last_index, 510);
    t->last_index = -7;
    EXPECT_EQ(insert_entry_in_tree_table(t.get(), &extra) + search_entry_in_tree_table(t.get(), ""), -2);
}

TEST(TreeTable, EntryAndPathFieldsAreCutToFit)
{
    tree_table_entry e = entry(std::string(30, 'm').c_str(), std::string(100, 'p').c_str()), copy;
    EXPECT_EQ(std::string(e.module_id) + e.par_file_name, std::string(23, 'm') + std::string(63, 'p'));
    e = entry(nullptr, "b.par");
    std::memset(&copy, 0x11, sizeof copy);
    copy_tree_table_entry(&e, &copy);
    EXPECT_EQ(std::string(copy.module_id) + ":" + copy.par_file_name, ":b.par");

    subtree_path p;
    std::memset(&p, 0x22, sizeof p);
    EXPECT_EQ(populate_subtree_path(&p, 1, std::string(300, 'l').c_str()), 0);
    EXPECT_EQ(p.type, 1u);
    EXPECT_EQ(std::string(p.location), std::string(WEX_SUBTREE_LOCATION_SIZE - 1, 'l'));
    populate_subtree_path(&p, 2, nullptr);
    EXPECT_STREQ(p.location, "");
}

} // namespace
