// The node layer of the grammar text: an image written as stanzas and
// compiled back byte for byte, and every error of a text with its place.
#include "node_layer.h"
#include "support/bytes.h"

#include <gtest/gtest.h>

#include <string>

using wex_test::Bytes;
using wex_test::Image;

namespace
{

// Two nodes in network order, from the record's documented offsets: a root
// with a parameter, an ordinary child and a link back to itself, and a leaf
// with a byte left after its name's end.
Image two_nodes()
{
    Image image(2000);
    image.text(0, "root").text(96, "Top level").be(332, 0xc).be(336, 7).byte(344, 0x80);
    image.byte(563, 1).be(360, 0x40100001).text(372, "VSAN id").be(436, 0xFFFFFFFB).be(440, 4094);
    image.byte(567, 2).byte(569, 1).byte(571, 0).byte(952, 0x02);
    image.text(1000, "leaf").text(1040, "x").text(1064, "zone").byte(1991, 1);
    return image;
}

const char *const kTwoNodesText = "# 2 parse-tree nodes, every field that is set\n"
                                  "node 0\n"
                                  "  name \"root\"\n"
                                  "  help \"Top level\"\n"
                                  "  action 0xc\n"
                                  "  token-id 7\n"
                                  "  permissions 80000000000000000000000000000000\n"
                                  "  param TYPE_INT min=-5 max=4094 help=\"VSAN id\"\n"
                                  "  child 1\n"
                                  "  link 0\n"
                                  "node 1\n"
                                  "  name \"leaf\"\n"
                                  "  token \"zone\"\n"
                                  "  interface-mask 0x1\n"
                                  "  bytes 40 78\n";

Bytes compiled(const std::string &text, std::string *errors = nullptr)
{
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::read_node_layer(text, "t.tree", diagnostics);
    if (errors)
        *errors = diagnostics.report();
    return image ? image->bytes : Bytes{};
}

TEST(NodeLayer, WritesEveryFieldThatIsSetAndCompilesBackByteForByte)
{
    const Bytes image = two_nodes();
    EXPECT_EQ(wex_grammar::write_node_layer(image), kTwoNodesText);
    EXPECT_EQ(compiled(kTwoNodesText), image);
    std::string tabbed = kTwoNodesText; // a tab parts words as a blank does
    for (std::size_t at; (at = tabbed.find("  name ")) != std::string::npos;)
        tabbed.replace(at, 7, "\tname\t");
    EXPECT_EQ(compiled(tabbed), image);

    // Bytes no field accounts for come back too: a text without its NUL,
    // counts past the record's room, descriptors and children past their
    // counts, link bits past the last child, the carried last eight bytes.
    const struct {
        const char *what;
        Image image;
    } odd[] = {
        {"token without NUL", two_nodes().text(1064, std::string(32, 'T'))},
        {"param_count 3", two_nodes().byte(563, 3)},
        {"child_count 200", two_nodes().byte(567, 200)},
        {"second descriptor unused", two_nodes().be(460, 0x40400001)},
        {"child past the count", two_nodes().byte(573, 9)},
        {"link bit past the count", two_nodes().byte(983, 0x80)},
        {"carried bytes", two_nodes().byte(992, 0xAB).byte(999, 1)},
        {"control bytes in a text", two_nodes().text(96, "a\"b\\c\x01")},
    };
    for (const auto &c : odd) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(compiled(wex_grammar::write_node_layer(c.image.bytes)), c.image.bytes);
    }
}

TEST(NodeLayer, ReportsEveryErrorWithItsPlace)
{
    const struct {
        const char *text;
        const char *report;
    } cases[] = {
        {"name \"x\"\n", "t.tree:1:1: 'name' before the first 'node'\n"},
        {"node 1\n", "t.tree:1:6: expected 'node 0': nodes are numbered from 0 in order\n"},
        {"node 0\n  colour 3\n", "t.tree:2:3: unknown field 'colour'\n"},
        {"node 0\n  token \"0123456789012345678901234567890X\"\n",
         "t.tree:2:9: 'token' holds at most 31 characters and no NUL; this text has 32\n"},
        {"node 0\n  optional 65536\n",
         "t.tree:2:12: 'optional' takes a 16-bit number, decimal or 0x hexadecimal; not '65536'\n"},
        {"node 0\n  param TYPE_BOGUS\n", "t.tree:2:9: unknown parameter type 'TYPE_BOGUS'\n"},
        {"node 0\n  param TYPE_INT min 3\n", "t.tree:2:18: a parameter's settings are KEY=VALUE: mask, min, "
                                             "max, subtype, extra32, extra64, help\n"},
        {"node 0\n  param 1\n  param 2\n  param 4\n", "t.tree:4:3: a node holds at most 2 parameters\n"},
        {"node 0\n  child 3\n", "t.tree:2:3: child 3 is not a node of this image (it has 1)\n"},
        {"node 0\n  bytes 999 0011\n", "t.tree:2:3: 'bytes' runs past the 1000-byte record\n"},
        {"node 0\n  help \"open\n", "t.tree:2:8: the quoted text is not closed on its line\n"},
        {"node 0\n  name \"a\" extra\n", "t.tree:2:12: unexpected 'extra' after the value of 'name'\n"},
        {"node 0\n  help \"a\\q\"\n",
         "t.tree:2:10: unknown escape in a quoted text (use \\\" \\\\ \\n \\t or \\xHH)\n"},
        // Every error of a run, in the order of the text.
        {"node 0\n  a 1\n  child x\nnode 2\n",
         "t.tree:2:3: unknown field 'a'\n"
         "t.tree:3:9: 'child' takes a 16-bit number, decimal or 0x hexadecimal; not 'x'\n"
         "t.tree:4:6: expected 'node 1': nodes are numbered from 0 in order\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        std::string errors;
        EXPECT_EQ(compiled(c.text, &errors), Bytes{});
        EXPECT_EQ(errors, c.report);
    }

    std::string many = "node 0\n";
    for (int i = 0; i < 52; ++i)
        many += "  bogus\n";
    std::string errors;
    compiled(many, &errors);
    EXPECT_EQ(errors.substr(errors.rfind("t.tree:51")),
              "t.tree:51:3: unknown field 'bogus'\n2 more errors not shown\n");
}

} // namespace
