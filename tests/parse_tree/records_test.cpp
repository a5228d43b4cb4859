#include <wex/parse_tree.h>

#include <gtest/gtest.h>

#include <cstring>

TEST(Bmask128, SetsMaskBitsMostSignificantFirstAndClearsNothing)
{
    const struct {
        uint32_t value;
        uint8_t first_four[4];
    } cases[] = {
        {0x00000000, {0x00, 0x00, 0x00, 0x00}}, {0x00000001, {0x80, 0x00, 0x00, 0x00}},
        {0x80000000, {0x00, 0x00, 0x00, 0x01}}, {0x00000100, {0x00, 0x80, 0x00, 0x00}},
        {0x00010002, {0x40, 0x00, 0x80, 0x00}}, {0xFFFFFFFF, {0xFF, 0xFF, 0xFF, 0xFF}},
    };
    for (const auto &c : cases) {
        bmask128 m;
        std::memset(&m, 0, sizeof m);
        m.length = 0x12345678;
        std::memset(m.bits + 4, 0xA5, 12);
        EXPECT_EQ(bmask128_uint32_copy(&m, c.value), 0);
        EXPECT_EQ(m.length, 0x12345678u) << "length word untouched";
        EXPECT_EQ(std::memcmp(m.bits, c.first_four, 4), 0) << std::hex << c.value;
        for (int i = 4; i < 16; ++i)
            EXPECT_EQ(m.bits[i], 0xA5) << "byte " << i << " untouched";
    }

    bmask128 kept;
    std::memset(&kept, 0, sizeof kept);
    kept.bits[0] = 0x01;
    bmask128_uint32_copy(&kept, 0x00000001);
    EXPECT_EQ(kept.bits[0], 0x81) << "bits already set stay set";
}

TEST(ParseTreeRoot, IsNullUntilSetAndKeepsThePointer)
{
    EXPECT_EQ(wex_parse_tree_root_get(), nullptr);
    int tree = 0;
    EXPECT_EQ(wex_parse_tree_root_set(&tree), 0);
    EXPECT_EQ(wex_parse_tree_root_get(), &tree);
    EXPECT_EQ(wex_parse_tree_root_set(nullptr), 0);
    EXPECT_EQ(wex_parse_tree_root_get(), nullptr);
}

TEST(ParamTypeFromMask, IsTheSame64BitValue)
{
    for (uint64_t v : {0ull, 1ull, 0x40100001ull, 0x8000000000000001ull, ~0ull})
        EXPECT_EQ(wex_get_param_type_from_mask(v), v);
}
