// Settings, the CLI lock and locales: the exact requests and what replies
// and failures become.
#include <wex/wexd_client.h>

#include "daemon/wire_bytes.h"
#include "fakes/transport_fake.h"
#include "fakes/transport_test.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::replies;
using wex_fake::transport;
using wex_test::capture_stdout;
using wex_test::put_text;
using wex_test::put_u32;

namespace
{

wex_fake::Answer status(int result)
{
    return wex_fake::Answer{result, 0, std::nullopt};
}

using SettingsTest = wex_fake::TransportTest;

TEST_F(SettingsTest, EachSettingSetsOneFieldOfAZeroRecord)
{
    const struct {
        const char *what;
        std::function<int32_t()> call;
        uint32_t opcode, lead, offset, value;
    } rows[] = {
        {"max sessions", [] { return wexd_max_wex_sessions_set(4, 32, 7); }, 7661, 7, 84, 32},
        {"time-out, flag set", [] { return wexd_session_timeout_set(4, 30, 1); }, 935, 0, 76, 30},
        {"time-out, flag clear", [] { return wexd_session_timeout_set(4, 45, 0); }, 936, 0, 80, 45},
        {"length", [] { return wexd_term_set_length(4, 24); }, 7687, 0, 92, 24},
        {"width", [] { return wexd_term_set_width(4, 80); }, 7688, 0, 88, 80},
    };
    for (const auto &row : rows) {
        transport().reset();
        EXPECT_EQ(row.call(), 0) << row.what;
        const auto call = transport().calls_of("bcp_req_resp").at(0);
        Bytes message = wex_test::zeros(128);
        put_u32(message, 0, row.lead);
        put_u32(message, 4 + row.offset, row.value);
        EXPECT_EQ(call.payload, message) << row.what;
        EXPECT_EQ(call.opcode, row.opcode) << row.what;
        EXPECT_EQ(call.msg_type, 3u) << row.what;
        EXPECT_EQ(call.dest_queue, 37u) << row.what;
        EXPECT_EQ(call.timeout, 10u) << row.what;
        EXPECT_EQ(call.length, 128u) << row.what;
        EXPECT_EQ(call.text1 + call.text2, "") << row.what;
        // Anything but 0 from wexd or the exchange is -1.
        transport().script("bcp_req_resp", status(0x40540001));
        EXPECT_EQ(row.call(), -1) << row.what;
        transport().script("bcp_req_resp", fails(ETIME));
        EXPECT_EQ(row.call(), -1) << row.what;
    }

    transport().reset();
    EXPECT_EQ(wexd_switchname_set(4, std::string(70, 's').c_str()), 0);
    Bytes named = wex_test::zeros(128);
    put_text(named, 4, std::string(63, 's'));
    EXPECT_EQ(transport().calls_of("bcp_req_resp").at(0).payload, named);
    EXPECT_EQ(transport().calls_of("bcp_req_resp").at(0).opcode, 917u);

    transport().reset();
    EXPECT_EQ(wexd_term_set_length(4, 0), -1);
    EXPECT_EQ(wexd_term_set_width(4, 0), -1);
    EXPECT_EQ(wexd_switchname_set(4, nullptr), -1);
    EXPECT_TRUE(transport().calls().empty());
}

TEST_F(SettingsTest, ConfigurationSetSendsTheCallersRecordAndTexts)
{
    wexd_wex_config config;
    std::memset(&config, 0x11, sizeof config);
    transport().script("bcp_req_resp", status(0x40540001));
    EXPECT_EQ(wexd_wex_configuration_set(2, &config, 917, 9, "t1", nullptr), 0x40540001);
    const auto call = transport().calls_of("bcp_req_resp").at(0);
    Bytes message(128, 0x11);
    put_u32(message, 0, 9);
    EXPECT_EQ(call.payload, message);
    EXPECT_EQ(call.text1, "t1");
    EXPECT_EQ(call.text2, "");
    EXPECT_EQ(wexd_wex_configuration_set(2, nullptr, 917, 0, "", ""), -1);
    EXPECT_EQ(transport().calls().size(), 1u);
}

TEST_F(SettingsTest, ReadsHandOverOnlyWholeRecordsAndNames)
{
    Bytes record(124, 0);
    put_text(record, 0, "edge-1");
    transport().script("bcp_req_resp", replies(record));
    wexd_wex_config *config = nullptr;
    ASSERT_EQ(wexd_wex_configuration_get(3, &config), 0);
    EXPECT_STREQ(config->switchname, "edge-1");
    std::free(config);
    const auto read = transport().calls_of("bcp_req_resp").at(0);
    EXPECT_EQ(read.opcode, 916u);
    EXPECT_EQ(read.msg_type, 1u);
    EXPECT_EQ(read.length, 0u);
    EXPECT_TRUE(read.payload_null);
    for (const wex_fake::Answer &bad : {replies(Bytes(123, 0)), fails(EIO), wex_fake::Answer{}}) {
        transport().script("bcp_req_resp", bad);
        config = reinterpret_cast<wexd_wex_config *>(&record);
        EXPECT_EQ(wexd_wex_configuration_get(3, &config), -1);
        EXPECT_EQ(config, nullptr);
    }

    Bytes longer(130, 0x22);
    put_u32(longer, 92, 24);
    transport().reset();
    transport().script("ipcq_recv", replies(longer));
    wexd_wex_config info;
    ASSERT_EQ(wexd_wex_config_info_get(3, &info), 0);
    EXPECT_EQ(info.term_length, 24u);
    EXPECT_EQ(transport().calls_of("ipcq_send").at(0).opcode, 916u);
    transport().script("ipcq_recv", replies(Bytes(100, 0x33)));
    EXPECT_EQ(wexd_wex_config_info_get(3, &info), -1);
    EXPECT_EQ(info.term_length, 24u); // untouched
    transport().script("ipcq_send", fails(ENOENT));
    EXPECT_EQ(wexd_wex_config_info_get(3, &info), -1);
}

TEST_F(SettingsTest, DynamicParFileNameMustEndWithinReplyAndDestination)
{
    const std::string fits(63, 'p');
    const struct {
        wex_fake::Answer answer;
        int32_t result;
        std::string name;
    } cases[] = {
        {replies(Bytes{'d', '3', 0, 'x'}), 0, "d3"},
        {replies(Bytes(fits.begin(), fits.end())), -1, "old"}, // no terminator in the reply
        {replies([&] {
             Bytes b(fits.begin(), fits.end());
             b.push_back(0);
             return b;
         }()),
         0, fits},
        {replies(Bytes(65, 'q')), -1, "old"},
        {fails(ETIME), -1, "old"},
        {wex_fake::Answer{}, -1, "old"},
    };
    for (const auto &c : cases) {
        transport().reset();
        transport().script("bcp_req_resp", c.answer);
        char name[WEX_FILE_NAME_SIZE] = "old";
        EXPECT_EQ(wexd_wex_dynamic_parfile_name_get(3, name), c.result) << c.name;
        EXPECT_EQ(std::string(name), c.name);
        EXPECT_EQ(transport().calls_of("bcp_req_resp").at(0).opcode, 7658u);
    }
}

TEST_F(SettingsTest, LockRequestsCarryActionRequesterAndMode)
{
    const struct {
        std::function<int32_t()> call;
        uint32_t action, mode;
    } rows[] = {
        {[] { return wexd_cli_lock(6, 0xABCD); }, 1, 0},
        {[] { return wexd_cli_lock_for_upgrade(6, 0xABCD); }, 1, 1},
        {[] { return wexd_cli_unlock(6, 0xABCD); }, 0, 0},
        {[] { return wexd_cli_unlock_forced(6, 0xABCD); }, 0, 2},
        {[] { return wexd_send_lock_unlock_notification(6, 5, 0xABCD, 9); }, 5, 9},
    };
    for (const auto &row : rows) {
        transport().reset();
        transport().script("bcp_req_resp", replies(Bytes{1, 2}));
        EXPECT_EQ(row.call(), 0);
        const auto call = transport().calls_of("bcp_req_resp").at(0);
        EXPECT_EQ(call.payload, wex_test::words_then_zeros({row.action, 0xABCD, row.mode}, 12));
        EXPECT_EQ(call.opcode, 940u);
        EXPECT_EQ(call.msg_type, 3u);
        EXPECT_EQ(call.timeout, 25u);
        EXPECT_EQ(call.dest_queue, 37u);
        EXPECT_TRUE(call.handle_given);
        transport().script("bcp_req_resp", fails(ETIME));
        EXPECT_EQ(row.call(), static_cast<int32_t>(0x8054003E));
        transport().script("bcp_req_resp", status(3));
        EXPECT_EQ(row.call(), 3);
    }
}

TEST_F(SettingsTest, LocalesAreVerifiedAndReadWithTheirRecord)
{
    Bytes record = wex_test::zeros(204);
    put_text(record, 8, "fr");
    EXPECT_EQ(wexd_perm_locale_name_verify(1, "fr"), 0);
    transport().script("bcp_req_resp", status(0x40540048));
    transport().script("bcp_req_resp", fails(EIO));
    EXPECT_EQ(capture_stdout([] {
                  EXPECT_EQ(wexd_perm_locale_name_verify(1, std::string(70, 'l').c_str()), -1);
                  EXPECT_EQ(wexd_perm_locale_name_verify(1, std::string(64, 'l').c_str()), -1);
              }),
              "Error in communicating with process\n");
    auto calls = transport().calls_of("bcp_req_resp");
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0].payload, record);
    Bytes full = wex_test::zeros(204);
    put_text(full, 8, std::string(64, 'l')); // the whole field, no terminator
    EXPECT_EQ(calls[1].payload, full);
    EXPECT_EQ(calls[2].payload, full);
    EXPECT_EQ(calls[0].opcode, 7700u);
    EXPECT_EQ(calls[0].msg_type, 1u);
    EXPECT_EQ(calls[0].length, 204u);
    EXPECT_EQ(wexd_perm_locale_name_verify(1, nullptr), -1);
    EXPECT_EQ(transport().calls().size(), 3u);

    transport().reset();
    transport().script("bcp_req_resp", replies(Bytes{5, 6, 7}));
    void *buf = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(wexd_locale_info_get(1, 5, 3, nullptr, &buf, &len), 0);
    EXPECT_EQ(len, 3u);
    std::free(buf);
    const auto read = transport().calls_of("bcp_req_resp").at(0);
    EXPECT_EQ(read.payload, wex_test::words_then_zeros({3}, 204));
    EXPECT_EQ(read.opcode, 7701u);
    EXPECT_EQ(read.msg_type, 5u);
    EXPECT_EQ(read.length, 204u);
    void *untouched = &len;
    transport().script("bcp_req_resp", fails(EIO));
    EXPECT_EQ(wexd_locale_info_get(1, 1, 3, "fr", &untouched, &len), 51);
    transport().script("bcp_req_resp", status(0x40540048));
    EXPECT_EQ(wexd_locale_info_get(1, 1, 3, "fr", &untouched, &len), 0x40540048);
    EXPECT_EQ(untouched, &len);
}

} // namespace
