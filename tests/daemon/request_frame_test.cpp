// The frame of every daemon request, observed through the recording transport.
#include "daemon/wire_bytes.h"
#include "fakes/transport_fake.h"
#include "fakes/transport_test.h"
#include "wex_process_api.h"

#include "ipcq.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::replies;
using wex_fake::transport;
using wex_test::words_then_zeros;
namespace daemon_api = wex::daemon;

namespace
{

using Names = std::vector<std::string>;

using RequestFrameTest = wex_fake::TransportTest;

TEST_F(RequestFrameTest, OneWaySendsCarryTheirOptionsOrNone)
{
    const std::array<uint8_t, 4> payload{0xDE, 0xAD, 0xBE, 0xEF};
    const auto bytes = std::as_bytes(std::span(payload));
    transport().script("ipcq_send", fails(EAGAIN));
    EXPECT_EQ(daemon_api::send_one_way(7, WEX_NOTIFY_QUEUE, 943, bytes, daemon_api::SendOptions::none), -1);
    EXPECT_EQ(daemon_api::send_one_way(7, WEXD_QUEUE, 900, bytes, daemon_api::SendOptions::plain), 0);
    EXPECT_EQ(daemon_api::send_one_way(7, WEX_NOTIFY_QUEUE, 175105, {}, daemon_api::SendOptions::none), 0);

    const auto sends = transport().calls_of("ipcq_send");
    ASSERT_EQ(sends.size(), 3u);
    EXPECT_EQ(sends[0].address, 0xFE000000u);
    EXPECT_EQ(sends[0].dest_queue, 0u);
    EXPECT_EQ(sends[0].opcode, 943u);
    EXPECT_EQ(sends[0].payload, (Bytes{0xDE, 0xAD, 0xBE, 0xEF}));
    EXPECT_FALSE(sends[0].options.has_value());
    EXPECT_EQ(sends[1].dest_queue, 37u);
    EXPECT_EQ(sends[1].options, words_then_zeros({1}, 68));
    EXPECT_TRUE(sends[2].payload_null);
    EXPECT_EQ(sends[2].length, 0u);
    for (const auto &send : sends) {
        EXPECT_FALSE(send.handle_given);
        EXPECT_EQ(send.flags, 0u);
        EXPECT_EQ(send.q, 7);
    }
    EXPECT_EQ(transport().calls().size(), 3u);
}

TEST_F(RequestFrameTest, StandbySendDropsItsHandleOnlyAfterSuccess)
{
    const std::array<uint8_t, 2> payload{1, 2};
    const auto bytes = std::as_bytes(std::span(payload));
    EXPECT_EQ(daemon_api::send_and_drop(3, 0, 7655, bytes, daemon_api::SendOptions::standby), 0);
    transport().script("ipcq_send", fails(ECONNREFUSED));
    EXPECT_EQ(daemon_api::send_and_drop(3, 0, 7656, bytes, daemon_api::SendOptions::standby), -1);

    EXPECT_EQ(transport().call_names(), (Names{"ipcq_send", "ipcq_drop", "ipcq_send"}));
    Bytes standby = words_then_zeros({1}, 68);
    standby[35] = 1;
    for (const auto &send : transport().calls_of("ipcq_send")) {
        EXPECT_EQ(send.options, standby);
        EXPECT_TRUE(send.handle_given);
    }
}

TEST_F(RequestFrameTest, SynchronousRequestFollowsTheExchangeAndCopiesWithinBounds)
{
    transport().script("ipcq_recv", replies(Bytes{1, 2, 3, 4, 5, 6}));
    std::array<std::byte, 4> out{};
    std::size_t reply_size = 0;
    ASSERT_EQ(daemon_api::synchronous_request(11, 905, out, &reply_size), 0);
    EXPECT_EQ(reply_size, 6u);
    EXPECT_EQ(out[3], std::byte{4}); // no more than out holds
    EXPECT_EQ(transport().call_names(), (Names{"ipcq_send", "ipcq_rr_token_get", "ipcq_drop", "ipcq_recv",
                                               "ipcq_payload_size", "ipcq_payload_get", "ipcq_drop"}));
    const auto send = transport().calls_of("ipcq_send").at(0);
    EXPECT_EQ(send.address, 0xFE000000u);
    EXPECT_EQ(send.dest_queue, 37u);
    EXPECT_EQ(send.opcode, 905u);
    EXPECT_EQ(send.length, 0u);
    EXPECT_TRUE(send.handle_given);
    EXPECT_EQ(send.options, words_then_zeros({1}, 68));
    // The token of the sent message (the fake's first is 0x7001) names the reply.
    EXPECT_EQ(transport().calls_of("ipcq_recv").at(0).options, words_then_zeros({1, 0, 10, 0x7001}, 40));

    // A short reply fills only what it has; the rest stays as it was.
    transport().reset();
    transport().script("ipcq_recv", replies(Bytes{9}));
    out.fill(std::byte{0xEE});
    ASSERT_EQ(daemon_api::synchronous_request(11, 916, out, &reply_size), 0);
    EXPECT_EQ(reply_size, 1u);
    EXPECT_EQ(out[0], std::byte{9});
    EXPECT_EQ(out[1], std::byte{0xEE});
}

TEST_F(RequestFrameTest, SynchronousRequestStopsAtTheFirstFailure)
{
    std::array<std::byte, 4> out{};
    std::size_t reply_size = 0;
    transport().script("ipcq_send", fails(ENOENT));
    EXPECT_EQ(daemon_api::synchronous_request(11, 916, out, &reply_size), -1);
    EXPECT_EQ(transport().call_names(), (Names{"ipcq_send"}));

    transport().reset();
    transport().script("ipcq_recv", fails(ETIME));
    EXPECT_EQ(daemon_api::synchronous_request(11, 916, out, &reply_size), -1);
    EXPECT_EQ(transport().call_names(), (Names{"ipcq_send", "ipcq_rr_token_get", "ipcq_drop", "ipcq_recv"}));
}

TEST_F(RequestFrameTest, RequestResponsePassesTheRowOfItsOpcode)
{
    transport().script("bcp_req_resp", replies(Bytes{4, 3}));
    const std::array<uint8_t, 3> request{'a', 'b', 'c'};
    uint32_t len = 3;
    void *reply = reinterpret_cast<void *>(1);
    EXPECT_EQ(daemon_api::request_response(5, daemon_api::kCliLock, request.data(), &len, &reply), 0);
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(len, 2u);
    std::free(reply);
    uint32_t none = 0;
    reply = reinterpret_cast<void *>(1);
    transport().script("bcp_req_resp", fails(EIO));
    EXPECT_EQ(daemon_api::request_response(5, daemon_api::kConfigGet, nullptr, &none, &reply, "t1", "t2"),
              -1);
    EXPECT_EQ(reply, nullptr); // set before the call, so a failure leaves no stale pointer

    const auto calls = transport().calls_of("bcp_req_resp");
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].opcode, 940u);
    EXPECT_EQ(calls[0].msg_type, 3u);
    EXPECT_EQ(calls[0].dest_queue, 37u);
    EXPECT_EQ(calls[0].timeout, 25u);
    EXPECT_EQ(calls[0].payload, (Bytes{'a', 'b', 'c'}));
    EXPECT_EQ(calls[0].text1, "");
    EXPECT_EQ(calls[0].text2, "");
    EXPECT_EQ(calls[1].text1, "t1");
    EXPECT_EQ(calls[1].text2, "t2");
    EXPECT_TRUE(calls[1].payload_null);
    EXPECT_EQ(calls[1].length, 0u);
}

TEST(RequestFrameRows, EveryRequestResponseRowNamesItsTypeQueueAndTimeOut)
{
    struct Row {
        daemon_api::BcpCall call;
        uint32_t opcode, msg_type, queue, timeout;
    };
    const Row rows[] = {
        {daemon_api::kRoleInfoGet, 912, 1, 37, 10},
        {daemon_api::kRoleNameVerify, 914, 1, 37, 10},
        {daemon_api::kConfigGet, 916, 1, 37, 10},
        {daemon_api::kMainTreeGenerate, 937, 1, 37, 10},
        {daemon_api::kTreeTableGet, 938, 1, 37, 10},
        {daemon_api::kCliLock, 940, 3, 37, 25},
        {daemon_api::kParamSubtypeTableGet, 948, 1, 37, 10},
        {daemon_api::kParseTreeRegister, 7655, 3, 296, 3},
        {daemon_api::kParseTreeDeregister, 7656, 3, 296, 15},
        {daemon_api::kDynamicParfileNameGet, 7658, 1, 37, 10},
        {daemon_api::kLocaleNameVerify, 7700, 1, 37, 10},
        {daemon_api::kLocaleInfoGet, 7701, 1, 37, 10},
        {daemon_api::config_write(7687), 7687, 3, 37, 10},
        {daemon_api::with_msg_type(daemon_api::kRoleInfoGet, 6), 912, 6, 37, 10},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.opcode);
        EXPECT_EQ(row.call.opcode, row.opcode);
        EXPECT_EQ(row.call.msg_type, row.msg_type);
        EXPECT_EQ(row.call.dest_queue, row.queue);
        EXPECT_EQ(row.call.timeout, row.timeout);
    }
}

TEST(RequestFrameStatus, FailedExchangesCarryTheLowBitsOfErrno)
{
    struct Case {
        int result, error;
        int32_t write, registration;
    };
    const Case cases[] = {
        {-1, ETIME, static_cast<int32_t>(0x8054003E), 0},
        {-1, EIO, static_cast<int32_t>(0x80540005), static_cast<int32_t>(0x80540005)},
        {-1, 0x1234, static_cast<int32_t>(0x80540234), static_cast<int32_t>(0x80540234)},
        {0, ETIME, 0, 0},
        {0x40540009, ETIME, 0x40540009, 0x40540009},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.error);
        errno = c.error;
        EXPECT_EQ(daemon_api::write_status(c.result), c.write);
        errno = c.error;
        EXPECT_EQ(daemon_api::registration_status(c.result), c.registration);
    }
    EXPECT_EQ(WEX_ANNOUNCE_ERRNO_STATUS(ETIME), static_cast<int32_t>(0x805F003E));
}

TEST(RequestFrameRecords, RawHeaderAndSendOptionsBytes)
{
    std::array<std::byte, daemon_api::kRawHeaderSize> header;
    header.fill(std::byte{0xAA});
    daemon_api::build_raw_header(header, 3, 88);
    std::array<uint8_t, daemon_api::kRawHeaderSize> expected{0, 0, 0, 3, 0,   0,   0,   88,
                                                             0, 0, 0, 0, 'c', 'l', 'i', 's'};
    EXPECT_EQ(std::memcmp(header.data(), expected.data(), expected.size()), 0);

    std::array<uint8_t, 68> options;
    options.fill(0xAB);
    auto *record = reinterpret_cast<ipcq_send_options *>(options.data());
    EXPECT_EQ(populate_ipcq_send_options(record), record);
    for (std::size_t i = 0; i < options.size(); ++i)
        EXPECT_EQ(options[i], i >= 4 && i < 28 ? 0 : 0xAB) << "byte " << i;
    EXPECT_EQ(populate_ipcq_send_options(nullptr), nullptr);
}

} // namespace
