// Feature grammars compiled apart and merged make the tree that compiling
// them together makes; images that disagree about a node are refused.
#include "compiler.h"
#include "image_merge.h"
#include "node_record.h"

#include "support/samples.h"

#include <gtest/gtest.h>

#include <map>

namespace
{

using Image = std::vector<uint8_t>;

Image compiled(const std::vector<wex_grammar::Source> &sources)
{
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::compile(sources, diagnostics);
    EXPECT_TRUE(image) << diagnostics.report();
    return image ? image->bytes : Image{};
}

// Each node by its words from the root, with its fields but not where its
// children went; each link by the words of both ends. Numbering aside, two
// trees are the same when these are.
std::map<std::string, std::string> by_path(const Image &image)
{
    std::vector<wex_grammar::NodeFields> nodes;
    for (std::size_t at = 0; at < image.size(); at += WEX_NODE_SIZE)
        nodes.push_back(wex_grammar::decode_record(image.data() + at));
    std::vector<std::string> path(nodes.size());
    std::map<std::string, std::string> tree;
    std::vector<std::size_t> stack{0};
    while (!stack.empty()) {
        const std::size_t n = stack.back();
        stack.pop_back();
        wex_grammar::NodeFields fields = nodes[n];
        fields.children.clear();
        const wex_grammar::Record record = wex_grammar::encode_record(fields);
        tree[path[n]] = std::string(record.begin(), record.end());
        for (const wex_grammar::ChildRef &c : nodes[n].children) {
            if (c.link)
                continue;
            path[c.index] = path[n] + "/" + nodes[c.index].name;
            stack.push_back(c.index);
        }
    }
    for (std::size_t n = 0; n < nodes.size(); ++n)
        for (const wex_grammar::ChildRef &c : nodes[n].children)
            if (c.link)
                tree[path[n] + " -> " + path[c.index]] = "";
    return tree;
}

TEST(ImageMerge, FeatureTreesMergedAreTheTreeCompiledTogether)
{
    const wex_grammar::Source exec{"exec.tree", wex_test::sample_grammar("exec.tree")},
        zone{"zone.tree", wex_test::sample_grammar("zone.tree")}, interface {
        "interface.tree", wex_test::sample_grammar("interface.tree")
    };
    const Image with_zone = compiled({exec, zone}), with_interface = compiled({exec, interface});
    wex_grammar::Diagnostics diagnostics;
    const auto merged =
        wex_grammar::merge_images({{"zone.par", with_zone}, {"interface.par", with_interface}}, diagnostics);
    ASSERT_TRUE(merged) << diagnostics.report();
    EXPECT_EQ(by_path(*merged), by_path(compiled({exec, zone, interface})));

    // The same image twice is itself.
    const auto twice = wex_grammar::merge_images({{"a", with_zone}, {"b", with_zone}}, diagnostics);
    ASSERT_TRUE(twice);
    EXPECT_EQ(*twice, with_zone);
}

TEST(ImageMerge, ImagesThatDisagreeAboutANodeAreRefused)
{
    const Image x = compiled({{"x.tree", "command exec: zone\n    help zone \"Zones\"\n"}});
    const Image y = compiled({{"y.tree", "command exec: zone\n    help zone \"Zone sets\"\n"}});
    const Image other_root = compiled({{"z.tree", "node 0\n  name \"root\"\n"}});
    wex_grammar::Diagnostics diagnostics;
    EXPECT_FALSE(wex_grammar::merge_images({{"x.par", x}, {"y.par", y}, {"z.par", other_root}}, diagnostics));
    EXPECT_EQ(diagnostics.report(),
              "y.par: node 1 ('zone') differs from the node at its place in the images before\n"
              "z.par: its root differs from the first image's root\n");
}

} // namespace
