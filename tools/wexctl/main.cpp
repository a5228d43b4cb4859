// wexctl: the files and texts libwex handles, and the daemon requests of
// the shell, from the command line. Exit status: 0 fine (or the same), 1 a
// problem found (or different, or refused), 2 trouble (usage, files, wexd,
// writing the output).
#include "config_commands.h"
#include "daemon_commands.h"
#include "input_file.h"
#include "image_check.h"
#include "program.h"
#include "tree_commands.h"

#include <wex/parse_tree.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace
{

using Args = std::vector<std::string>;

constexpr const char *kProgram = "wexctl";
constexpr std::size_t kMaxImageBytes = wex_grammar::kMaxImageNodes * WEX_NODE_SIZE;

constexpr const char *kUsage =
    "usage: wexctl COMMAND [ARGS]\n"
    "  par check FILE [--node N]   validate a .par image (network order)\n"
    "  par dump FILE [--node N]    validate, then print the tree from node N (default 0)\n"
    "  diff OLD NEW                compare two configuration files (exit 0 same, 1 different)\n"
    "  tree compile SRC -o OUT     compile a grammar text to a .par image\n"
    "  tree decompile IN [--nodes] write a .par image as grammar text\n"
    "  iftable                     wexd's interface table\n"
    "  trees                       wexd's tree table\n"
    "  lock REQUESTER | --show     take the CLI lock, or show who holds it\n"
    "  unlock REQUESTER [--force]  give it back (--force: whoever holds it)\n"
    "  role show [NAME]            one role, or every role\n"
    "  config show                 wexd's settings\n"
    "  config diff RUNNING WANTED [--json]     their line-set difference\n"
    "  config remediate RUNNING WANTED --tree MAIN.par   the commands from one to the other\n"
    "FILE may be - for standard input. Daemon commands use the transport under $IPCQ_RUNTIME_DIR\n"
    "and wait --timeout SECONDS for wexd (default 3). Exit status: 0 fine, 1 a problem found,\n"
    "different or refused, 2 trouble. 'wexctl COMMAND --help' for one command; --version.\n";

constexpr const char *kParUsage =
    "usage: wexctl par check FILE [--node N]\n"
    "       wexctl par dump FILE [--node N]\n"
    "check validates the image from node N: whole nodes, counts, child indexes, one non-link\n"
    "parent per node, depth and link loops; exit 0 valid, 1 problems (each named by node).\n"
    "dump validates it, converts it to host order and prints the tree from node N.\n";

constexpr const char *kDiffUsage =
    "usage: wexctl diff OLD NEW\n"
    "Prints the lines only in OLD (-) and only in NEW (+) under their parents; exit 0 when the\n"
    "two hold the same lines, 1 otherwise, 2 when a file is not a configuration text. A last\n"
    "line without a line end takes no part, with a warning.\n";

int usage_error(const std::string &why)
{
    return wex_tools::usage_error("wexctl", why, kUsage);
}

// FILE [--node N]
bool par_arguments(const Args &args, std::string &path, uint32_t &start)
{
    if (args.size() != 1 && args.size() != 3)
        return false;
    path = args[0];
    if (args.size() == 1)
        return true;
    const std::optional<uint64_t> node = wex_tools::parse_number(args[2], wex_grammar::kMaxImageNodes - 1);
    start = node ? static_cast<uint32_t>(*node) : 0;
    return args[1] == "--node" && node;
}

int report_check(const std::string &path, const wex_grammar::ImageCheck &check, uint32_t start, bool dump)
{
    for (const wex_grammar::Problem &problem : check.problems)
        std::fprintf(dump ? stderr : stdout, "%s: %s\n", path.c_str(), problem.line().c_str());
    if (!dump && check.problems.empty())
        std::printf("%s: %u nodes, valid from node %u\n", path.c_str(), check.nodes, start);
    return check.problems.empty() ? 0 : 1;
}

// The check needs a tenth of each record, so the image streams through one
// small block and is never held whole.
int par_check(const std::string &path, uint32_t start)
{
    constexpr std::size_t kBlockBytes = 128 * WEX_NODE_SIZE;
    wex_grammar::TreeShape shape;
    const std::optional<std::size_t> size =
        wex_tools::read_input_in_blocks(kProgram, path, kMaxImageBytes, kBlockBytes,
                                        [&](std::span<const uint8_t> block) { shape.add_records(block); });
    if (!size)
        return 2;
    return report_check(path, wex_grammar::check_image(shape, *size, start), start, false);
}

int par_dump(const std::string &path, uint32_t start)
{
    std::optional<std::string> bytes = wex_tools::read_input(kProgram, path, kMaxImageBytes);
    if (!bytes)
        return 2;
    const std::span<uint8_t> image(reinterpret_cast<uint8_t *>(bytes->data()), bytes->size());
    wex_grammar::ImageCheck check =
        wex_grammar::check_image(wex_grammar::shape_of(image), image.size(), start);
    if (check.walkable)
        wex_grammar::convert_for_walks(image, start, check);
    const int status = report_check(path, check, start, true);
    // The dump walks only the non-link tree, so link problems do not stop it.
    if (check.walkable)
        display_array_tree(image.data(), start, 0);
    return status;
}

int par_command(const std::string &action, const Args &args)
{
    if (wex_tools::wants_help(args)) {
        std::fputs(kParUsage, stdout);
        return 0;
    }
    std::string path;
    uint32_t start = 0;
    if (!par_arguments(args, path, start))
        return usage_error("par " + action + " needs FILE [--node N], N below " +
                           std::to_string(wex_grammar::kMaxImageNodes));
    return action == "check" ? par_check(path, start) : par_dump(path, start);
}

int diff_command(const Args &args)
{
    if (wex_tools::wants_help(args)) {
        std::fputs(kDiffUsage, stdout);
        return 0;
    }
    if (args.size() != 2)
        return usage_error("diff needs OLD and NEW");
    return wexctl::diff_configs(args);
}

int run(const Args &all)
{
    if (all.empty())
        return usage_error("a command is needed");
    if (all[0] == "--help" || all[0] == "-h") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (wex_tools::print_version_if_asked(kProgram, {all[0]}))
        return 0;
    const Args rest(all.begin() + 1, all.end());
    if (all[0] == "par" && !rest.empty() && (rest[0] == "check" || rest[0] == "dump"))
        return par_command(rest[0], Args(rest.begin() + 1, rest.end()));
    if (all[0] == "par") {
        if (wex_tools::wants_help(rest)) {
            std::fputs(kParUsage, stdout);
            return 0;
        }
        return usage_error("par needs check or dump");
    }
    if (all[0] == "diff")
        return diff_command(rest);
    if (all[0] == "tree")
        return wexctl::run_tree_command(rest);
    if (all[0] == "config")
        if (const std::optional<int> status = wexctl::run_config_command(rest))
            return *status;
    if (const std::optional<int> status = wexctl::run_daemon_command(all[0], rest))
        return *status;
    return usage_error("unknown command '" + all[0] + "'");
}

} // namespace

int main(int argc, char **argv)
{
    return wex_tools::finish_output(kProgram, run(Args(argv + 1, argv + argc)));
}
