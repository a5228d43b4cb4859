// Command-parameter records: the argument list, its dump line by line,
// and the help of an interface type.
#include <wex/param.h>
#include <wex/parse_tree.h>

#include "if_index.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using wex_test::capture_stdout;

namespace
{

std::unique_ptr<pinfo> empty_record()
{
    auto info = std::make_unique<pinfo>();
    pinfo_basic_copy(info.get(), nullptr);
    return info;
}

// The argument pointers in use, in slot order.
std::vector<param_arg *> in_use(const pinfo &info)
{
    return std::vector<param_arg *>(info.args, info.args + info.param_count);
}

TEST(Pinfo, InsertSetAndDeleteKeepTheArgumentOrder)
{
    param_arg a{}, b{}, c{}, d{}, e{};
    auto info = empty_record();
    for (param_arg *arg : {&a, &b, &c})
        pinfo_insert_arg(info.get(), arg);
    pinfo_insert_arg_at_index(info.get(), &d, 1);
    pinfo_insert_arg_at_index(info.get(), &e, 4); // the count: appends
    pinfo_insert_arg_at_index(info.get(), &e, 0);
    EXPECT_EQ(in_use(*info), (std::vector<param_arg *>{&e, &a, &d, &b, &c, &e}));
    pinfo_set_arg(info.get(), &c, 1);
    pinfo_delete_arg(info.get(), 1);
    EXPECT_EQ(in_use(*info), (std::vector<param_arg *>{&a, &d, &b, &c, &e}));
    pinfo_delete_arg(info.get(), 5); // the last: only the count drops
    EXPECT_EQ(in_use(*info), (std::vector<param_arg *>{&a, &d, &b, &c}));
    pinfo_delete_all_arg(info.get());
    EXPECT_EQ(info->param_count, 0);

    // All 64 slots can be filled, and the last one moved into.
    for (int i = 0; i < WEX_PINFO_MAX_ARGS - 1; ++i)
        pinfo_insert_arg(info.get(), &a);
    pinfo_insert_arg_at_index(info.get(), &b, 0);
    EXPECT_EQ(info->param_count, 64);
    EXPECT_EQ(info->args[63], &a);
}

TEST(Pinfo, LatestInterfaceMaskComesFromTheLastInterfaceArgument)
{
    param_arg intf{}, number{}, range{}, zero_mask{};
    populate_param_arg(&intf, 1, TYPE_INTERFACE, 0, 0x10, nullptr);
    populate_param_arg(&number, 2, TYPE_INT, 0, 0xFF, nullptr);
    populate_param_arg(&range, 3, TYPE_INTERFACE_RANGE, 0, 0x100000000ull, nullptr);
    populate_param_arg(&zero_mask, 4, TYPE_INTERFACE, 0, 0, nullptr);
    const struct {
        std::vector<param_arg *> args;
        int result;
        uint64_t mask;
    } cases[] = {{{&intf, &number, &range}, 0, 0x100000000ull},
                 {{&intf, &number}, 0, 0x10},
                 {{&intf, &zero_mask}, -1, 0},
                 {{&number}, -1, 0}};
    for (const auto &c : cases) {
        auto info = empty_record();
        for (param_arg *arg : c.args)
            pinfo_insert_arg(info.get(), arg);
        uint64_t mask = 0xDEAD;
        EXPECT_EQ(pinfo_get_latest_intf_mask(info.get(), &mask), c.result) << c.args.size();
        EXPECT_EQ(mask, c.mask);
    }
}

TEST(Pinfo, BasicCopyCarriesTheContextButNoArgumentsAndRangesStayInTheirSlots)
{
    auto source = std::make_unique<pinfo>();
    auto *bytes = reinterpret_cast<unsigned char *>(source.get());
    for (std::size_t i = 0; i < sizeof(pinfo); ++i)
        bytes[i] = static_cast<unsigned char>(i * 31 + 7);
    source->param_count = 5;
    auto copy = std::make_unique<pinfo>();
    pinfo_basic_copy(copy.get(), source.get());
    source->param_count = 0;
    EXPECT_EQ(std::memcmp(copy.get(), source.get(), sizeof(pinfo)), 0);

    intf_range_list list{};
    populate_intf_range(&list, 64, 11, 12);
    const intf_range_list before = list;
    populate_intf_range(&list, 65, 1, 2);
    populate_intf_range(&list, 0xFFFFFFFF, 1, 2);
    EXPECT_EQ(std::memcmp(&list, &before, sizeof list), 0);
    EXPECT_EQ(list.ranges[64].first + list.ranges[64].last, 23u);
}

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

TEST(PinfoDump, RecordBlockWithAsciiGenerationAndItsArguments)
{
    auto info = std::make_unique<pinfo>();
    std::memset(info.get(), 0, sizeof *info);
    info->no_flag = 3;
    info->command_id = 4000000000u;
    info->ipcq_q = -2;
    std::strcpy(info->username, "admin");
    info->filter = 0xbeef;
    info->ascii_gen = 1;
    info->ascii_cmd_index = 2;
    std::strcpy(info->ascii_cmd, "show run");
    info->info_flags = 0x5;
    int32_t vsan = 10;
    param_arg args[2] = {{7, TYPE_VSAN, 0, nullptr, 0}, {8, TYPE_VSAN, 0, &vsan, 0}};
    info->args[0] = &args[0];
    info->args[1] = &args[1];
    info->param_count = 2;
    EXPECT_EQ(capture_stdout([&] {
                  print_pinfo(info.get());
                  print_pinfo(nullptr);
              }),
              "\n==== Param info ====\n"
              "No flag: TRUE, BCP mesg type: 0, Shell_type: 0, Submode_context: 0\n"
              "Parameter Count: 2, Command Id: 4000000000, IPCQ Q: -2\n"
              "Session id: , Username: admin, Debug_flag: 0, filter: beef Prc_mode: 0\n"
              "Sup state: 0, User mode state: 0, Is_admin: 0\n"
              "Exec_filter_mode: 0, Script_mode: 0\n"
              "Vty ID:  User Perms Mask:0\n"
              "\nAscii Gen: TRUE\n"
              ", Ascii cmd index: 2, Asciigen level: 0\nAscii Cmd: show run\n"
              "Per vsan Ascii Gen : TRUE Info flags: 0x5\n"
              "Ascii command: show run Info flags: 0x5\n"
              "\nParam Arg [0]. Token id: 7 NULL"
              "\nParam Arg [1]. Token id: 8 Vsan:10\n");
    info->ascii_gen = 0;
    info->param_count = 0;
    const std::string text = capture_stdout([&] { print_pinfo(info.get()); });
    EXPECT_EQ(text.substr(text.find("\nAscii Gen")),
              "\nAscii Gen: FALSE\nAscii command: show run Info flags: 0x5\n\n");
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
        {TYPE_STRING, text, "String : abc"},
        {TYPE_URI, &uri, "URI:  type:3  Scheme:ftp  server:h  path:/f "},
        {TYPE_LEN_VALUE, small_len, "len 4 val 12\n"},
        {TYPE_LEN_VALUE, &long_len, "len 9 str abcdefgh\n"},
        {TYPE_LEN_VALUE, &unterminated, "len 12 str zzzzzzzzzzzz\n"},
        {TYPE_IP, &ip, "IP : 10.0.0.1"},
        {TYPE_IPV4, &address, "IPv4 address: 192.168.1.2"},
        {TYPE_IPV6, &address, "IPv6 address: c0a8:102::"},
        {TYPE_INT, &number, "Integer :-5"},
        {TYPE_INT_MULTI_RANGE, int_multi, "Int Multi Range:  1 - 2, 5 - 9"},
        {TYPE_HEX_RANGE, &range, "Hex Range:0x1 - 0xa\n"},
        {TYPE_INTERFACE_RANGE, &ranges, "Ifindex Range : fc1/1-4Interface mask: 0"},
        {TYPE_MAC, const_cast<uint8_t *>(bytes), "MAC : 0x001b21aa0f10"},
        {TYPE_VSAN, &number, "Vsan:-5"},
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
    EXPECT_EQ(dump_of(TYPE_GUID, nullptr), "Token id: 1 NULL");
    EXPECT_EQ(capture_stdout([] { print_pinfo_arg(nullptr); }), "");
}

TEST(IntfHelp, ShowAddCopyAndTextsThatDoNotFit)
{
    intf_help_info info, copy;
    std::memset(&info, 0xAB, sizeof info);
    ASSERT_EQ(wex_intf_help_info_reset(&info, "abc"), 0);
    ASSERT_EQ(wex_intf_help_info_add(&info, "x", 1, 13), 0);
    ASSERT_EQ(wex_intf_help_info_add(&info, "y", 1, 48), 0);
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(wex_intf_help_info_show(&info), 0); }),
              "\n Interface help information:\nIntf help str:abc \t x <1-13>\n\t y <1-48>\n");

    // Five fields at most; texts are cut inside their fields.
    wex_intf_help_info_reset(&info, std::string(70, 'h').c_str());
    for (int i = 0; i < WEX_INTF_HELP_MAX_FIELDS; ++i)
        ASSERT_EQ(
            wex_intf_help_info_add(&info, std::string(64, static_cast<char>('a' + i)).c_str(), i, 10 * i), 0);
    const intf_help_info full = info;
    EXPECT_EQ(wex_intf_help_info_add(&info, "f", 0, 1), -1);
    EXPECT_EQ(std::memcmp(&info, &full, sizeof info), 0);
    EXPECT_EQ(std::string(info.help_str) + "|" + info.fields[4].name + "|" +
                  std::to_string(info.fields[4].min),
              std::string(63, 'h') + "|" + std::string(63, 'e') + "|4");
    std::memset(&copy, 0xCD, sizeof copy);
    ASSERT_EQ(wex_intf_help_info_copy(&info, &copy), 0);
    EXPECT_EQ(std::memcmp(&copy, &info, sizeof copy), 0);
    ASSERT_EQ(wex_intf_help_info_copy(nullptr, &copy), 0);
    const intf_help_info zero{};
    EXPECT_EQ(std::memcmp(&copy, &zero, sizeof copy), 0);
    EXPECT_EQ(wex_intf_help_info_copy(&info, nullptr) + wex_intf_help_info_add(nullptr, "x", 0, 0) +
                  wex_intf_help_info_reset(nullptr, "x") + wex_intf_help_info_show(nullptr),
              -4);

    // A record from another process: texts without terminators and a
    // count beyond the array are read within the record.
    intf_help_info damaged;
    std::memset(&damaged, 'z', sizeof damaged);
    damaged.num_fields = 9;
    ASSERT_EQ(wex_intf_help_info_copy(&damaged, &copy), 0);
    EXPECT_EQ(copy.num_fields, WEX_INTF_HELP_MAX_FIELDS);
    EXPECT_EQ(std::string(copy.fields[4].name), std::string(63, 'z'));
    damaged.num_fields = -3;
    EXPECT_EQ(capture_stdout([&] { wex_intf_help_info_show(&damaged); }),
              "\n Interface help information:\nIntf help str:" + std::string(64, 'z') + " ");
}

} // namespace
