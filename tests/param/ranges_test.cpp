// Multi-range and interface-list printers, VSAN masks and the small tests
// on interface types and settings.
#include <wex/output.h>
#include <wex/param.h>

#include "if_index.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using wex_test::capture_stdout;

namespace
{

vsan_mask mask_of(const std::vector<int> &ids)
{
    vsan_mask mask{};
    mask.len = WEX_VSAN_MASK_BYTES;
    for (int id : ids)
        mask.bits[id / 8] |= static_cast<uint8_t>(0x80 >> (id % 8));
    return mask;
}

vsan_mask all_permitted()
{
    vsan_mask mask{};
    std::fill(std::begin(mask.bits), std::end(mask.bits), 0xFF);
    return mask;
}

std::string captured_vsan_list(const vsan_mask &mask)
{
    wex_set_redir2buf();
    wex_print_vsan_mask(&mask);
    char *text = wex_get_buf();
    std::string copy = text ? text : "<null>";
    wex_reset_redir2buf();
    std::free(text);
    return copy;
}

TEST(VsanMask, PermittedIdsPrintAsCollapsedRunsCapturedOrNot)
{
    std::vector<int> even, gaps_of_two;
    std::string even_text, gaps_text;
    for (int id = 0; id < 4096; id += 2) {
        even.push_back(id);
        even_text += (id ? "," : "") + std::to_string(id);
    }
    for (int id = 0; id + 1 < 4096; id += 3) {
        gaps_of_two.insert(gaps_of_two.end(), {id, id + 1});
        gaps_text += (id ? "," : "") + std::to_string(id) + "-" + std::to_string(id + 1);
    }
    const struct {
        std::vector<int> ids;
        std::string list;
    } cases[] = {
        {{}, "none"},
        {{0, 4095}, "0,4095"},
        {{30, 31, 33, 63, 64, 4094, 4095}, "30-31,33,63-64,4094-4095"},
        {even, even_text},
        {gaps_of_two, gaps_text},
    };
    for (const auto &c : cases) {
        const vsan_mask mask = mask_of(c.ids);
        const std::string expected = "Permitted vsans: " + c.list + "\n";
        EXPECT_EQ(capture_stdout([&] { wex_print_vsan_mask(&mask); }), expected) << c.list.substr(0, 20);
        EXPECT_EQ(captured_vsan_list(mask), expected) << c.list.substr(0, 20);
    }
    EXPECT_EQ(captured_vsan_list(all_permitted()), "Permitted vsans: 0-4095\n");
    EXPECT_GT(even_text.size(), 2048u); // longer than the area the text was once collected in
}

TEST(VsanMask, AllowedIdsRangesAndRestriction)
{
    vsan_mask mask{};
    mask.bits[1] = 0x40; // id 9
    EXPECT_EQ(wex_is_vsan_allowed(&mask, 8) * 100 + wex_is_vsan_allowed(&mask, 9) * 10 +
                  wex_is_vsan_allowed(&mask, 10),
              10);

    const vsan_mask gap = mask_of({1, 3, 4095});
    const integer_range reversed{5, 3}, with_gap{1, 3}, top{4095, 4095};
    EXPECT_EQ(wex_is_vsan_range_allowed(&gap, &reversed), 1);
    EXPECT_EQ(wex_is_vsan_range_allowed(&gap, &with_gap), 0);
    EXPECT_EQ(wex_is_vsan_range_allowed(&gap, &top), 1);
    const vsan_mask all = all_permitted();
    const integer_range whole{0, 4095}, beyond{4090, 5000};
    EXPECT_EQ(wex_is_vsan_range_allowed(&all, &whole), 1);
    EXPECT_EQ(wex_is_vsan_range_allowed(&all, &beyond), 0); // ids past 4095 are never permitted
    EXPECT_EQ(wex_is_vsan_allowed(&all, 4096), 0);
    EXPECT_EQ(wex_is_vsan_allowed(&all, -1), 0);
    EXPECT_EQ(wex_is_vsan_allowed(&all, 0), 1); // id 0 is a bit of the mask like any other

    EXPECT_EQ(wex_is_user_vsan_restricted(&all), 0);
    vsan_mask one_missing = all;
    one_missing.bits[511] = 0xFE; // id 4095
    EXPECT_EQ(wex_is_user_vsan_restricted(&one_missing), 1);
    EXPECT_EQ(wex_is_user_vlan_restricted(&one_missing), 1);
}

TEST(InterfaceTypes, PerVsanMasksAndRestrictedTypes)
{
    const struct {
        uint64_t mask;
        int per_vsan;
    } masks[] = {{0x1, 1},       {0x4, 1},  {0x10, 1},        {0x40, 1},    {0x40000, 1}, {0x80000, 1},
                 {0x8000000, 1}, {0x41, 0}, {0x100000000, 0}, {0xC0000, 0}, {0, 0}};
    for (const auto &m : masks)
        EXPECT_EQ(wex_is_interface_type_per_vsan(m.mask), m.per_vsan) << std::hex << m.mask;

    const struct {
        uint32_t if_index;
        int restricted;
    } interfaces[] = {
        {IF_INDEX_MAKE(1, 1, 1), 0},  {IF_INDEX_MAKE(2, 0, 1), 1},
        {IF_INDEX_MAKE(3, 0, 0), 0},  {IF_INDEX_MAKE(7, 0, 0), 0},
        {IF_INDEX_MAKE(22, 0, 1), 1}, {IF_INDEX_MAKE(1, 0, 1), 1}, // not resolvable
    };
    for (const auto &i : interfaces)
        EXPECT_EQ(wex_is_interface_type_restricted(i.if_index), i.restricted) << std::hex << i.if_index;
}

TEST(Settings, TimeoutAndSubmodeHistory)
{
    EXPECT_EQ(wex_get_timeout_user_value(-1), 0);
    EXPECT_EQ(wex_get_timeout_user_value(-2), -2);
    EXPECT_EQ(wex_get_submode_cmd_history(), 0);
    wex_submode_cmd_history_init(5);
    EXPECT_EQ(wex_get_submode_cmd_history(), 5);
    EXPECT_EQ(wex_submode_cmd_history, 5);
    wex_submode_cmd_history_init(0);
}

TEST(RangePrinters, MultiRangesAndInterfaceLists)
{
    // Multi-ranges are built word by word, as they arrive.
    const uint32_t hex_words[] = {2, 1, 2, 16, 32};
    const uint32_t int_words[] = {0xDEAD, 2, 1, 5, static_cast<uint32_t>(-3), 4};
    const uint32_t no_entries[] = {0, 0};
    const auto *hex = reinterpret_cast<const hex_multi_range *>(hex_words);
    const auto *ints = reinterpret_cast<const integer_multi_range *>(int_words);
    EXPECT_EQ(capture_stdout([&] { print_hex_multi_range(hex); }), " 0x1 - 0x2, 0x10 - 0x20");
    EXPECT_EQ(capture_stdout([&] { print_integer_multi_range(ints); }), " 1 - 5, -3 - 4");
    EXPECT_EQ(capture_stdout([&] {
                  print_hex_multi_range(reinterpret_cast<const hex_multi_range *>(no_entries));
                  print_integer_multi_range(reinterpret_cast<const integer_multi_range *>(no_entries));
              }),
              "");

    uint32_t indexes[] = {0x01010003, 0xFF};
    const if_index_list list{2, indexes}, empty{0, nullptr};
    EXPECT_EQ(capture_stdout([&] {
                  print_if_index_list(&list);
                  print_if_index_list(&empty);
              }),
              "Ifindex list length: 2\n1010003 ff \nIfindex list length: 0\n\n");
}

} // namespace
