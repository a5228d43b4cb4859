// The recording transport keeps what it is given and answers as scripted.
#include "fakes/transport_fake.h"

#include "bcp.h"
#include "ipcq.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

using wex_fake::Answer;
using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::replies;
using wex_fake::transport;

class TransportFakeTest : public ::testing::Test
{
  protected:
    void SetUp() override { transport().reset(); }
};

TEST_F(TransportFakeTest, RecordsEveryArgumentAndCopiesOfTheBytes)
{
    ipcq_send_options_t options{};
    options.version = 1;
    options.standby = 1;
    unsigned char payload[3] = {1, 2, 3};
    ipcq_msg_handle_t msg = nullptr;
    EXPECT_EQ(ipcq_send(9, 0xFE000000, 37, 905, payload, 3, &msg, 0, &options), 0);
    payload[0] = 99; // the record is a copy, not a view of the caller's bytes
    ipcq_drop(9, &msg);
    ipcq_send(9, 0xFE000000, 0, 943, nullptr, 0, nullptr, 0, nullptr);

    const auto &sends = transport().calls_of("ipcq_send");
    ASSERT_EQ(sends.size(), 2u);
    EXPECT_EQ(sends[0].q, 9);
    EXPECT_EQ(sends[0].address, 0xFE000000u);
    EXPECT_EQ(sends[0].dest_queue, 37u);
    EXPECT_EQ(sends[0].opcode, 905u);
    EXPECT_EQ(sends[0].payload, (Bytes{1, 2, 3}));
    ASSERT_TRUE(sends[0].options.has_value());
    EXPECT_EQ(sends[0].options->size(), 68u);
    EXPECT_EQ((*sends[0].options)[0], 1);
    EXPECT_EQ((*sends[0].options)[35], 1);
    EXPECT_TRUE(sends[0].handle_given);
    EXPECT_FALSE(sends[1].options.has_value());
    EXPECT_FALSE(sends[1].handle_given);
    EXPECT_TRUE(sends[1].payload_null);
    EXPECT_EQ(transport().call_names(), (std::vector<std::string>{"ipcq_send", "ipcq_drop", "ipcq_send"}));
    EXPECT_EQ(transport().live_messages(), 0);
}

TEST_F(TransportFakeTest, AnswersInScriptedOrderPerFunction)
{
    transport().script("ipcq_recv", fails(ETIME));
    transport().script("ipcq_recv", replies(Bytes{7, 8}));
    ipcq_msg_handle_t msg = nullptr;
    const ipcq_recv_options_t options{};
    EXPECT_EQ(ipcq_recv(4, &msg, &options), -1);
    EXPECT_EQ(errno, ETIME);
    EXPECT_EQ(msg, nullptr);
    EXPECT_EQ(ipcq_recv(4, &msg, &options), 0);
    ASSERT_EQ(ipcq_payload_size(&msg), 2u);
    EXPECT_EQ(static_cast<uint8_t *>(ipcq_payload_get(&msg))[1], 8);
    EXPECT_EQ(ipcq_recv(4, &msg, &options), 0); // unscripted: success, no payload
    EXPECT_EQ(ipcq_payload_get(&msg), nullptr);
    EXPECT_EQ(transport().live_messages(), 1);
    ipcq_drop(4, &msg);

    transport().script("bcp_req_resp", replies(Bytes{5, 6, 7}, 0x40540009));
    void *reply = nullptr;
    uint32_t len = 4;
    EXPECT_EQ(bcp_req_resp(914, 5, "abcd", &reply, &len, "", "x", 37, 4, 10), 0x40540009);
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(len, 3u);
    EXPECT_EQ(static_cast<uint8_t *>(reply)[2], 7);
    std::free(reply);
    const auto call = transport().calls_of("bcp_req_resp").at(0);
    EXPECT_EQ(call.payload, (Bytes{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(call.length, 4u);
    EXPECT_EQ(call.msg_type, 5u);
    EXPECT_EQ(call.timeout, 10u);
    EXPECT_EQ(call.text2, "x");

    // A failed exchange stores nothing.
    transport().script("bcp_req_resp", Answer{-1, EIO, Bytes{1}});
    reply = nullptr;
    len = 0;
    EXPECT_EQ(bcp_req_resp(916, 1, nullptr, &reply, &len, "", "", 37, 4, 10), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(reply, nullptr);
    EXPECT_EQ(len, 0u);
}
