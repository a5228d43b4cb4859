// VSAN masks, multi-range and interface-list printers, and the small tests
// on interface types and settings.
#include <wex/param.h>

#include "if_index.h"
#include "support/capture.h"

#include <gtest/gtest.h>

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

TEST(VsanMask, PermittedIdsPrintAsCollapsedRunsCapturedOrNot)
{
    std::vector<int> even, all;
    std::string even_text;
    for (int id = 0; id < 4096; ++id) {
        all.push_back(id);
        if (id % 2 == 0) {
            even.push_back(id);
            even_text += (id ? "," : "") + std::to_string(id);
        }
    }
    const struct {
        std::vector<int> ids;
        std::string list;
    } cases[] = {
        {{}, "none"},
        {{0, 4095}, "0,4095"},
        {{30, 31, 33, 63, 64, 4094, 4095}, "30-31,33,63-64,4094-4095"},
        {all, "0-4095"},
        {even, even_text}, // longer than the area the text was once collected in
    };
    for (const auto &c : cases) {
        const vsan_mask mask = mask_of(c.ids);
        const std::string expected = "Permitted vsans: " + c.list + "\n";
        EXPECT_EQ(capture_stdout([&] { wex_print_vsan_mask(&mask); }), expected);
        EXPECT_EQ(wex_test::capture_buffered([&] { wex_print_vsan_mask(&mask); }), expected);
    }
}

TEST(VsanMask, AllowedIdsRangesAndRestriction)
{
    const vsan_mask gap = mask_of({1, 3, 9, 4095}), id_zero = mask_of({0});
    EXPECT_EQ(
        std::to_string(wex_is_vsan_allowed(&gap, 8)) + std::to_string(wex_is_vsan_allowed(&gap, 9)) +
            std::to_string(wex_is_vsan_allowed(&gap, 10)) + std::to_string(wex_is_vsan_allowed(&id_zero, 0)) +
            std::to_string(wex_is_vsan_allowed(&gap, 4096)) + std::to_string(wex_is_vsan_allowed(&gap, -1)),
        "010100");
    const integer_range reversed{5, 3}, with_gap{1, 3}, top{4095, 4095}, beyond{4095, 5000};
    EXPECT_EQ(wex_is_vsan_range_allowed(&gap, &reversed), 1);
    EXPECT_EQ(wex_is_vsan_range_allowed(&gap, &with_gap), 0);
    EXPECT_EQ(wex_is_vsan_range_allowed(&gap, &top), 1);
    EXPECT_EQ(wex_is_vsan_range_allowed(&gap, &beyond), 0); // ids past 4095 are never permitted

    vsan_mask everything{};
    std::fill(std::begin(everything.bits), std::end(everything.bits), 0xFF);
    EXPECT_EQ(wex_is_user_vsan_restricted(&everything), 0);
    everything.bits[511] = 0xFE; // id 4095
    EXPECT_EQ(wex_is_user_vsan_restricted(&everything) + wex_is_user_vlan_restricted(&everything), 2);
}

TEST(InterfaceTypes, PerVsanMasksRestrictedTypesAndSettings)
{
    // clang-format off
    const struct { uint64_t mask; int per_vsan; } masks[] = {
        {0x1, 1}, {0x4, 1}, {0x10, 1}, {0x40, 1}, {0x40000, 1}, {0x80000, 1}, {0x8000000, 1},
        {0x41, 0}, {0x100000000, 0}, {0xC0000, 0}, {0, 0}};
    const struct { uint32_t if_index; int restricted; } interfaces[] = {
        {IF_INDEX_MAKE(1, 1, 1), 0}, {IF_INDEX_MAKE(2, 0, 1), 1}, {IF_INDEX_MAKE(3, 0, 0), 0},
        {IF_INDEX_MAKE(7, 0, 0), 0}, {IF_INDEX_MAKE(22, 0, 1), 1}, {IF_INDEX_MAKE(1, 0, 1), 1}}; // last: unresolvable
    // clang-format on
    for (const auto &m : masks)
        EXPECT_EQ(wex_is_interface_type_per_vsan(m.mask), m.per_vsan) << std::hex << m.mask;
    for (const auto &i : interfaces)
        EXPECT_EQ(wex_is_interface_type_restricted(i.if_index), i.restricted) << std::hex << i.if_index;

    EXPECT_EQ(wex_get_timeout_user_value(-1), 0);
    EXPECT_EQ(wex_get_timeout_user_value(-2), -2);
    wex_submode_cmd_history_init(5);
    EXPECT_EQ(wex_get_submode_cmd_history() + wex_submode_cmd_history, 10);
    wex_submode_cmd_history_init(0);
}

TEST(RangePrinters, MultiRangesAndInterfaceLists)
{
    // Multi-ranges are built word by word, as they arrive.
    const uint32_t hex_words[] = {2, 1, 2, 16, 32};
    const uint32_t int_words[] = {0xDEAD, 2, 1, 5, static_cast<uint32_t>(-3), 4};
    const uint32_t no_entries[] = {0, 0};
    uint32_t indexes[] = {0x01010003, 0xFF};
    const if_index_list list{2, indexes}, empty{0, nullptr};
    EXPECT_EQ(capture_stdout([&] {
                  print_hex_multi_range(reinterpret_cast<const hex_multi_range *>(hex_words));
                  print_integer_multi_range(reinterpret_cast<const integer_multi_range *>(int_words));
                  print_hex_multi_range(reinterpret_cast<const hex_multi_range *>(no_entries));
                  print_integer_multi_range(reinterpret_cast<const integer_multi_range *>(no_entries));
                  print_if_index_list(&list);
                  print_if_index_list(&empty);
              }),
              " 0x1 - 0x2, 0x10 - 0x20 1 - 5, -3 - 4"
              "Ifindex list length: 2\n1010003 ff \nIfindex list length: 0\n\n");
}

} // namespace
