// Typed commands as the shell reads them: words matched against the sample
// grammars, values read by type and bounds, errors placed under their word,
// and the pinfo that carries a command to its feature.
#include "command_record.h"
#include "completion.h"
#include "compiler.h"
#include "sample_tree.h"
#include "support/capture.h"
#include "support/samples.h"

#include "if_index.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{

using wex_shell::MainTree;

using wex_test::sample_tree;

// The node a line that enters a mode leaves the shell in.
std::size_t mode_after(std::size_t from, const std::string &line)
{
    const auto result = wex_shell::match_line(sample_tree(), from, line);
    return std::get<wex_shell::Match>(result).path.back().node;
}

using Bytes = std::vector<uint8_t>;

Bytes words(std::initializer_list<uint32_t> values)
{
    Bytes bytes(values.size() * 4);
    std::memcpy(bytes.data(), std::data(values), bytes.size());
    return bytes;
}

// What the shell makes of a line: its full text and the bytes of each
// value, or the error as shown.
std::string outcome(std::size_t mode, const std::string &line)
{
    const auto result = wex_shell::match_line(sample_tree(), mode, line);
    if (const auto *error = std::get_if<wex_shell::MatchError>(&result))
        return wex_shell::describe_error(line, *error);
    const auto &match = std::get<wex_shell::Match>(result);
    std::string text = (match.negated ? "negated: " : "") + match.full_text;
    for (const auto &step : match.path) {
        for (const auto &value : step.values) {
            text += " |";
            for (const uint8_t byte : value.bytes)
                text += " " + std::to_string(byte);
        }
    }
    return text;
}

TEST(ShellMatching, WordsAbbreviationsValuesAndErrorsByMode)
{
    const std::size_t exec = 0, config = mode_after(exec, "configure terminal"),
                      zone = mode_after(config, "zone name Z1 vsan 10"),
                      interface = mode_after(config, "interface fc1/1");
    const struct {
        std::size_t mode;
        std::string line, expected;
    } cases[] = {
        {exec, "sh   run", "show running-config"},
        {exec, "show zone vsan 10-20", "show zone vsan 10-20 | 10 0 0 0 20 0 0 0"},
        {exec, "s", "s\n^\n% Ambiguous word \"s\": it may be show, ssh\n"},
        {exec, "show zone vsan 5000",
         "show zone vsan 5000\n               ^\n% Bad value \"5000\" for <VSANS>: a VSAN id or range from 1 "
         "to "
         "4094, as 1-4094\n"},
        {exec, "show version now",
         "show version now\n             ^\n% Unknown word \"now\": the command is complete before it\n"},
        {exec, "terminal length",
         "terminal length\n               ^\n% Incomplete command: it goes on with <LINES>\n"},
        {exec, "terminal length 512",
         "terminal length 512\n                ^\n% Bad value \"512\" for <LINES>: an integer from 0 to "
         "511\n"},
        {config, "zone name \"Z 1\" vsan 10", "zone name \"Z 1\" vsan 10 | 90 32 49 0 | 10 0 0 0"},
        {config, "no zone name Z1 vsan 10", "negated: no zone name Z1 vsan 10 | 90 49 0 | 10 0 0 0"},
        {config, "ip route 10.0.0.0 255.0.0.0 10.1.1.1",
         "ip route 10.0.0.0 255.0.0.0 10.1.1.1 | 1 0 0 0 10 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 32 0 0 0 | 1 0 0 0 "
         "255 "
         "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 32 0 0 0 | 1 0 0 0 10 1 1 1 0 0 0 0 0 0 0 0 0 0 0 0 32 0 0 0"},
        {zone, "member wwn 10:00:00:00:c9:12:34:56 lun 0x1",
         "member wwn 10:00:00:00:c9:12:34:56 lun 0x1 | 16 0 0 0 201 18 52 86 | 0 0 0 0 0 0 0 1"},
        {zone, "mem fcid 0x10203", "member fcid 0x10203 | 0 1 2 3"},
        {zone, "member wwn 10:00:00:00:c9:12:34",
         "member wwn 10:00:00:00:c9:12:34\n           ^\n% Bad value \"10:00:00:00:c9:12:34\" for <WWN>: a "
         "WWN, as "
         "10:00:00:00:c9:12:34:56\n"},
        {interface, "desc  link to  core ",
         "description link to  core | 108 105 110 107 32 116 111 32 32 99 111 114 "
         "101 0"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(outcome(c.mode, c.line), c.expected) << c.line;
}

param_descriptor descriptor(uint32_t type, uint32_t min = 0, uint32_t max = 0, uint64_t mask = 0)
{
    param_descriptor param{};
    param.type = type;
    param.min = min;
    param.max = max;
    param.mask = mask;
    return param;
}

TEST(ShellMatching, EachTypeReadsItsFormsAndNamesItWhenRefused)
{
    const uint32_t fc1_1 = IF_INDEX_MAKE(1, 1, 1), fc1_4 = IF_INDEX_MAKE(1, 1, 4),
                   pc5 = IF_INDEX_MAKE(2, 0, 5);
    const struct {
        param_descriptor param;
        std::string word;
        Bytes bytes; // empty: refused
        std::string form;
    } cases[] = {
        {descriptor(TYPE_INT, -5, 5), "-5", words({static_cast<uint32_t>(-5)}), ""},
        {descriptor(TYPE_INT, -5, 5), "6", {}, "an integer from -5 to 5"},
        {descriptor(TYPE_INT), "12x", {}, "an integer from -2147483648 to 2147483647"},
        {descriptor(TYPE_HEX_MULTI_RANGE, 0x10, 0xff), "0x10-0x1f,0xff", words({2, 0x10, 0x1f, 0xff, 0xff}),
         ""},
        {descriptor(TYPE_HEX_RANGE, 0x10, 0xff),
         "0x20-0x1f",
         {},
         "a hexadecimal number or range from 0x10 to 0xff, as 0x10-0xff"},
        {descriptor(TYPE_VSAN_MULTI_RANGE), "1-3,7", words({0, 2, 1, 3, 7, 7}), ""},
        {descriptor(TYPE_STRING, 3), "abcd", {}, "a text of at most 3 characters"},
        {descriptor(TYPE_IP), "192.168.100.200", {192, 168, 100, 200}, ""}, // the longest dotted quad
        {descriptor(TYPE_MAC), "001b.21aa.0f10", {0x00, 0x1b, 0x21, 0xaa, 0x0f, 0x10}, ""},
        {descriptor(TYPE_MAC), "00:1b:21:aa:0f", {}, "a MAC address, as 00:1b:21:aa:0f:10"},
        {descriptor(TYPE_FC_ID), "0x1000000", {}, "an FC ID, as 0x010203"},
        {descriptor(TYPE_GUID),
         "{01234567-89ab-cdef-0123-456789abcdef}",
         {0x67, 0x45, 0x23, 0x01, 0xab, 0x89, 0xef, 0xcd, 0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef},
         ""},
        {descriptor(TYPE_COMMUNITY), "100:200", words({100, 200}), ""},
        {descriptor(TYPE_INTERFACE, 0, 0, 0x6), "port-channel5", words({pc5}), ""},
        {descriptor(TYPE_INTERFACE, 0, 0, 0x6), "mgmt0", {}, "an interface, as fc1/3"},
        {descriptor(TYPE_INTERFACE_RANGE, 0, 0, 0x6),
         "fc1/4-1",
         {},
         "interfaces, as fc1/1-4 or fc1/1,fc2/5-8"},
        {descriptor(TYPE_USERATHOST), "ops@edge-1.example",
         Bytes{'o', 'p', 's', '@', 'e', 'd', 'g', 'e', '-', '1', '.', 'e', 'x', 'a', 'm', 'p', 'l', 'e', 0},
         ""},
        {descriptor(TYPE_DNS_NAME), "-bad.example", {}, "a domain name, as example.com"},
        {descriptor(TYPE_URI, 0x4), "tftp://h/f", {}, "a URI of kind ftp, as ftp://host/path"},
    };
    for (const auto &c : cases) {
        std::string why;
        const auto value = wex_shell::read_value(c.param, c.word, why);
        EXPECT_EQ(value ? value->bytes : Bytes{}, c.bytes) << c.word;
        EXPECT_EQ(why, c.form) << c.word;
    }
    std::string why;
    const auto run =
        wex_shell::read_value(descriptor(TYPE_INTERFACE_RANGE, 0, 0, 0x6), "fc1/1-4,port-channel5", why);
    ASSERT_TRUE(run);
    intf_range_list list{};
    list.count = 2;
    list.ranges[0] = {fc1_1, fc1_4};
    list.ranges[1] = {pc5, pc5};
    EXPECT_EQ(run->bytes, Bytes(reinterpret_cast<uint8_t *>(&list), reinterpret_cast<uint8_t *>(&list + 1)));
    EXPECT_EQ(run->intf_mask, 0x6u);
    const auto address = wex_shell::read_value(descriptor(TYPE_IPV4_OR_IPV6), "2001:db8::1", why);
    ASSERT_TRUE(address);
    EXPECT_EQ(address->addr_type, TYPE_IPV6);
}

TEST(ShellCommandRecord, CarriesContextAndArgumentsAcrossTheWire)
{
    const std::size_t config = mode_after(0, "configure terminal");
    const auto match =
        std::get<wex_shell::Match>(wex_shell::match_line(sample_tree(), config, "no vsan 10 name core"));
    const wex_shell::SessionContext session{"admin", "console", "s-42", "wex", 1, 7};
    const auto record = wex_shell::CommandRecord::build(sample_tree(), match, session, 3);
    std::string why;
    Bytes wire;
    record.flatten_into(wire);
    const auto rebuilt = wex_shell::CommandRecord::rebuild(wire, why);
    ASSERT_TRUE(rebuilt) << why;
    const std::string dump = wex_test::capture_stdout([&] { print_pinfo(&rebuilt->info()); });
    EXPECT_EQ(dump, wex_test::capture_stdout([&] { print_pinfo(&record.info()); }));
    EXPECT_EQ(dump, "\n==== Param info ====\n"
                    "No flag: TRUE, BCP mesg type: 0, Shell_type: 1, Submode_context: 3\n"
                    "Parameter Count: 2, Command Id: 206, IPCQ Q: 7\n"
                    "Session id: s-42, Username: admin, Debug_flag: 0, filter: 0 Prc_mode: 0\n"
                    "Sup state: 0, User mode state: 0, Is_admin: 0\n"
                    "Exec_filter_mode: 0, Script_mode: 0\n"
                    "Vty ID: console User Perms Mask:0\n"
                    "\nAscii Gen: FALSE\n"
                    "Ascii command: no vsan 10 name core Info flags: 0x0\n"
                    "\nParam Arg [0]. Token id: 0 Vsan:10"
                    "\nParam Arg [1]. Token id: 0 String : core\n");

    // A multi-range value is as long as its count says: it comes back too.
    const auto ranges =
        std::get<wex_shell::Match>(wex_shell::match_line(sample_tree(), 0, "show vsan 1-3,7"));
    Bytes ranges_wire;
    wex_shell::CommandRecord::build(sample_tree(), ranges, session, 0).flatten_into(ranges_wire);
    EXPECT_TRUE(wex_shell::CommandRecord::rebuild(ranges_wire, why)) << why;

    const struct {
        Bytes wire;
        std::string why;
    } bad[] = {
        {Bytes(wire.begin(), wire.begin() + 100), "a command record shorter than its header"},
        {Bytes(wire.begin(), wire.end() - 8), "a command record cut short in the value of argument 2"},
        {[&] {
             Bytes more = wire;
             more.push_back(0);
             return more;
         }(),
         "a command record with bytes after its last argument"},
        {[&] {
             Bytes other = wire;
             other[0] ^= 1;
             return other;
         }(),
         "a command record of another form"},
    };
    for (const auto &c : bad) {
        EXPECT_FALSE(wex_shell::CommandRecord::rebuild(c.wire, why));
        EXPECT_EQ(why, c.why);
    }
}

} // namespace

TEST(ShellCompletion, HelpAndTabOfferWhatMayComeNextAndNeverGuessAValue)
{
    const std::size_t config = mode_after(0, "configure terminal");
    const struct {
        std::size_t mode;
        const char *typed;
        std::string help;
    } helps[] = {
        {config, "zone n", "  name  By its name\n"},
        {config, "zone name Z1 vsan ", "  <VSAN>  VSAN id (a VSAN id from 1 to 4094)\n"},
        {config, "zone name Z1 vsan 10 ", "  <cr>  The command is complete\n"},
        {config, "zonk ", "zonk \n^\n% Unknown word \"zonk\"\n"},
        {0, "show version x", "% Nothing may come here\n"},
        {0, "show running-config | ",
         "  include  Only the lines that match an expression\n"
         "  exclude  Only the lines that do not match an expression\n"
         "  begin    From the first line that matches an expression on\n"
         "  count    How many lines there are\n"
         "  last     The last lines only\n"},
        {0, "show running-config | inc", "  include  Only the lines that match an expression\n"},
        {0, "show running-config | include ", "  <REGEX>  A POSIX extended regular expression\n"},
        {0, "show running-config | include zone ",
         "  <cr>  The command is complete\n  |     Filter the output\n"},
        {0, "show running-config | grep ",
         "show running-config | grep \n" + std::string(22, ' ') + "^\n% Unknown filter \"grep\"\n"},
    };
    for (const auto &help : helps) {
        SCOPED_TRACE(help.typed);
        EXPECT_EQ(wex_shell::describe_choices(help.typed,
                                              wex_shell::choices_at(sample_tree(), help.mode, help.typed)),
                  help.help);
    }

    const struct {
        std::size_t mode;
        const char *typed;
        std::string insert;
        std::vector<std::string> candidates;
    } tabs[] = {
        {0, "conf", "igure ", {}},
        {0, "show run", "ning-config ", {}},
        {0, "s", "", {"show", "ssh"}},
        {0, "show zone ", "", {"fcids", "vsan", "<cr>", "|"}},
        {0, "show zone | c", "ount ", {}},
        {config, "zone name ", "", {"<NAME>"}},
        {config, "zone name Z", "", {"<NAME>"}},
    };
    for (const auto &tab : tabs) {
        SCOPED_TRACE(tab.typed);
        const wex_shell::Completion completion = wex_shell::complete_at(sample_tree(), tab.mode, tab.typed);
        EXPECT_EQ(completion.insert, tab.insert);
        EXPECT_EQ(completion.candidates, tab.candidates);
    }
}
