// Parameter subtypes and dynamic ranges (with their syslog lines), the
// table reads and main-tree generation.
#include <wex/wexd_client.h>

#include "daemon/wire_bytes.h"
#include "fakes/transport_fake.h"
#include "fakes/transport_test.h"
#include "support/capture.h"
#include "support/syslog_recorder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <syslog.h>
#include <vector>

using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::replies;
using wex_fake::transport;
using wex_test::capture_stdout;

namespace
{

using wex_test::LogLine;
using Log = std::vector<LogLine>;
const std::string kNotice = "Call to wexd_set_dynamic_integer_range, setting ";

Bytes range_message(const std::string &name, int32_t lower, int32_t upper)
{
    Bytes bytes = wex_test::zeros(108);
    wex_test::put_text(bytes, 0, name);
    wex_test::put_u32(bytes, 100, static_cast<uint32_t>(lower));
    wex_test::put_u32(bytes, 104, static_cast<uint32_t>(upper));
    return bytes;
}

using SubtypesTest = wex_fake::TransportTest;

TEST_F(SubtypesTest, EachPlaceholderOfTheSubtypeGetsTheBounds)
{
    const struct {
        int32_t code;
        std::vector<std::string> names;
    } rows[] = {
        {0, {"<none>"}},
        {-1, {"<module>"}},
        {-2, {"<ficon-port-addr>", "<ficon-port-addr-hex>"}},
        {-3, {"<ficon-log-if>", "<ficon-log-if-hex>"}},
        {-4, {"<ficon-impl-port-addr>"}},
        {-8, {"<xbar_asic_inst>"}},
    };
    const int32_t range[2] = {1, 255};
    for (const auto &row : rows) {
        transport().reset();
        wex_test::syslog_lines().clear();
        EXPECT_EQ(wexd_param_subtype_register(7, row.code, range), 0) << row.code;
        const auto sends = transport().calls_of("ipcq_send");
        ASSERT_EQ(sends.size(), row.names.size()) << row.code;
        Log expected_log;
        for (std::size_t i = 0; i < sends.size(); ++i) {
            EXPECT_EQ(sends[i].payload, range_message(row.names[i], 1, 255));
            EXPECT_EQ(sends[i].opcode, 947u);
            EXPECT_EQ(sends[i].dest_queue, 296u);
            EXPECT_EQ(sends[i].address, 0xFE000000u);
            EXPECT_FALSE(sends[i].options.has_value());
            EXPECT_FALSE(sends[i].handle_given);
            expected_log.push_back({LOG_NOTICE, kNotice + row.names[i]});
        }
        EXPECT_EQ(wex_test::syslog_lines(), expected_log) << row.code;
    }

    transport().reset();
    for (int32_t code : {-9, 1}) {
        EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(wexd_param_subtype_register(7, code, range), 0x40540001); }),
                  "ERROR: non existing param subtype");
    }
    EXPECT_TRUE(transport().calls().empty());
}

TEST_F(SubtypesTest, RangesAreCheckedBeforeTheyAreSent)
{
    const int32_t five = 5, six = 6;
    EXPECT_EQ(wexd_set_dynamic_integer_range(7, "<module>", &five, &five), 0);
    EXPECT_EQ(wexd_set_dynamic_integer_range(7, "<module>", &six, &five), 0x40540001);
    EXPECT_EQ(wexd_set_dynamic_integer_range(7, "<module>", nullptr, &five), 0x40540001);
    EXPECT_EQ(wexd_set_dynamic_integer_range(7, nullptr, &five, &six), 0x40540001);
    EXPECT_EQ(transport().calls_of("ipcq_send").size(), 1u);
    transport().script("ipcq_send", fails(EAGAIN, -2));
    const std::string long_name(120, 'n');
    EXPECT_EQ(wexd_set_dynamic_integer_range(7, long_name.c_str(), &five, &six), 0x40540001);
    EXPECT_EQ(transport().calls_of("ipcq_send").at(1).payload, range_message(std::string(99, 'n'), 5, 6));

    const Log expected = {
        {LOG_NOTICE, kNotice + "<module>"},
        {LOG_NOTICE, kNotice + "<module>"},
        {LOG_ERR, "ERROR, the lower bound value of the dynamic range is higher that the upper bound value"},
        {LOG_NOTICE, kNotice + "<module>"},
        {LOG_ERR, "ERROR, the name, the lower or the upper value of the subtype are not correct"},
        {LOG_NOTICE, kNotice + "(null)"},
        {LOG_ERR, "ERROR, the name, the lower or the upper value of the subtype are not correct"},
        {LOG_NOTICE, kNotice + long_name},
        {LOG_ERR, "ERROR, ipcq_send failed, ERROR = -2, ERRNO = 11\n"},
    };
    EXPECT_EQ(wex_test::syslog_lines(), expected);
}

TEST_F(SubtypesTest, BothHexFormsAreTriedAndTheSecondFailureWins)
{
    const int32_t range[2] = {1, 2};
    transport().script("ipcq_send", fails(EAGAIN));
    EXPECT_EQ(wexd_param_subtype_register(7, -2, range), 0x40540001); // first failed, second sent
    EXPECT_EQ(transport().calls_of("ipcq_send").size(), 2u);
    transport().script("ipcq_send", wex_fake::Answer{});
    transport().script("ipcq_send", fails(EAGAIN));
    EXPECT_EQ(wexd_param_subtype_register(7, -3, range), 0x40540001);
    EXPECT_EQ(wexd_param_subtype_register(7, -3, nullptr), 0x40540001);
    EXPECT_EQ(transport().calls_of("ipcq_send").size(), 4u);
}

TEST_F(SubtypesTest, TableReadsAndMainTreeGeneration)
{
    transport().script("bcp_req_resp", replies(Bytes{1, 2, 3}));
    void *table = nullptr;
    EXPECT_EQ(wexd_param_subtype_table_get(2, &table), 0);
    ASSERT_NE(table, nullptr);
    std::free(table);
    transport().script("bcp_req_resp", wex_fake::Answer{0x40540001, 0, Bytes{1}});
    EXPECT_EQ(wexd_param_subtype_table_get(2, &table), 0x40540001);
    EXPECT_EQ(table, nullptr);

    tree_table *trees = nullptr;
    transport().script("bcp_req_resp", replies(Bytes(sizeof(tree_table), 0)));
    EXPECT_EQ(wexd_tree_table_get(2, &trees), 0);
    ASSERT_NE(trees, nullptr);
    std::free(trees);
    transport().script("bcp_req_resp", replies(Bytes(sizeof(tree_table) - 1, 0)));
    EXPECT_EQ(wexd_tree_table_get(2, &trees), -1);
    EXPECT_EQ(trees, nullptr);
    transport().script("bcp_req_resp", fails(ETIME));
    EXPECT_EQ(wexd_tree_table_get(2, &trees), -1);

    transport().script("bcp_req_resp", replies(wex_test::words_then_zeros({42}, 8)));
    EXPECT_EQ(wexd_generate_main_tree(2), 42);
    transport().script("bcp_req_resp", replies(Bytes{1, 2, 3}));
    EXPECT_EQ(wexd_generate_main_tree(2), -1);
    transport().script("bcp_req_resp", wex_fake::Answer{});
    EXPECT_EQ(wexd_generate_main_tree(2), -1);
    transport().script("bcp_req_resp", fails(EIO));
    EXPECT_EQ(wexd_generate_main_tree(2), -1);

    const auto calls = transport().calls_of("bcp_req_resp");
    const uint32_t opcodes[] = {948, 948, 938, 938, 938, 937, 937, 937, 937};
    ASSERT_EQ(calls.size(), std::size(opcodes));
    for (std::size_t i = 0; i < calls.size(); ++i) {
        EXPECT_EQ(calls[i].opcode, opcodes[i]);
        EXPECT_EQ(calls[i].msg_type, 1u);
        EXPECT_EQ(calls[i].length, 0u);
        EXPECT_EQ(calls[i].timeout, 10u);
        EXPECT_EQ(calls[i].dest_queue, 37u);
        EXPECT_TRUE(calls[i].handle_given);
    }
}

} // namespace
