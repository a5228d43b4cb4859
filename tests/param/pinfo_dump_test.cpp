// The parameter dump: the record's block of lines and one line per
// argument type, byte for byte.
#include <wex/param.h>
#include <wex/parse_tree.h>

#include "if_index.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstring>
#include <memory>
#include <string>

using wex_test::capture_stdout;

namespace
{

std::string dump_of(uint32_t type, void *value, uint64_t mask = 0, uint32_t addr_type = 0)
{
    param_arg arg{};
    arg.token_id = 1;
    arg.type = type;
    arg.value = value;
    arg.intf_mask = mask;
    arg.addr_type = addr_type;
    return capture_stdout([&] { print_pinfo_arg(&arg); });
}

const std::string kZeroContext = "\n==== Param info ====\n"
                                 "No flag: FALSE, BCP mesg type: 0, Shell_type: 0, Submode_context: 0\n"
                                 "Parameter Count: 0, Command Id: 0, IPCQ Q: 0\n"
                                 "Session id: , Username: , Debug_flag: 0, filter: 0 Prc_mode: 0\n"
                                 "Sup state: 0, User mode state: 0, Is_admin: 0\n"
                                 "Exec_filter_mode: 0, Script_mode: 0\n"
                                 "Vty ID:  User Perms Mask:0\n";

TEST(PinfoDump, RecordBlockWithAndWithoutAsciiGeneration)
{
    auto info = std::make_unique<pinfo>();
    std::memset(info.get(), 0, sizeof *info);
    EXPECT_EQ(capture_stdout([&] { print_pinfo(info.get()); }),
              kZeroContext + "\nAscii Gen: FALSE\nAscii command:  Info flags: 0x0\n\n");

    info->no_flag = 3;
    info->bcp_msg_type = 1;
    info->command_id = 4000000000u;
    info->ipcq_q = -2;
    std::strcpy(info->session_id, "s1");
    std::strcpy(info->username, "admin");
    info->filter = 0xbeef;
    std::strcpy(info->vty_id, "pts/3");
    info->user_perms_mask = 0xff;
    info->ascii_gen = 1;
    info->ascii_cmd_index = 2;
    info->asciigen_level = 3;
    std::strcpy(info->ascii_cmd, "show run");
    info->info_flags = 0x5;
    int32_t vsan = 10;
    param_arg args[2] = {};
    args[0].token_id = 7;
    args[0].type = TYPE_VSAN;
    args[1].token_id = 8;
    args[1].type = TYPE_VSAN;
    args[1].value = &vsan;
    info->args[0] = &args[0];
    info->args[1] = &args[1];
    info->param_count = 2;
    EXPECT_EQ(capture_stdout([&] { print_pinfo(info.get()); }),
              "\n==== Param info ====\n"
              "No flag: TRUE, BCP mesg type: 1, Shell_type: 0, Submode_context: 0\n"
              "Parameter Count: 2, Command Id: 4000000000, IPCQ Q: -2\n"
              "Session id: s1, Username: admin, Debug_flag: 0, filter: beef Prc_mode: 0\n"
              "Sup state: 0, User mode state: 0, Is_admin: 0\n"
              "Exec_filter_mode: 0, Script_mode: 0\n"
              "Vty ID: pts/3 User Perms Mask:ff\n"
              "\nAscii Gen: TRUE\n"
              ", Ascii cmd index: 2, Asciigen level: 3\nAscii Cmd: show run\n"
              "Per vsan Ascii Gen : TRUE Info flags: 0x5\n"
              "Ascii command: show run Info flags: 0x5\n"
              "\nParam Arg [0]. Token id: 7 NULL"
              "\nParam Arg [1]. Token id: 8 Vsan:10\n");
    EXPECT_EQ(capture_stdout([] { print_pinfo(nullptr); }), "");
}

TEST(PinfoDump, EachArgumentTypeHasItsLabelAndForm)
{
    char text[] = "abc";
    uri_info uri{};
    uri.type = 3;
    std::strcpy(uri.scheme, "ftp");
    std::strcpy(uri.server, "h");
    std::strcpy(uri.path, "/f");
    uint32_t small_len[2] = {12, 4};
    struct {
        int32_t number = 0;
        uint32_t length = 9;
        char text[9] = "abcdefgh";
    } long_len;
    struct {
        int32_t number = 0;
        uint32_t length = 12;
        char text[16];
    } unterminated;
    std::memset(unterminated.text, 'z', sizeof unterminated.text);
    uint32_t ip = htonl(0x0A000001);
    wex_inet_addr_t address{};
    const uint8_t v4[4] = {192, 168, 1, 2};
    std::memcpy(reinterpret_cast<uint8_t *>(&address) + 4, v4, 4);
    int32_t number = -5;
    integer_range range{1, 10};
    uint32_t int_multi[6] = {0, 2, 1, 2, 5, 9};
    uint32_t hex_multi[5] = {2, 1, 2, 16, 32};
    uint32_t fc13 = IF_INDEX_MAKE(1, 1, 3);
    intf_range_list ranges{};
    ranges.count = 1;
    ranges.ranges[0] = {IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 4)};
    const uint8_t bytes[8] = {0x00, 0x1b, 0x21, 0xaa, 0x0f, 0x10, 0x20, 0xff};
    community comm{100, 200};
    const struct {
        uint32_t type;
        void *value;
        std::string printed;
    } cases[] = {
        {TYPE_NONE, text, "None :"},
        {TYPE_STRING, text, "String : abc"},
        {TYPE_URI, &uri, "URI:  type:3  Scheme:ftp  server:h  path:/f "},
        {TYPE_DNS_NAME, text, "DNS name: abc"},
        {TYPE_LEN_VALUE, small_len, "len 4 val 12\n"},
        {TYPE_LEN_VALUE, &long_len, "len 9 str abcdefgh\n"},
        {TYPE_LEN_VALUE, &unterminated, "len 12 str zzzzzzzzzzzz\n"},
        {TYPE_IP, &ip, "IP : 10.0.0.1"},
        {TYPE_IPV4, &address, "IPv4 address: 192.168.1.2"},
        {TYPE_IPV6, &address, "IPv6 address: c0a8:102::"},
        {TYPE_INT, &number, "Integer :-5"},
        {TYPE_INT_RANGE, &range, "Integer Range :1 - 10"},
        {TYPE_INT_MULTI_RANGE, int_multi, "Int Multi Range:  1 - 2, 5 - 9"},
        {TYPE_HEX_RANGE, &range, "Hex Range:0x1 - 0xa\n"},
        {TYPE_HEX_MULTI_RANGE, hex_multi, "Hex Range: 0x1 - 0x2, 0x10 - 0x20"},
        {TYPE_INTERFACE_RANGE, &ranges, "Ifindex Range : fc1/1-4Interface mask: 0"},
        {TYPE_MAC, const_cast<uint8_t *>(bytes), "MAC : 0x001b21aa0f10"},
        {TYPE_WWN, const_cast<uint8_t *>(bytes), "WWN : 0x001b21aa0f1020ff"},
        {TYPE_VSAN, &number, "Vsan:-5"},
        {TYPE_VSAN_MULTI_RANGE, int_multi, "Vsan Multi Range:  1 - 2, 5 - 9"},
        {TYPE_FC_ID, const_cast<uint8_t *>(bytes), "Fcid : 0x001b21aa"},
        {TYPE_COMMUNITY, &comm, "Community: 100:200"},
        {64, text, "\nUnknown arg type:64"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(dump_of(c.type, c.value), "Token id: 1 " + c.printed) << std::hex << c.type;

    EXPECT_EQ(dump_of(TYPE_INTERFACE, &fc13, 0x8000000000000000ull),
              "Token id: 1 Ifindex: fc1/3Interface mask: -9223372036854775808");
    EXPECT_EQ(dump_of(TYPE_IPV4_OR_IPV6, &address, 0, TYPE_IPV4),
              "Token id: 1 IPv4 OR v6[IPv4]: 192.168.1.2");
    EXPECT_EQ(dump_of(TYPE_IPV4_OR_IPV6, &address, 0, 0), "Token id: 1 IPv4 OR v6[IPv6]: c0a8:102::");
    EXPECT_EQ(dump_of(TYPE_GUID, nullptr), "Token id: 1 NULL");
    EXPECT_EQ(capture_stdout([] { print_pinfo_arg(nullptr); }), "");
}

} // namespace
