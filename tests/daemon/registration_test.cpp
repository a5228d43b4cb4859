// Registration of interface types, parse trees and command files: the exact
// requests, and what their failures become.
#include <wex/wexd_client.h>

#include "daemon/wire_bytes.h"
#include "fakes/transport_fake.h"
#include "fakes/transport_test.h"
#include "common/alloc_hook.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>

using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::transport;
using wex_test::capture_stdout;
using wex_test::put_text;
using wex_test::put_u32;

namespace
{

using Names = std::vector<std::string>;

using RegistrationTest = wex_fake::TransportTest;

// The 604-byte entry for mask 0x0000000300000002 named "fc" with its
// functions, as the registration message carries it.
Bytes expected_entry(bool with_help, uint16_t priority)
{
    Bytes e = wex_test::zeros(604);
    put_u32(e, 0, 2);
    put_u32(e, 4, 3);
    put_text(e, 8, "fc");
    put_u32(e, 44, 2);
    put_u32(e, 48, 1);
    put_text(e, 52, "fc_verify");
    put_text(e, 100, "fc_list");
    put_text(e, 148, "libfc.so");
    if (with_help) {
        put_text(e, 172, "slot");
        put_u32(e, 172 + 64, 1);
        put_u32(e, 172 + 68, 16);
        put_text(e, 172 + 360, "Fibre");
        put_u32(e, 172 + 424, 1);
    }
    e[600] = static_cast<uint8_t>(priority);
    return e;
}

TEST_F(RegistrationTest, InterfaceRegistrationSendsTheEntryWithOptions)
{
    intf_help_info help;
    wex_intf_help_info_reset(&help, "Fibre");
    wex_intf_help_info_add(&help, "slot", 1, 16);
    wex_intf_reg_info info;
    std::memset(&info, 0, sizeof info);
    info.ascii_gen_priority = 9;
    ASSERT_EQ(wex_set_intf_reg_info(&info, "fc", 2, 1, "fc_verify", "fc_list", "libfc.so", &help), 0);
    EXPECT_EQ(info.ascii_gen_priority, 9); // the caller's own field
    EXPECT_EQ(wex_set_intf_reg_info(nullptr, "fc", 2, 1, "", "", "", nullptr), -1);

    const uint64_t mask = 0x300000002ull;
    EXPECT_EQ(wex_register_interface(8, mask, &info), 0);
    EXPECT_EQ(wex_register_interface2(8, mask, "fc", 2, 1, "fc_verify", "fc_list", 0xDEADBEEF, "libfc.so"),
              0);
    EXPECT_EQ(wex_deregister_interface(8, mask), 0);
    EXPECT_EQ(wex_register_interface(8, mask, nullptr), -1);

    const auto sends = transport().calls_of("ipcq_send");
    ASSERT_EQ(sends.size(), 3u);
    EXPECT_EQ(sends[0].payload, expected_entry(true, 9));
    EXPECT_EQ(sends[1].payload, expected_entry(false, 0));
    EXPECT_EQ(sends[2].payload, (Bytes{2, 0, 0, 0, 3, 0, 0, 0}));
    const uint32_t opcodes[] = {900, 900, 901};
    for (std::size_t i = 0; i < sends.size(); ++i) {
        EXPECT_EQ(sends[i].opcode, opcodes[i]);
        EXPECT_EQ(sends[i].dest_queue, 37u);
        EXPECT_EQ(sends[i].address, 0xFE000000u);
        EXPECT_EQ(sends[i].options, wex_test::words_then_zeros({1}, 68));
        EXPECT_FALSE(sends[i].handle_given);
        EXPECT_EQ(sends[i].q, 8);
    }
}

TEST_F(RegistrationTest, FailedInterfaceSendsSayWhichAndReturnTheResult)
{
    wex_intf_reg_info info;
    wex_set_intf_reg_info(&info, "fc", 2, 1, "", "", "", nullptr);
    info.ascii_gen_priority = 0;
    transport().script("ipcq_send", fails(EAGAIN, -3));
    transport().script("ipcq_send", fails(EAGAIN, -4));
    transport().script("ipcq_send", fails(EAGAIN, -5));
    EXPECT_EQ(capture_stdout([&] {
                  EXPECT_EQ(wex_register_interface(1, 1, &info), -3);
                  EXPECT_EQ(wex_register_interface2(1, 1, "fc", 0, 0, "", "", 0, ""), -4);
                  EXPECT_EQ(wex_deregister_interface(1, 1), -5);
              }),
              "Not able to send interface registration to wexd\n"
              "Not able to send interface registration to wexd\n"
              "Not able to send interface deregistration to wexd\n");
}

TEST_F(RegistrationTest, TreeRegistrationsUseTheirRowAndTheirFailureRule)
{
    const struct {
        const char *what;
        std::function<int32_t()> call;
        uint32_t opcode, timeout;
        const char *module_id, *file;
    } rows[] = {
        {"register tree", [] { return wex_register_parse_tree(2, "zone"); }, 7655, 3, "zone", ""},
        {"deregister tree", [] { return wex_deregister_parse_tree(2, "zone"); }, 7656, 15, "zone", ""},
        {"add file", [] { return wex_add_cmd_file(2, "zone.cmd"); }, 7655, 3, "", "zone.cmd"},
        {"remove file", [] { return wex_rem_cmd_file(2, "zone.cmd"); }, 7656, 15, "", "zone.cmd"},
        {"empty file", [] { return wex_add_cmd_file(2, ""); }, 7655, 3, "", ""},
        {"long names", [] { return wex_add_cmd_file(2, std::string(70, 'f').c_str()); }, 7655, 3, "",
         "fffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff"},
    };
    for (const auto &row : rows) {
        transport().reset();
        EXPECT_EQ(row.call(), 0) << row.what;
        const auto call = transport().calls_of("bcp_req_resp").at(0);
        Bytes entry = wex_test::zeros(88);
        put_text(entry, 0, row.module_id);
        put_text(entry, 24, row.file);
        EXPECT_EQ(call.opcode, row.opcode) << row.what;
        EXPECT_EQ(call.timeout, row.timeout) << row.what;
        EXPECT_EQ(call.msg_type, 3u) << row.what;
        EXPECT_EQ(call.dest_queue, 296u) << row.what;
        EXPECT_EQ(call.payload, entry) << row.what;
        EXPECT_EQ(call.length, 88u) << row.what;
        EXPECT_FALSE(call.handle_given) << row.what;
        EXPECT_EQ(call.text1 + call.text2, "") << row.what;

        // A registration the queue was slow to confirm is done; a withdrawal is not.
        transport().reset();
        transport().script("bcp_req_resp", fails(ETIME));
        EXPECT_EQ(row.call(), row.opcode == 7655 ? 0 : static_cast<int32_t>(0x8054003E)) << row.what;
        transport().script("bcp_req_resp", fails(ENOENT));
        EXPECT_EQ(row.call(), static_cast<int32_t>(0x80540002)) << row.what;
        transport().script("bcp_req_resp", wex_fake::Answer{0x40540027, 0, std::nullopt});
        EXPECT_EQ(row.call(), 0x40540027) << row.what;
    }
}

TEST_F(RegistrationTest, StandbyRegistrationIsARawMessageDroppedOnlyAfterItsSend)
{
    Bytes message = wex_test::zeros(200);
    wex_test::put_be32(message, 0, 3);
    wex_test::put_be32(message, 4, 88);
    put_text(message, 12, "clis");
    put_text(message, 112, "zone");
    Bytes standby = wex_test::words_then_zeros({1}, 68);
    standby[35] = 1;

    EXPECT_EQ(wex_register_parse_tree_standby(5, "zone"), 0);
    transport().script("ipcq_send", fails(EPIPE, -2));
    EXPECT_EQ(wex_deregister_parse_tree_standby(5, "zone"), -2);
    EXPECT_EQ(transport().call_names(), (Names{"ipcq_send", "ipcq_drop", "ipcq_send"}));
    const auto sends = transport().calls_of("ipcq_send");
    const uint32_t opcodes[] = {7655, 7656};
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(sends[i].opcode, opcodes[i]);
        EXPECT_EQ(sends[i].payload, message);
        EXPECT_EQ(sends[i].dest_queue, 0u);
        EXPECT_EQ(sends[i].address, 0xFE000000u);
        EXPECT_EQ(sends[i].options, standby);
        EXPECT_TRUE(sends[i].handle_given);
    }

    // The message is the first allocation: when it fails nothing is sent.
    transport().reset();
    wex::alloc_hook::arm(1);
    EXPECT_EQ(wex_register_parse_tree_standby(5, "zone"), 1);
    EXPECT_TRUE(wex::alloc_hook::fired());
    wex::alloc_hook::arm(0);
    EXPECT_TRUE(transport().calls().empty());
}

} // namespace
