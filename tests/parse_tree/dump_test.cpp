#include <wex/parse_tree.h>

#include "image_builder.h"
#include "support/capture.h"
#include "support/child_process.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using wex_test::capture_stdout;
using wex_test::Tree;

namespace
{

const std::string kDepthError = "Error: Cycle in parse tree or exceeded maximum depth\n";

std::string zeros(int bytes)
{
    return std::string(2 * bytes, '0');
}

// The dump line of a node that has only its name set.
std::string bare_node(int depth, const std::string &name)
{
    return std::string(3 * depth, ' ') + "<NODE> NodeName:" + name + " permissions_mask:" + zeros(16) +
           "childlist_mask:" + zeros(32) + "\n";
}

param_descriptor descriptor(uint32_t type, int32_t min, int32_t max, uint32_t subtype, const char *help = "")
{
    param_descriptor p;
    std::memset(&p, 0, sizeof p);
    p.type = type;
    p.min = static_cast<uint32_t>(min);
    p.max = static_cast<uint32_t>(max);
    p.subtype = subtype;
    std::strcpy(p.help, help);
    return p;
}

std::size_t count_of(const std::string &text, const std::string &what)
{
    std::size_t n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

} // namespace

TEST(FieldPrinters, PrintLabelledValuesAndNothingForEmptyOnes)
{
    const uint8_t zero4[4] = {0, 0, 0, 0}, action[4] = {0x0c, 0x00, 0x00, 0x80};
    EXPECT_EQ(capture_stdout([&] {
                  print_str("L", "v");
                  print_str("L", "");
                  print_str("L", nullptr);
                  print_int("N", 0);
                  print_int("N", -3);
                  print_u_l_long("M", 0);
                  print_u_l_long("M", 1ull << 63);
                  print_hex_value("action", zero4, 4);
                  print_hex_value("action", action, 4);
                  print_hex_value("x", action, 0);
                  print_hex_value("x", action, -2);
              }),
              "L:v N:-3 M:-9223372036854775808 action:0x00000000 action:0x8000000c x:0x x:0x ");
}

TEST(DisplayParam, ShowsEachTypeWithItsFieldsAndFamily)
{
    param_descriptor intf = descriptor(TYPE_INTERFACE, 0, 0, 0);
    intf.mask = 0xC0001;
    param_descriptor negative_mask = descriptor(TYPE_INTERFACE_RANGE, 0, 0, 0);
    negative_mask.mask = ~0ull;
    const struct {
        param_descriptor p;
        const char *expected;
    } cases[] = {
        {descriptor(TYPE_INT, -5, 10, 0), "<Parameter TYPE_INT:-5 to 10{1048576}>"},
        {descriptor(TYPE_INT, -5, 10, 3), "<Parameter TYPE_INT|Subtype:3{1048576}>"},
        {descriptor(TYPE_VSAN_MULTI_RANGE, 1, 4094, 0, "VSAN id"),
         "<Parameter TYPE_VSAN_MULTI_RANGE:1 to 4094 help:VSAN id {4194304}>"},
        {descriptor(TYPE_HEX, 0x10, 0xff, 0), "<Parameter TYPE_HEX:0x10 to 0xff{1048576}>"},
        {descriptor(TYPE_HEX_RANGE, 0, -1, 0), "<Parameter TYPE_HEX_RANGE:0x0 to 0xffffffff{1048576}>"},
        {descriptor(TYPE_STRING, 80, 0, 5), "<Parameter TYPE_STRING:80{0}>"},
        {descriptor(TYPE_URI, 6, 0, 0), "<Parameter TYPE_URI Mask:6{0}>"},
        {intf, "<Parameter TYPE_INTERFACE Mask:786433{2097152}>"},
        {negative_mask, "<Parameter TYPE_INTERFACE_RANGE Mask:-1{2097152}>"},
        {descriptor(TYPE_INET_NAME, 0, 0, 0), "<Parameter TYPE_INET_NAME{0}>"},
        {descriptor(TYPE_FC_ID, 0, 0, 0), "<Parameter TYPE_FC_ID{6291456}>"},
        {descriptor(TYPE_COMMUNITY, 0, 0, 0, "c"), "<Parameter  help:c {7340032}>"},
        {descriptor(TYPE_NONE, 0, 0, 0), "<Parameter {0}>"},
        {descriptor(0x40900001, 0, 0, 0, "hi"), "<Parameter  help:hi {9437184}>"},
        {descriptor(0x00F12345, 0, 0, 0), "<Parameter {15728640}>"},
    };
    std::string printed, expected;
    for (const auto &c : cases) {
        printed += capture_stdout([&] { display_param(&c.p); }) + "\n";
        expected += std::string(c.expected) + "\n";
    }
    EXPECT_EQ(printed, expected);
}

TEST(DisplayArrayTree, PrintsEveryFieldChildrenAndLinks)
{
    Tree image(3);
    parse_tree_node &show = image[0];
    std::strcpy(show.NodeName, "show");
    std::strcpy(show.Token, "show");
    std::strcpy(show.Help, "Show info");
    std::strcpy(show.module_id, "vsh");
    show.action = 0xC;
    show.token_id = 7;
    show.command_id = 41;
    show.bcp_msg_type = 3;
    show.permissions_mask[0] = 0x01;
    show.permissions_mask[15] = 0x80;
    show.internal_func_id = 3;
    show.optional = 1;
    show.asciigen_priority = 2;
    show.interface_mask = 5;
    show.param_count = 1;
    show.params[0] = descriptor(TYPE_INT, -5, 10, 0);
    show.params[1] = descriptor(TYPE_FC_ID, 0, 0, 0); // beyond param_count: not shown
    std::strcpy(image[1].NodeName, "version");
    std::strcpy(image[2].NodeName, "brief");
    std::strcpy(image[2].Token, "brief");
    image.add_child(0, 1);
    image.add_child(0, 0, true);
    image.add_child(1, 2);

    const std::string expected =
        "<NODE> NodeName:show Token:show Help:Show info SubMode:8 Terminal:4 module_id:vsh "
        "permissions_mask:80" +
        zeros(14) + "01" +
        "token_id:7 command_id:41 action:12 action:0x0000000c internal_func_id:3 optional:1 bcp_msg_type:3 "
        "asciigen_priority:2 "
        " Interface Mask:5 childlist_mask:40" +
        zeros(31) + "<Parameter TYPE_INT:-5 to 10{1048576}>\n" + bare_node(1, "version") +
        "      <NODE> NodeName:brief Token:brief permissions_mask:" + zeros(16) +
        "childlist_mask:" + zeros(32) +
        "\n"
        "   <Link> Nodename:show\n";
    EXPECT_EQ(capture_stdout([&] { display_array_tree(image.bytes(), 0, 0); }), expected);
    EXPECT_EQ(capture_stdout([&] { display_array_tree(nullptr, 0, 0); }), "");

    // Child position nine is a link by bit two of byte one of the mask.
    Tree nine(3);
    std::strcpy(nine[1].NodeName, "a");
    std::strcpy(nine[2].NodeName, "target");
    for (int i = 0; i < 9; ++i)
        nine.add_child(0, 1);
    nine.add_child(0, 2);
    nine[0].childlist_mask[1] = 0x02;
    std::string nine_children =
        "<NODE> permissions_mask:" + zeros(16) + "childlist_mask:0040" + zeros(30) + "\n";
    for (int i = 0; i < 9; ++i)
        nine_children += bare_node(1, "a");
    EXPECT_EQ(capture_stdout([&] { display_array_tree(nine.bytes(), 0, 0); }),
              nine_children + "   <Link> Nodename:target\n");
}

TEST(DisplayArrayTree, EndsTheProcessPastThirtyOneLevelsWhereCycleCheckFindsTheChainTooDeep)
{
    Tree fits = wex_test::make_chain(31), deep = wex_test::make_chain(32);
    const auto ok = wex_test::run_in_child([&] { display_array_tree(fits.bytes(), 0, 0); });
    EXPECT_EQ(ok.exit_status, 0);
    EXPECT_EQ(count_of(ok.out, "<NODE>"), 31u);
    EXPECT_EQ(ok.out.substr(ok.out.size() - bare_node(30, "n30").size()), bare_node(30, "n30"));
    const auto ended = wex_test::run_in_child([&] { display_array_tree(deep.bytes(), 0, 0); });
    EXPECT_EQ(ended.exit_status, 255);
    EXPECT_EQ(count_of(ended.out, "<NODE>"), 31u);
    EXPECT_EQ(ended.out.substr(ended.out.size() - kDepthError.size()), kDepthError);
    EXPECT_EQ(wex_test::run_in_child([&] { display_array_tree(deep.bytes(), 5, 31); }).out, kDepthError);

    EXPECT_EQ(cycle_check(fits.bytes(), 0, 0), 0);
    EXPECT_EQ(cycle_check(deep.bytes(), 0, 0), 1);
    EXPECT_EQ(cycle_check(deep.bytes(), 1, 0), 0);
    EXPECT_EQ(cycle_check(fits.bytes(), 30, 30), 0);
    EXPECT_EQ(cycle_check(fits.bytes(), 30, 31), 1);
    EXPECT_EQ(cycle_check(nullptr, 0, 0), 0);

    // A link loop is a cycle to the check; the dump shows the link and goes on.
    Tree looped = wex_test::make_chain(6);
    looped.add_child(5, 0, true);
    EXPECT_EQ(cycle_check(looped.bytes(), 0, 0), 1);
    const auto dumped = wex_test::run_in_child([&] { display_array_tree(looped.bytes(), 0, 0); });
    EXPECT_EQ(dumped.exit_status, 0);
    EXPECT_EQ(count_of(dumped.out, "<Link> Nodename:n0\n"), 1u);
}

TEST(CycleCheck, DenseLinksDoNotMakeTheCheckExponential)
{
    // 30 levels of 192 links each to the next node: 192^29 paths, all shallow
    // enough; a walk that does not remember visited nodes never finishes.
    Tree image(31);
    for (uint16_t level = 0; level < 30; ++level) {
        for (int i = 0; i < 192; ++i)
            image.add_child(level, level + 1, true);
    }
    EXPECT_EQ(cycle_check(image.bytes(), 0, 0), 0);
    EXPECT_EQ(cycle_check(image.bytes(), 0, 1), 1);
    image.add_child(30, 0, true);
    EXPECT_EQ(cycle_check(image.bytes(), 0, 0), 1);
}

TEST(DisplayPtrTree, PrintsTheGeneratorTreeIndentedByTwo)
{
    char config[] = "config", help[] = "Configure", f1[] = "f1", m1[] = "m1", terminal[] = "terminal";
    generator_node child = {};
    child.nodename = terminal;
    child.Token = terminal;
    generator_name b = {"b", nullptr};
    generator_name a = {"a", &b};
    generator_child link = {nullptr, &child};
    generator_node root = {};
    root.nodename = config;
    root.Token = config;
    root.Help = help;
    root.funcID = f1;
    root.modID = m1;
    root.array_index = 4;
    root.name_list = &a;
    root.child_list = &link;

    EXPECT_EQ(capture_stdout([&] { display_ptr_tree(&root, 0); }),
              "nodename:config Token:config Help:Configure funcID:f1 modID:m1 array_index:4 :a::b:\n"
              "  nodename:terminal Token:terminal \n");
    EXPECT_EQ(capture_stdout([&] {
                  displayChildren(&root);
                  display_ptr_tree(nullptr, 3);
              }),
              "Child: terminal ");

    generator_child self = {nullptr, &root};
    root.child_list = &self;
    const auto looped = wex_test::run_in_child([&] { display_ptr_tree(&root, 0); });
    EXPECT_EQ(looped.exit_status, 255);
    EXPECT_EQ(count_of(looped.out, "nodename:config"), 31u);
    EXPECT_EQ(looped.out.substr(looped.out.size() - kDepthError.size()), kDepthError);
}

TEST(TreeTableDump, PrintsBannersRulesAndEntries)
{
    subtree_path p = {2, "/bootflash/x.par"}, empty = {0, ""};
    tree_table_entry entries[2] = {{"vsh", "vsh.par"}, {"", "b.par"}};
    const std::string banner = "=======================================\n";
    const std::string head = "\n\n" + banner + "Displaying Tree Table\n" + banner, tail = banner + "\n\n";
    EXPECT_EQ(capture_stdout([&] {
                  displayPath(&p);
                  displayPath(&empty);
                  show_tree_table_entry(nullptr);
                  show_tree_table(entries, 0);
                  show_tree_table(entries, 2);
              }),
              "Path type:2 Location:/bootflash/x.par \n\n" + head + tail + head +
                  "---------------------------------------\n module_id:vsh  par file name:vsh.par \n\n"
                  "---------------------------------------\n par file name:b.par \n\n" +
                  tail);
}
