// wexctl on crafted .par images, on configuration files, and against
// wexd-sim: what it reports and how it exits, never a crash.
#include "input_file.h"
#include "parse_tree/image_builder.h"
#include "support/child_process.h"
#include "support/sandbox.h"
#include "tools/sim_process.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <wex/wex.h>

#include "ipcq.h"
#include "ipcq_serve.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>
#include <sys/stat.h>
#include <unistd.h>
#include <string>
#include <vector>

using wex_test::run_tool;
using wex_test::ToolRun;

namespace
{

using wex_test::make_chain;
using wex_test::make_named;

ToolRun wexctl(const std::vector<std::string> &args, const std::string &runtime_dir = "/nonexistent")
{
    return run_tool(WEXCTL_PATH, args, runtime_dir);
}

// Writes the tree as a .par file to the sandbox, its first keep bytes only.
std::string write_par(const wex_test::Tree &tree, const std::string &name, std::size_t keep = SIZE_MAX)
{
    const std::vector<uint8_t> bytes = tree.network_order();
    const std::string path = std::string(WEX_TEST_SANDBOX) + "/" + name;
    wex_test::write_file(path, {bytes.begin(), bytes.begin() + std::min(keep, bytes.size())});
    return path;
}

TEST(Wexctl, ParCheckReportsEachBadImageWithItsNode)
{
    const std::string good =
        write_par(make_named(3).add_child(0, 1).add_child(0, 2).add_child(2, 0, true), "good.par");
    ToolRun run = wexctl({"par", "check", good});
    EXPECT_EQ(run.status, 1) << run.out; // node 2 links back to the start: a loop
    EXPECT_NE(run.out.find("node 0: a loop through links comes back here"), std::string::npos) << run.out;

    const std::string fine =
        write_par(make_named(3).add_child(0, 1).add_child(1, 2).add_child(0, 2, true), "fine.par");
    run = wexctl({"par", "check", fine});
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_EQ(run.out, fine + ": 3 nodes, valid from node 0\n");

    const struct {
        const char *what;
        std::string path;
        std::string report;
    } bad[] = {
        {"child past the end", write_par(make_named(3).add_child(0, 7), "past.par"),
         "node 0: child 0 is node 7, past the image's 3 nodes"},
        // In the third block of 128 nodes that the check streams through.
        {"count of 193",
         [] {
             wex_test::Tree many = make_named(300);
             many[299].child_count = 193;
             return write_par(many, "count.par");
         }(),
         "node 299: child_count 193 (at most 192)"},
        {"two parents", write_par(make_named(3).add_child(0, 2).add_child(1, 2), "parents.par"),
         "node 2: non-link child of both node 0 and node 1"},
        {"link loop", write_par(make_named(2).add_child(0, 1).add_child(1, 1, true), "loop.par"),
         "node 1: a loop through links"},
        {"chain of 40", write_par(make_chain(40), "chain.par"), "more than 30 levels below node 0"},
        {"rootless loop", write_par(make_named(3).add_child(0, 1).add_child(2, 2), "rootless.par"),
         "node 2: lies on a loop of non-link children"},
        {"truncated", write_par(make_named(2), "cut.par", 1500),
         "size 1500 is not a whole number of 1000-byte nodes"},
    };
    for (const auto &b : bad) {
        run = wexctl({"par", "check", b.path});
        EXPECT_EQ(run.status, 1) << b.what << "\n" << run.out << run.err;
        EXPECT_NE(run.out.find(b.report), std::string::npos) << b.what << "\n" << run.out;
        run = wexctl({"par", "dump", b.path});
        EXPECT_LT(run.status, 2) << b.what << "\n"
                                 << run.err; // a report, never a crash or the walks' own exit
        EXPECT_EQ(run.out.find("Error: Cycle"), std::string::npos) << b.what;
    }
    EXPECT_EQ(wexctl({"par", "check", fine, "--node", "9"}).status, 1);
    // A link into another non-link tree: that tree is in host order too
    // before the loop check follows the link.
    const std::string forest =
        write_par(make_named(4).add_child(0, 1).add_child(0, 2, true).add_child(2, 3), "forest.par");
    EXPECT_EQ(wexctl({"par", "check", forest}).out, forest + ": 4 nodes, valid from node 0\n");
}

TEST(Wexctl, UntrustedFilesAndArgumentsGetOneLineAndStatusTwo)
{
    const std::string dir = WEX_TEST_SANDBOX, fifo = dir + "/wexctl.fifo", a = dir + "/a.cfg",
                      nul = dir + "/nul.cfg", shift_out = dir + "/so.cfg", open_end = dir + "/open.cfg";
    unlink(fifo.c_str());
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::ofstream(a) << "a\n";
    std::ofstream(nul) << std::string("a\n\0b\n", 5);
    // Tab, escape, carriage return and vertical tab pass; shift-out, just
    // past them, is found inside a later 64-byte block.
    std::ofstream(shift_out) << "a\tb\x1b[0m\r\v\n"
                             << std::string(70, 'x') << "\nc\x0e\n"
                             << std::string(70, 'y') << "\n";
    std::ofstream(open_end) << "a\nb";
    const std::string usage_lock = "wexctl: lock needs a REQUESTER: a number from 0 to 4294967295\n";
    const struct {
        std::vector<std::string> args;
        std::string err;
        wex_test::ToolIo io = {};
    } cases[] = {
        {{"par", "check", dir}, "wexctl: " + dir + ": is a directory\n"},
        {{"par", "dump", "/no/such.par"}, "wexctl: /no/such.par: No such file or directory\n"},
        {{"diff", dir, fifo},
         "wexctl: " + dir + ": is a directory\nwexctl: " + fifo + ": is a FIFO, not a regular file\n"},
        {{"par", "check", "/dev/zero"}, "wexctl: /dev/zero: is a device, not a regular file\n"},
        {{"par", "check", "-"},
         "wexctl: standard input: is larger than the limit of 65536000 bytes\n",
         {"/dev/zero", ""}},
        {{"diff", nul, a},
         "wexctl: " + nul + ": binary content (byte 0x00 on line 2), not compared as text\n"},
        {{"diff", a, shift_out},
         "wexctl: " + shift_out + ": binary content (byte 0x0e on line 3), not compared as text\n"},
        {{"config", "remediate", a, a, "--tree", "/no/such.par"},
         "wexctl: main tree /no/such.par: No such file or directory\n"},
        {{"lock", "abc"}, usage_lock},
        {{"lock", "-1"}, usage_lock},
        {{"lock", "99999999999"}, usage_lock},
        {{"lock"}, usage_lock},
        {{"unlock", "7", "--force", "8"},
         "wexctl: unlock needs a REQUESTER: a number from 0 to 4294967295\n"},
        {{"lock", "7", "--timeout", "0"}, "wexctl: --timeout needs SECONDS, from 1 to 3600\n"},
        {{"--help"}, "wexctl: standard output: No space left on device\n", {"", "/dev/full"}},
    };
    for (const auto &c : cases) {
        const ToolRun run = run_tool(WEXCTL_PATH, c.args, "/nonexistent", c.io);
        EXPECT_EQ(run.status, 2) << c.args[0] << " " << c.args.back();
        EXPECT_EQ(run.err, c.err);
        EXPECT_EQ(run.out, "");
    }
    ToolRun run = wexctl({"diff", a, open_end});
    EXPECT_EQ(run.status, 0); // "b" has no line end: the library leaves it out
    EXPECT_EQ(run.err,
              "wexctl: " + open_end + ": warning: the last line has no line end and takes no part\n");
    run = run_tool(WEXCTL_PATH, {"diff", "-", a}, "/nonexistent", {a, ""});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(wexctl({"--version"}).out, "wexctl " WEX_PROJECT_VERSION "\n");
    EXPECT_EQ(wexctl({"par", "--help"}).out.rfind("usage: wexctl par check FILE [--node N]\n", 0), 0u);
}

TEST(Wexctl, ParDumpStartsWhereToldAndDiffComparesConfigurations)
{
    const std::string fine =
        write_par(make_named(3).add_child(0, 1).add_child(1, 2).add_child(0, 2, true), "dump.par");
    ToolRun run = wexctl({"par", "dump", fine, "--node", "1"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.find("NodeName:n0"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("   <NODE> NodeName:n2"), std::string::npos) << run.out;

    const std::string dir = WEX_TEST_SANDBOX, old_cfg = dir + "/old.cfg", new_cfg = dir + "/new.cfg";
    std::ofstream(old_cfg) << "interface fc1/1\n  shutdown\nvsan database\n";
    std::ofstream(new_cfg) << "vsan database\ninterface fc1/1\n  no shutdown\n";
    run = wexctl({"diff", old_cfg, new_cfg});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("    -  shutdown\n    +  no shutdown\n"), std::string::npos) << run.out;
    // A text that fills its pages exactly still ends where the file ends.
    const std::string paged = dir + "/paged.cfg";
    std::ofstream(paged) << std::string(static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) - 1, 'a') << "\n";
    EXPECT_EQ(wexctl({"diff", paged, paged}).status, 0);
    EXPECT_EQ(wexctl({"lock", "--help"}).out.rfind("usage: wexctl lock", 0), 0u);
    EXPECT_NE(wexctl({"frobnicate"}).err.find("unknown command 'frobnicate'"), std::string::npos);
}

TEST(Wexctl, TreeDecompileAndCompileGiveBackTheImageOrEveryErrorAndNoFile)
{
    const std::string dir = WEX_TEST_SANDBOX,
                      image = write_par(make_named(3).add_child(0, 1).add_child(1, 2).add_child(0, 2, true),
                                        "t.par");
    ToolRun run = wexctl({"tree", "decompile", image, "--nodes"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "# 3 parse-tree nodes, every field that is set\n"
                       "node 0\n  name \"n0\"\n  child 1\n  link 2\n"
                       "node 1\n  name \"n1\"\n  child 2\n"
                       "node 2\n  name \"n2\"\n");
    // No declaration makes a root named n0: without --nodes too, the nodes.
    EXPECT_EQ(wexctl({"tree", "decompile", image}).out, run.out);
    std::ofstream(dir + "/t.tree") << run.out;
    const std::string head = "digraph parse_tree {\n  node [fontname=\"Helvetica\", fontsize=10];\n"
                             "  edge [arrowsize=0.6];\n";
    run = wexctl({"tree", "graph", image});
    EXPECT_EQ(run.out, head +
                           "  n0 [label=\"n0\", shape=box];\n  n0 -> n1;\n  n1 [label=\"n1\", shape=box];\n"
                           "  n1 -> n2;\n  n2 [label=\"n2\", shape=box];\n  n0 -> n2 [style=dashed];\n}\n");
    EXPECT_EQ(wexctl({"tree", "graph", image, "--from", "1", "--depth", "0"}).out,
              head + "  n1 [label=\"n1\", shape=box];\n}\n");
    EXPECT_EQ(wexctl({"tree", "graph", write_par(make_named(2).add_child(0, 1).add_child(1, 0), "loop.par")})
                  .status,
              1);
    const std::string out = dir + "/out.par";
    std::remove(out.c_str());
    run = wexctl({"tree", "compile", dir + "/t.tree", "-o", out});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(wex_test::file_content(out), wex_test::file_content(image));

    // A text with errors, or one whose image the walks could not take,
    // leaves the old output in place and no file beside it.
    std::ofstream(dir + "/bad.tree") << "node 0\n  child 5\n  colour 1\n";
    std::ofstream(dir + "/loop.tree") << "node 0\n  child 1\nnode 1\n  child 0\n";
    run = wexctl({"tree", "compile", dir + "/bad.tree", "-o", out});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, dir + "/bad.tree:3:3: unknown field 'colour'\n" + dir +
                           "/bad.tree:2:3: child 5 is not a node of this image (it has 1)\n");
    run = wexctl({"tree", "compile", dir + "/loop.tree", "-o", out});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, dir + "/loop.tree:1:1: node 0: lies on a loop of non-link children\n");
    EXPECT_EQ(wex_test::file_content(out), wex_test::file_content(image));
    for (const auto &entry : std::filesystem::directory_iterator(dir))
        EXPECT_EQ(entry.path().filename().string().rfind("out.par.", 0), std::string::npos) << entry.path();
    EXPECT_EQ(wexctl({"tree", "compile", dir + "/t.tree"}).status, 2);
}

TEST(Wexctl, AFileShortenedWhileItIsComparedEndsTheToolWithOneLine)
{
    const std::string path = std::string(WEX_TEST_SANDBOX) + "/shrinking.cfg";
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::ofstream(path) << std::string(3 * page, 'a') << "\n";
    const wex_test::ChildResult child = wex_test::run_in_child([&] {
        const std::optional<wex_tools::InputText> text = wex_tools::read_text_input("wexctl", path, 1 << 20);
        if (!text || truncate(path.c_str(), 0) != 0)
            return;
        std::printf("%c", text->view()[2 * page]); // now past the end of the file
    });
    EXPECT_TRUE(child.exited) << child.signal;
    EXPECT_EQ(child.exit_status, 2);
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.err, "wexctl: " + path + ": changed size while it was read\n");
}

TEST(Wexctl, DaemonCommandsAgainstTheSimulator)
{
    wex_test::SimProcess sim("role ops Operators\nrule 1 permit show all\n");
    ASSERT_TRUE(sim.ready());
    const std::string dir = sim.runtime_dir();
    EXPECT_EQ(wexctl({"lock", "7"}, dir).out, "locked\n");
    ToolRun run = wexctl({"lock", "8"}, dir);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "wexctl: lock refused: WEX_STATUS_FAILURE (0x40540001); held by requester 7\n");
    EXPECT_EQ(wexctl({"lock", "--show"}, dir).out, "held by requester 7\n");
    EXPECT_EQ(wexctl({"unlock", "8", "--force"}, dir).out, "unlocked\n");
    EXPECT_EQ(wexctl({"lock", "--show"}, dir).out, "not held\n");
    run = wexctl({"role", "show", "ops"}, dir);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "\nRole: ops\n  Description: Operators\n  vsan policy: permit (default)\n"
                       "  ---------------------------------------------\n"
                       "  Rule    Type    Command-type      Feature\n"
                       "  ---------------------------------------------\n"
                       "    1.   permit      show                   *\n");
    EXPECT_EQ(wexctl({"role", "show", "nobody"}, dir).status, 1);
    run = wexctl({"config", "show"}, dir);
    EXPECT_NE(run.out.find("switch name:        switch\n"), std::string::npos) << run.out;
    EXPECT_NE(wexctl({"iftable"}, dir).out.find("Displaying Interface Table"), std::string::npos);
    run = wexctl({"iftable"}); // no wexd there
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "Could not communicate with wexd\nwexctl: iftable: WEX_ERRNO_STATUS(ENOENT) (0x80540002)\n"
              "Communication could not be established with the process\n");
}

// A wexd of the test's own on queue 37 of a runtime directory of its own;
// serving, it answers a tree-table read with a table whose last index lies
// far past its end; otherwise it never receives anything.
class FalseWexd
{
  public:
    explicit FalseWexd(bool serving) : dir_(mkdtemp(pattern_))
    {
        setenv("IPCQ_RUNTIME_DIR", dir_.c_str(), 1);
        q_ = ipcq_open(WEX_DEST_ADDRESS, WEXD_QUEUE);
        unsetenv("IPCQ_RUNTIME_DIR");
        if (serving)
            server_ = std::thread([this] {
                const ipcq_route_t route{WEX_OPC_TREE_TABLE_GET, IPCQ_ROUTE_BCP, answer_tree_table};
                ipcq_serve(q_, &route, 1, nullptr, nullptr, &stop_);
            });
    }
    ~FalseWexd()
    {
        stop_ = 1;
        if (server_.joinable())
            server_.join();
        ipcq_close(q_);
        std::filesystem::remove_all(dir_);
    }
    const std::string &dir() const { return dir_; }

  private:
    static void answer_tree_table(void *, const ipcq_request_info_t *, ipcq_response_t *response)
    {
        auto *table = static_cast<tree_table *>(std::calloc(1, sizeof(tree_table)));
        table->last_index = 1000000;
        response->payload = table;
        response->len = sizeof *table;
    }

    char pattern_[32] = "/tmp/wexctl-wexd-XXXXXX";
    std::string dir_;
    int q_ = -1;
    volatile sig_atomic_t stop_ = 0;
    std::thread server_;
};

TEST(Wexctl, AWexdThatLiesOrIsSilentGetsNoFurtherThanItsWord)
{
    ToolRun run = wexctl({"trees"}, FalseWexd(true).dir());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    run = wexctl({"config", "show", "--timeout", "1"}, FalseWexd(false).dir());
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "wexctl: config: no answer from wexd within 1 s\n"
                       "Process did not respond within the expected timeframe, please try again.\n");
}

} // namespace
