// The default-interface request and the feature privilege, observed through
// the recording transport.
#include <wex/exec.h>

#include "common/alloc_hook.h"
#include "daemon/wire_bytes.h"
#include "fakes/transport_fake.h"
#include "fakes/transport_test.h"
#include "if_index.h"
#include "support/capture.h"
#include "support/syslog_recorder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <syslog.h>
#include <vector>

using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::replies;
using wex_fake::transport;
using wex_test::capture_stdout;

namespace
{

using Names = std::vector<std::string>;

intf_range_list list_of(std::initializer_list<intf_range> ranges)
{
    intf_range_list list{};
    for (const intf_range &range : ranges)
        list.ranges[list.count++] = range;
    return list;
}

intf_range fc(uint32_t slot, uint32_t first, uint32_t last)
{
    return {IF_INDEX_MAKE(1, slot, first), IF_INDEX_MAKE(1, slot, last)};
}

// The message: the two values, the count, the indexes.
Bytes message_of(const std::vector<uint32_t> &indexes)
{
    Bytes bytes = wex_test::words_then_zeros({0xA1, 0xB2, static_cast<uint32_t>(indexes.size())},
                                             12 + 4 * indexes.size());
    for (std::size_t i = 0; i < indexes.size(); ++i)
        wex_test::put_u32(bytes, 12 + 4 * i, indexes[i]);
    return bytes;
}

using DefaultIntfTest = wex_fake::TransportTest;

TEST_F(DefaultIntfTest, RangesAreExpandedInListOrder)
{
    std::vector<uint32_t> full;
    for (uint32_t slot = 1; slot <= 4; ++slot) {
        for (uint32_t port = 1; port <= (slot == 4 ? 63u : 64u); ++port)
            full.push_back(IF_INDEX_MAKE(1, slot, port));
    }
    const struct {
        const char *what;
        intf_range_list list;
        std::vector<uint32_t> indexes;
    } cases[] = {
        {"one interface", list_of({fc(1, 3, 3)}), {IF_INDEX_MAKE(1, 1, 3)}},
        {"no range", list_of({}), {}},
        {"overlapping",
         list_of({fc(1, 1, 3), fc(1, 2, 4)}),
         {IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 2), IF_INDEX_MAKE(1, 1, 3), IF_INDEX_MAKE(1, 1, 2),
          IF_INDEX_MAKE(1, 1, 3), IF_INDEX_MAKE(1, 1, 4)}},
        {"255 interfaces", list_of({fc(1, 1, 64), fc(2, 1, 64), fc(3, 1, 64), fc(4, 1, 63)}), full},
    };
    for (const auto &c : cases) {
        transport().reset();
        EXPECT_EQ(wex_execute_default_intf(9, 0xA1, 0xB2, c.list), 0) << c.what;
        const auto sends = transport().calls_of("ipcq_send");
        ASSERT_EQ(sends.size(), 1u) << c.what;
        EXPECT_EQ(sends[0].payload, message_of(c.indexes)) << c.what;
        EXPECT_EQ(sends[0].opcode, 7694u);
        EXPECT_EQ(sends[0].dest_queue, 76u);
        EXPECT_EQ(sends[0].address, 0xFE000000u);
        EXPECT_FALSE(sends[0].options.has_value());
        EXPECT_FALSE(sends[0].handle_given);
        EXPECT_EQ(sends[0].q, 9);
    }
    EXPECT_EQ(message_of(full).size(), 1032u);
}

TEST_F(DefaultIntfTest, RefusalsAndFailuresSendNothingOrLogTheFailure)
{
    const intf_range_list too_many = list_of({fc(1, 1, 64), fc(2, 1, 64), fc(3, 1, 64), fc(4, 1, 64)});
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(wex_execute_default_intf(9, 0, 0, too_many), -1); }),
              "Error:Too many interfaces in the list (Max 256)\n");
    intf_range_list damaged = list_of({fc(1, 1, 1)});
    damaged.count = 66;
    EXPECT_EQ(wex_execute_default_intf(9, 0, 0, damaged), -1);
    EXPECT_TRUE(transport().calls().empty());

    const intf_range_list one = list_of({fc(1, 1, 2)});
    wex::alloc_hook::arm(1);
    const std::string out = capture_stdout([&] { EXPECT_EQ(wex_execute_default_intf(9, 0, 0, one), 1); });
    wex::alloc_hook::arm(0);
    EXPECT_EQ(out, "error: allocating memory for range list\n");
    wex::alloc_hook::arm(2);
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(wex_execute_default_intf(9, 0, 0, one), -1); }), "");
    wex::alloc_hook::arm(0);
    EXPECT_TRUE(transport().calls().empty());

    transport().script("ipcq_send", fails(ECONNREFUSED));
    EXPECT_EQ(wex_execute_default_intf(9, 0, 0, one), -1);
    EXPECT_EQ(wex_test::syslog_lines(),
              (std::vector<wex_test::LogLine>{{LOG_CRIT, "Could not communicate with ascii_cfg_server\n"}}));
}

TEST_F(DefaultIntfTest, PrivilegeIsTheFirstWordOfWexdsAnswer)
{
    transport().script("bcp_parse_response", replies(wex_test::words_then_zeros({0x1F, 7}, 8)));
    EXPECT_EQ(wex_get_feature_privilege(5), 0x1F);
    EXPECT_EQ(transport().call_names(), (Names{"bcp_send_request", "ipcq_rr_token_get", "ipcq_drop",
                                               "ipcq_recv", "bcp_parse_response", "ipcq_drop"}));
    const auto request = transport().calls_of("bcp_send_request").at(0);
    EXPECT_EQ(request.opcode, 7673u);
    EXPECT_EQ(request.msg_type, 1u);
    EXPECT_EQ(request.payload, wex_test::words_then_zeros({6, 0}, 8));
    EXPECT_EQ(request.address, 0xFE000000u);
    EXPECT_EQ(request.dest_queue, 37u);
    EXPECT_EQ(request.text1 + "|" + request.text2, "|");
    EXPECT_EQ(transport().calls_of("ipcq_recv").at(0).options,
              wex_test::words_then_zeros({1, 0, 0, 0x7001}, 40));

    const struct {
        const char *what;
        const char *function;
        wex_fake::Answer answer;
        std::string printed;
    } failures[] = {
        {"receive fails", "ipcq_recv", fails(ETIME), "Error on recv\n"},
        {"request not sent", "bcp_send_request", fails(EPIPE), "Error on recv\n"},
        {"reply not parsed", "bcp_parse_response", fails(EBADMSG), ""},
        {"empty reply", "bcp_parse_response", replies({}), ""},
        {"short reply", "bcp_parse_response", replies({1, 2, 3}), ""},
    };
    for (const auto &f : failures) {
        transport().reset();
        transport().script(f.function, f.answer);
        EXPECT_EQ(capture_stdout([] { EXPECT_EQ(wex_get_feature_privilege(5), -1); }), f.printed) << f.what;
        EXPECT_EQ(transport().live_messages(), 0) << f.what;
    }
}

} // namespace
