// The interface table: its operations, the show texts and the permission
// checks of restricted users.
#include <wex/diag.h>
#include <wex/wexd_client.h>

#include "if_index.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using wex_test::capture_stdout;

namespace
{

int32_t insert(intf_table &t, uint64_t mask)
{
    intf_table_entry e;
    set_interface_table_entry(&e, mask, "fc", 0, 0, nullptr, nullptr, nullptr, nullptr, 0);
    return insert_entry_in_interface_table(&t, &e);
}

intf_table empty_table()
{
    intf_table t;
    std::memset(&t, 0, sizeof t);
    t.last_index = -1;
    return t;
}

TEST(InterfaceTable, StaysDenseAndRefusesTheTwentyFifthEntry)
{
    intf_table t = empty_table();
    int32_t slot = 77;
    EXPECT_EQ(search_entry_in_interface_table(&t, 5), -1);
    EXPECT_EQ(wexd_interface_table_search(t.entries, t.last_index, 5, &slot), 0x40540027);
    EXPECT_EQ(slot, 77);

    for (uint64_t mask : {0x100000005ull, 0x200000005ull}) // alike in the low word
        ASSERT_EQ(insert(t, mask), 0);
    EXPECT_EQ(search_entry_in_interface_table(&t, 0x200000005ull), 1);
    EXPECT_EQ(search_entry_in_interface_table(&t, 5), -1);
    EXPECT_EQ(wexd_interface_table_search(t.entries, t.last_index, 0x100000005ull, &slot), 0);
    EXPECT_EQ(slot, 0);

    for (uint64_t mask = 2; mask < 24; ++mask)
        ASSERT_EQ(insert(t, mask), 0);
    const intf_table full = t;
    EXPECT_EQ(insert(t, 99), -1);
    EXPECT_EQ(std::memcmp(&t, &full, sizeof t), 0);

    ASSERT_EQ(delete_entry_from_interface_table(&t, 0), 0);
    EXPECT_EQ(t.last_index, 22);
    EXPECT_EQ(t.entries[0].mask, 0x200000005ull);
    EXPECT_EQ(t.entries[22].mask, 23u);
    EXPECT_EQ(delete_entry_from_interface_table(&t, 23), -1);
    EXPECT_EQ(delete_entry_from_interface_table(&t, -1), -1);
    EXPECT_EQ(t.last_index, 22);

    intf_table damaged = empty_table();
    damaged.last_index = 40; // an image no table can have
    EXPECT_EQ(search_entry_in_interface_table(&damaged, 0), -1);
    EXPECT_EQ(insert(damaged, 1), -1);
}

TEST(InterfaceTable, EntryCutsLongTextsAndShowPrintsItsSetFields)
{
    intf_help_info help;
    wex_intf_help_info_reset(&help, "Fibre");
    wex_intf_help_info_add(&help, "slot", 1, 16);
    intf_table_entry e, copy;
    ASSERT_EQ(set_interface_table_entry(&e, 0x8000000000000001ull, std::string(40, 'n').c_str(), 2, 3,
                                        std::string(50, 'v').c_str(), "fc_list", std::string(30, 'l').c_str(),
                                        &help, 4),
              0);
    EXPECT_EQ(std::string(e.name) + e.verify_func_name + e.lib_name,
              std::string(35, 'n') + std::string(47, 'v') + std::string(23, 'l'));
    std::memset(&copy, 0x5A, sizeof copy);
    ASSERT_EQ(copy_interface_table_entry(&e, &copy), 0);
    EXPECT_EQ(std::memcmp(&copy, &e, sizeof e), 0);
    EXPECT_EQ(set_interface_table_entry(nullptr, 1, "", 0, 0, "", "", "", nullptr, 0), -1);
    EXPECT_EQ(copy_interface_table_entry(nullptr, &copy) + copy_interface_table_entry(&e, nullptr), -2);

    intf_table_entry entries[2];
    set_interface_table_entry(&entries[0], 0x8000000000000001ull, "fc", 2, 0, "fc_verify", "", "libfc.so",
                              &help, 3);
    set_interface_table_entry(&entries[1], 0, nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(capture_stdout([&] {
                  show_interface_table_entry(&entries[0]);
                  show_interface_table(&entries[1], 1);
                  show_interface_table_entry(nullptr);
              }),
              "\n Interface Mask:-9223372036854775807 Interface Name:fc  Minimum match length:2 "
              " Ifindex Verification func:fc_verify  Library name:libfc.so  Ascii gen priority:3 "
              "\n Interface help information:\nIntf help str:Fibre \t slot <1-16>\n"
              "=======================================\nDisplaying Interface Table\n"
              "=======================================\n---------------------------------------\n"
              "\n Interface Mask:0\n Interface help information:\n\n"
              "=======================================\n");
}

TEST(InterfaceTable, RestrictedUsersConfigureOnlyTheirInterfaceTypes)
{
    vsan_mask unrestricted;
    unrestricted.len = WEX_VSAN_MASK_BYTES;
    std::memset(unrestricted.bits, 0xFF, sizeof unrestricted.bits);
    vsan_mask restricted = unrestricted;
    restricted.bits[0] = 0x7F;
    const struct {
        const vsan_mask *mask;
        uint32_t if_index;
        int32_t allowed;
    } cases[] = {
        {&unrestricted, IF_INDEX_MAKE(2, 0, 5), 1}, {&restricted, IF_INDEX_MAKE(1, 1, 3), 1},
        {&restricted, IF_INDEX_MAKE(8, 1, 2), 1},   {&restricted, IF_INDEX_MAKE(2, 0, 5), 0},
        {&restricted, IF_INDEX_MAKE(99, 0, 1), 0},  {nullptr, IF_INDEX_MAKE(6, 0, 10), 0},
        {nullptr, IF_INDEX_MAKE(1, 2, 1), 1},
    };
    for (const auto &c : cases)
        EXPECT_EQ(wex_is_interface_config_allowed(nullptr, c.mask, c.if_index), c.allowed) << c.if_index;

    wex_lib_debug_filter_set(WEX_DEBUG_EOL);
    EXPECT_EQ(capture_stdout([&] {
                  wex_is_interface_config_allowed(nullptr, &restricted, 0x0201000Au);
                  wex_is_interface_config_allowed(nullptr, &unrestricted, 1);
              }),
              "Checking if interface config allowed for Ifindex = 201000a\n");
    wex_lib_debug_filter_set(0);

    vsan_mask *none = nullptr;
    EXPECT_EQ(wex_intf_type_perm_check(nullptr), 1);
    EXPECT_EQ(wex_is_interface_display_allowed(&restricted), 1);
    EXPECT_EQ(wex_fc_intf_perm_check(&none), 1);
}

} // namespace
