// The interface table: entries, table operations, show texts, the read
// from wexd through the recording transport, and the permission checks.
#include <wex/diag.h>
#include <wex/wexd_client.h>

#include "daemon/wire_bytes.h"
#include "fakes/transport_fake.h"
#include "fakes/transport_test.h"
#include "if_index.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::replies;
using wex_fake::transport;
using wex_test::capture_stdout;

namespace
{

using Names = std::vector<std::string>;

intf_table_entry entry_of(uint64_t mask, const char *name = "fc")
{
    intf_table_entry e;
    std::memset(&e, 0xEE, sizeof e);
    EXPECT_EQ(set_interface_table_entry(&e, mask, name, 0, 0, nullptr, nullptr, nullptr, nullptr, 0), 0);
    return e;
}

int32_t insert(intf_table &t, uint64_t mask, const char *name = "fc")
{
    const intf_table_entry e = entry_of(mask, name);
    return insert_entry_in_interface_table(&t, &e);
}

intf_table empty_table()
{
    intf_table t;
    std::memset(&t, 0, sizeof t);
    t.last_index = -1;
    return t;
}

const std::string kHeading = "=======================================\nDisplaying Interface Table\n"
                             "=======================================\n";
const std::string kEntryRule = "---------------------------------------\n";
const std::string kHelpHeading = "\n Interface help information:\n";

using InterfaceTableTest = wex_fake::TransportTest;

TEST_F(InterfaceTableTest, TableStaysDenseAndRefusesTheTwentyFifthEntry)
{
    intf_table t = empty_table();
    int32_t slot = 77;
    EXPECT_EQ(search_entry_in_interface_table(&t, 5), -1);
    EXPECT_EQ(wexd_interface_table_search(t.entries, t.last_index, 5, &slot), 0x40540027);
    EXPECT_EQ(slot, 77);

    const uint64_t low_alike[] = {0x100000005ull, 0x200000005ull};
    for (uint64_t mask : low_alike)
        ASSERT_EQ(insert(t, mask), 0);
    EXPECT_EQ(search_entry_in_interface_table(&t, 0x200000005ull), 1);
    EXPECT_EQ(search_entry_in_interface_table(&t, 5), -1);
    EXPECT_EQ(wexd_interface_table_search(t.entries, t.last_index, 0x100000005ull, &slot), 0);
    EXPECT_EQ(slot, 0);

    for (uint64_t mask = 2; mask < 24; ++mask)
        ASSERT_EQ(insert(t, mask), 0);
    EXPECT_EQ(t.last_index, 23);
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

    intf_table one = empty_table();
    insert(one, 7);
    ASSERT_EQ(delete_entry_from_interface_table(&one, 0), 0);
    EXPECT_EQ(one.last_index, -1);

    intf_table damaged = empty_table();
    damaged.last_index = 40; // an image no table can have
    EXPECT_EQ(search_entry_in_interface_table(&damaged, 0), -1);
    EXPECT_EQ(insert(damaged, 1), -1);
}

TEST_F(InterfaceTableTest, EntryCutsLongTextsAndCopiesEveryField)
{
    intf_help_info help;
    wex_intf_help_info_reset(&help, "Fibre");
    wex_intf_help_info_add(&help, "slot", 1, 16);
    intf_table_entry e;
    ASSERT_EQ(set_interface_table_entry(&e, 0x8000000000000001ull, std::string(40, 'n').c_str(), 2, 3,
                                        std::string(50, 'v').c_str(), "fc_list", std::string(30, 'l').c_str(),
                                        &help, 4),
              0);
    EXPECT_EQ(std::string(e.name), std::string(35, 'n'));
    EXPECT_EQ(std::string(e.verify_func_name), std::string(47, 'v'));
    EXPECT_EQ(std::string(e.lib_name), std::string(23, 'l'));
    EXPECT_EQ(e.min_match_len, 2);
    EXPECT_EQ(std::memcmp(&e.help_info, &help, sizeof help), 0);

    intf_table_entry copy;
    std::memset(&copy, 0x5A, sizeof copy);
    ASSERT_EQ(copy_interface_table_entry(&e, &copy), 0);
    EXPECT_EQ(std::memcmp(&copy, &e, sizeof e), 0);
    EXPECT_EQ(set_interface_table_entry(nullptr, 1, "", 0, 0, "", "", "", nullptr, 0), -1);
}

TEST_F(InterfaceTableTest, ShowPrintsTheSetFieldsBetweenTheTableRules)
{
    intf_help_info help;
    wex_intf_help_info_reset(&help, "Fibre");
    wex_intf_help_info_add(&help, "slot", 1, 16);
    intf_table_entry entries[2];
    set_interface_table_entry(&entries[0], 0x8000000000000001ull, "fc", 2, 0, "fc_verify", "", "libfc.so",
                              &help, 3);
    set_interface_table_entry(&entries[1], 0, nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, 0);

    EXPECT_EQ(capture_stdout([&] { show_interface_table_entry(&entries[0]); }),
              "\n Interface Mask:-9223372036854775807 Interface Name:fc  Minimum match length:2 "
              " Ifindex Verification func:fc_verify  Library name:libfc.so  Ascii gen priority:3 " +
                  kHelpHeading + "Intf help str:Fibre \t slot <1-16>\n");
    EXPECT_EQ(capture_stdout([&] { show_interface_table(&entries[1], 1); }),
              kHeading + kEntryRule + "\n Interface Mask:0" + kHelpHeading + "\n" +
                  "=======================================\n");
    EXPECT_EQ(capture_stdout([&] { show_interface_table_entry(nullptr); }), "");
}

TEST_F(InterfaceTableTest, ReadCopiesTheEntriesOfWexdsImage)
{
    intf_table image = empty_table();
    insert(image, 11, "fc");
    insert(image, 12, "vsan");
    transport().script("ipcq_recv", replies(wex_test::bytes_of_record(image)));
    intf_table_entry *entries = nullptr;
    ASSERT_EQ(wexd_interface_table_get(4, &entries), 2);
    ASSERT_NE(entries, nullptr);
    EXPECT_EQ(std::memcmp(entries, image.entries, 2 * sizeof *entries), 0);
    std::free(entries);
    const auto send = transport().calls_of("ipcq_send").at(0);
    EXPECT_EQ(send.opcode, 905u);
    EXPECT_EQ(send.dest_queue, 37u);
    EXPECT_EQ(send.q, 4);
    EXPECT_EQ(send.length, 0u);

    transport().reset();
    transport().script("ipcq_recv", replies(wex_test::bytes_of_record(empty_table())));
    entries = reinterpret_cast<intf_table_entry *>(&image);
    EXPECT_EQ(wexd_interface_table_get(4, &entries), 0);
    EXPECT_EQ(entries, nullptr);
}

TEST_F(InterfaceTableTest, ReadRefusesFailedExchangesAndImagesThatAreNoTable)
{
    intf_table shifted = empty_table();
    shifted.last_index = 24;
    intf_table negative = empty_table();
    negative.last_index = -2;
    Bytes short_image = wex_test::bytes_of_record(empty_table());
    short_image.resize(14496);
    const struct {
        const char *what;
        const char *failing;
        wex_fake::Answer answer;
    } cases[] = {
        {"send fails", "ipcq_send", fails(ECONNREFUSED)},
        {"receive times out", "ipcq_recv", fails(ETIME)},
        {"reply without payload", "ipcq_recv", wex_fake::Answer{}},
        {"reply one byte short", "ipcq_recv", replies(short_image)},
        {"last index past the table", "ipcq_recv", replies(wex_test::bytes_of_record(shifted))},
        {"last index below -1", "ipcq_recv", replies(wex_test::bytes_of_record(negative))},
    };
    for (const auto &c : cases) {
        transport().reset();
        transport().script(c.failing, c.answer);
        intf_table_entry *untouched = reinterpret_cast<intf_table_entry *>(&shifted);
        EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(wexd_interface_table_get(4, &untouched), -1) << c.what; }),
                  "Could not communicate with wexd\n")
            << c.what;
        EXPECT_EQ(untouched, reinterpret_cast<intf_table_entry *>(&shifted)) << c.what;
        EXPECT_EQ(transport().live_messages(), 0) << c.what;
    }
}

TEST_F(InterfaceTableTest, RestrictedUsersConfigureOnlyTheirInterfaceTypes)
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
    EXPECT_EQ(capture_stdout([&] { wex_is_interface_config_allowed(nullptr, &restricted, 0x0201000Au); }),
              "Checking if interface config allowed for Ifindex = 201000a\n");
    EXPECT_EQ(capture_stdout([&] { wex_is_interface_config_allowed(nullptr, &unrestricted, 1); }), "");
    wex_lib_debug_filter_set(0);

    vsan_mask *none = nullptr;
    EXPECT_EQ(wex_intf_type_perm_check(nullptr), 1);
    EXPECT_EQ(wex_is_interface_display_allowed(&restricted), 1);
    EXPECT_EQ(wex_fc_intf_perm_check(&none), 1);
}

TEST_F(InterfaceTableTest, StateQueryIsOneBareNotification)
{
    EXPECT_EQ(omx_pa_state_query(6), 0);
    transport().script("ipcq_send", fails(EAGAIN));
    transport().script("ipcq_errno_get", wex_fake::Answer{EPIPE, 0, std::nullopt});
    EXPECT_EQ(
        capture_stdout([] { EXPECT_EQ(omx_pa_state_query(6), -1); }),
        "omx_pa_state_query:398:feature/wex/lib/wex_process_api: ipcq send notify error Broken pipe \n");
    const auto sends = transport().calls_of("ipcq_send");
    ASSERT_EQ(sends.size(), 2u);
    EXPECT_EQ(sends[0].opcode, 175105u);
    EXPECT_EQ(sends[0].dest_queue, 0u);
    EXPECT_EQ(sends[0].length, 0u);
    EXPECT_FALSE(sends[0].options.has_value());
    EXPECT_FALSE(sends[0].handle_given);
    EXPECT_EQ(transport().calls_of("ipcq_errno_get").at(0).q, 6);
}

} // namespace
