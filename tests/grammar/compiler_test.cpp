// Command declarations compiled to a tree: the nodes they make, every error
// an author can make with its place, and the sample grammars.
#include "command_writer.h"
#include "compiler.h"
#include "node_layer.h"
#include "param_types.h"

#include <wex/parse_tree.h>

#include "support/samples.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace
{

std::string compiled_nodes(const std::vector<wex_grammar::Source> &sources, std::string &errors)
{
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::compile(sources, diagnostics);
    errors = diagnostics.report();
    return image ? wex_grammar::write_node_layer(image->bytes) : "";
}

TEST(Compiler, SharesLeadingWordsAndLinksWhatSeveralModesOffer)
{
    const std::string text = "module m\n"
                             "help show \"Show\"\n"
                             "command exec: configure\n"
                             "    help configure \"Configure\"\n"
                             "    enters config \"cfg\" \"Config mode\"\n"
                             "command config: port <P:int 1..8 \"Port\"><Q:hex 0x0..0xf \"Lane\"> {up|down}\n"
                             "    help port \"A port\"\n"
                             "    help up \"Up\"\n"
                             "    help down \"Down\"\n"
                             "    function port_set\n"
                             "    command-id 5\n"
                             "    negatable\n"
                             "command config: exit\n"
                             "    help exit \"Leave\"\n"
                             "command exec,config: show [all]\n"
                             "    help all \"Everything\"\n";
    const std::string expected =
        "# 10 parse-tree nodes, every field that is set\n"
        "node 0\n  name \"exec\"\n  child 1\n  child 8\n"
        "node 1\n  name \"configure\"\n  token \"configure\"\n  help \"Configure\"\n"
        "  submode-help \"Config mode\"\n  submode-prompt \"cfg\"\n  module \"m\"\n"
        "  action 0xc\n  child 2\n  child 6\n  child 7\n  link 8\n"
        "node 2\n  name \"port\"\n  token \"port\"\n  help \"A port\"\n  module \"m\"\n"
        "  child 3\n"
        "node 3\n  name \"<P><Q>\"\n  help \"Port\"\n  module \"m\"\n"
        "  param TYPE_INT min=1 max=8 help=\"Port\"\n"
        "  param TYPE_HEX max=0xf help=\"Lane\"\n  child 4\n  child 5\n"
        "node 4\n  name \"up\"\n  token \"up\"\n  help \"Up\"\n  function \"port_set\"\n"
        "  module \"m\"\n  action 0x4\n  command-id 5\n"
        "node 5\n  name \"down\"\n  token \"down\"\n  help \"Down\"\n  function \"port_set\"\n"
        "  module \"m\"\n  action 0x4\n  command-id 5\n"
        "node 6\n  name \"no\"\n  token \"no\"\n  help \"Negate a command or set its defaults\"\n"
        "  module \"m\"\n  link 2\n"
        "node 7\n  name \"exit\"\n  token \"exit\"\n  help \"Leave\"\n  module \"m\"\n"
        "  action 0x4\n"
        "node 8\n  name \"show\"\n  token \"show\"\n  help \"Show\"\n  module \"m\"\n"
        "  action 0x4\n  child 9\n"
        "node 9\n  name \"all\"\n  token \"all\"\n  help \"Everything\"\n  module \"m\"\n"
        "  optional 1\n  action 0x4\n";
    std::string errors;
    EXPECT_EQ(compiled_nodes({{"t.tree", text}}, errors), expected);
    EXPECT_EQ(errors, "");

    // The "no" node comes after both forms of the negatable command, and
    // the declarations written back say so.
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::compile({{"t.tree", text}}, diagnostics);
    ASSERT_TRUE(image);
    EXPECT_TRUE(wex_grammar::write_command_layer(image->bytes));
}

std::string numbered_words(int count)
{
    std::string helps, words;
    for (int i = 1; i <= count; ++i) {
        helps += "help w" + std::to_string(i) + " \"h\"\n";
        words += " w" + std::to_string(i);
    }
    return helps + "command exec:" + words + "\n";
}

std::string many_commands(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "command exec: k" + std::to_string(i) + "\n    help k" + std::to_string(i) + " \"h\"\n";
    return text;
}

TEST(Compiler, ReportsEachAuthorErrorWithItsPlace)
{
    const struct {
        std::string text;
        std::string report;
    } cases[] = {
        {"command exec: show <X:integer 1..2 \"x\">\n", "t.tree:1:21: unknown parameter type 'integer'\n"},
        {"command exec: set <X:int 9..2 \"x\">\n", "t.tree:1:26: bounds reversed: 9 is above 2\n"},
        {"command exec: set <X:hex 0x10..0x10 \"x\">\n", // equal bounds are not reversed
         "t.tree:1:15: 'set' has no help: add help set \"...\"\n"},
        {"command exec: set <X:string \"x\">\n",
         "t.tree:1:20: a string parameter needs its longest length, as in <NAME:string 64>\n"},
        {"command exec: show a\n    help show \"S\"\n    help a \"A\"\n"
         "command exec: show b\n    help show \"T\"\n    help b \"B\"\n",
         "t.tree:4:15: 'show' has the help \"S\" at t.tree:1:15; here it is \"T\"\n"},
        {"command exec: show [all] <X:int 1..2 \"x\">\n",
         "t.tree:1:26: a parameter right after an optional part makes matching ambiguous\n"},
        {"command exec: " + std::string(32, 'k') + "\n",
         "t.tree:1:15: a keyword holds at most 31 characters; '" + std::string(32, 'k') + "' has 32\n"},
        {"command exec: p <A:int 1..2 \"a\"><B:int 1..2 \"b\"><C:int 1..2 \"c\">\n",
         "t.tree:1:49: a node holds at most 2 parameters\n"},
        {"command zonez: x\n    help x \"X\"\n", "t.tree:1:1: no command enters the mode 'zonez'\n"},
        {"command exec: x\n", "t.tree:1:15: 'x' has no help: add help x \"...\"\n"},
        {"command exec: x\n    help x \"X\"\n    function\n", "t.tree:3:5: 'function' needs a name\n"},
        {"command exec: x\n    help x \"X\"\n    function a\ncommand exec: x\n    function b\n",
         "t.tree:4:1: 'function' of 'x' differs from what t.tree:1:15 gives it\n"},
        {many_commands(193), "t.tree:385:15: 'exec' would have more than 192 children\n"},
        {numbered_words(31),
         "t.tree:32:126: the command reaches 31 levels below the root; the walks go 30 deep\n"},
        {"command exec: a\n    help a \"A\"\n    enters m \"m\" \"M\"\ncommand m: b\n    help b \"B\"\n"
         "    enters m \"m\" \"M\"\n",
         "t.tree:6:5: the mode 'm' is already entered at t.tree:1:15\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text.substr(0, 80));
        std::string errors;
        EXPECT_EQ(compiled_nodes({{"t.tree", c.text}}, errors), "");
        EXPECT_EQ(errors, c.report);
    }
}

TEST(Compiler, SampleGrammarsMakeOneWalkableTreeOfEveryTypeAUserTypes)
{
    std::vector<wex_grammar::Source> sources;
    for (const char *name : {"exec.tree", "zone.tree", "interface.tree"})
        sources.push_back({name, wex_test::sample_grammar(name)});
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::compile(sources, diagnostics);
    ASSERT_TRUE(image) << diagnostics.report();

    std::set<uint32_t> used, typable;
    for (std::size_t at = 0; at < image->bytes.size(); at += WEX_NODE_SIZE) {
        const uint8_t *count = &image->bytes[at + offsetof(parse_tree_node, param_count)];
        for (int i = 0; i < (count[0] << 8 | count[1]); ++i) {
            const uint8_t *type = &image->bytes[at + offsetof(parse_tree_node, params) + 100 * i];
            used.insert(static_cast<uint32_t>(type[0] << 24 | type[1] << 16 | type[2] << 8 | type[3]));
        }
    }
    for (uint32_t code : {TYPE_STRING,       TYPE_LINE,
                          TYPE_URI,          TYPE_DNS_NAME,
                          TYPE_USERATHOST,   TYPE_IP,
                          TYPE_IPV4,         TYPE_IPV6,
                          TYPE_IPV4_OR_IPV6, TYPE_INET_NAME,
                          TYPE_INT,          TYPE_INT_RANGE,
                          TYPE_HEX,          TYPE_INT_MULTI_RANGE,
                          TYPE_HEX_RANGE,    TYPE_HEX_MULTI_RANGE,
                          TYPE_INTERFACE,    TYPE_INTERFACE_RANGE,
                          TYPE_MAC,          TYPE_WWN,
                          TYPE_LUN,          TYPE_VSAN,
                          TYPE_VSAN_RANGE,   TYPE_VSAN_MULTI_RANGE,
                          TYPE_GUID,         TYPE_FC_ID})
        typable.insert(code);
    EXPECT_EQ(used, typable);

    // Both layers of the tree compile back to it byte for byte.
    const std::optional<std::string> commands = wex_grammar::write_command_layer(image->bytes);
    ASSERT_TRUE(commands);
    for (const std::string &text : {*commands, wex_grammar::write_node_layer(image->bytes)}) {
        wex_grammar::Diagnostics again;
        const auto back = wex_grammar::compile({{"back.tree", text}}, again);
        ASSERT_TRUE(back) << again.report();
        EXPECT_EQ(back->bytes, image->bytes);
    }
    // The images no declaration makes are left to the node layer: a root
    // that is not exec, a word that completes nothing.
    std::vector<uint8_t> renamed = image->bytes;
    renamed[0] = 'X';
    EXPECT_FALSE(wex_grammar::write_command_layer(renamed));
    std::vector<uint8_t> dangling = image->bytes;
    dangling[WEX_NODE_SIZE * 2 + offsetof(parse_tree_node, action) + 3] &=
        static_cast<uint8_t>(~WEX_ACTION_TERMINAL);
    EXPECT_FALSE(wex_grammar::write_command_layer(dangling));
}

} // namespace
