// The shell's main tree: loaded, checked and converted, or refused with
// what is wrong before any walk.
#include "compiler.h"
#include "main_tree.h"
#include "node_record.h"
#include "support/samples.h"
#include "support/sandbox.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{

std::string sandbox(const std::string &name)
{
    return std::string(WEX_TEST_SANDBOX) + "/" + name;
}

TEST(MainTree, LoadsACheckedTreeInHostOrderAndMakesItTheRoot)
{
    wex_grammar::Diagnostics diagnostics;
    const auto image =
        wex_grammar::compile({{"exec.tree", wex_test::sample_grammar("exec.tree")}}, diagnostics);
    ASSERT_TRUE(image) << diagnostics.report();
    wex_test::write_file(sandbox("exec.par"), image->bytes);

    std::string why;
    const std::optional<wex_shell::MainTree> tree = wex_shell::MainTree::load(sandbox("exec.par"), why);
    ASSERT_TRUE(tree) << why;
    EXPECT_EQ(tree->size(), image->bytes.size() / WEX_NODE_SIZE);
    const wex_grammar::NodeFields root = wex_grammar::decode_record(image->bytes.data());
    EXPECT_STREQ(tree->node(0).NodeName, "exec");
    ASSERT_EQ(tree->node(0).child_count, root.children.size());
    EXPECT_EQ(tree->node(0).children[1], root.children[1].index);
    tree->make_root();
    EXPECT_EQ(wex_parse_tree_root_get(), &tree->node(0));
}

TEST(MainTree, ABadTreeIsRefusedWithWhatIsWrong)
{
    std::vector<uint8_t> loop(2000, 0);
    loop[567] = 1, loop[569] = 1;   // node 0: one child, node 1
    loop[1567] = 1, loop[1569] = 0; // node 1: one child, node 0
    wex_test::write_file(sandbox("loop.par"), loop);
    std::filesystem::create_directories(sandbox("dir.par"));
    const struct {
        std::string file, why;
    } cases[] = {
        {"missing.par", "No such file or directory"},
        {"dir.par", "not a regular file"},
        {"loop.par", "node 0: lies on a loop of non-link children"},
    };
    for (const auto &c : cases) {
        std::string why;
        EXPECT_FALSE(wex_shell::MainTree::load(sandbox(c.file), why));
        EXPECT_EQ(why, "main tree " + sandbox(c.file) + ": " + c.why);
    }
}

} // namespace
