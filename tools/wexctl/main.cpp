// wexctl: the files and texts libwex handles, and the daemon requests of
// the shell, from the command line. Exit status: 0 fine (or the same), 1 a
// problem found (or different, or refused), 2 trouble (usage, files, wexd).
#include "daemon_commands.h"
#include "par_image.h"

#include <wex/output.h>
#include <wex/parse_tree.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace
{

using Args = std::vector<std::string>;

constexpr const char *kUsage =
    "usage: wexctl COMMAND [ARGS]\n"
    "  par check FILE [--node N]   validate a .par image (network order)\n"
    "  par dump FILE [--node N]    validate, then print the tree from node N (default 0)\n"
    "  diff OLD NEW                compare two configuration files (exit 0 same, 1 different)\n"
    "  iftable                     wexd's interface table\n"
    "  trees                       wexd's tree table\n"
    "  lock [REQUESTER]            take the CLI lock\n"
    "  unlock [REQUESTER] [--force]  give it back (--force: whoever holds it)\n"
    "  role show [NAME]            one role, or every role\n"
    "  config show                 wexd's settings\n"
    "Daemon commands use the transport under $IPCQ_RUNTIME_DIR. 'wexctl COMMAND --help' for one command.\n";

int usage_error(const std::string &why)
{
    std::fprintf(stderr, "wexctl: %s\n%s", why.c_str(), kUsage);
    return 2;
}

bool wants_help(const Args &args)
{
    for (const std::string &arg : args) {
        if (arg == "--help" || arg == "-h")
            return true;
    }
    return false;
}

std::optional<std::string> read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "wexctl: cannot read %s: %s\n", path.c_str(), std::strerror(errno));
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// FILE [--node N]
bool par_arguments(const Args &args, std::string &path, uint32_t &start)
{
    if (args.empty())
        return false;
    path = args[0];
    start = 0;
    if (args.size() == 1)
        return true;
    if (args.size() != 3 || args[1] != "--node")
        return false;
    char *end = nullptr;
    const unsigned long node = std::strtoul(args[2].c_str(), &end, 10);
    start = static_cast<uint32_t>(node);
    return *end == '\0' && !args[2].empty() && node <= 0xFFFF;
}

int par_command(const Args &args, bool dump)
{
    if (wants_help(args)) {
        std::printf(
            dump ? "usage: wexctl par dump FILE [--node N]\nValidates the image, converts it to host order "
                   "and prints the tree from node N.\n"
                 : "usage: wexctl par check FILE [--node N]\nValidates the image from node N: whole nodes, "
                   "counts, child indexes, one non-link parent per node, depth and link loops.\n");
        return 0;
    }
    std::string path;
    uint32_t start = 0;
    if (!par_arguments(args, path, start))
        return usage_error(std::string("par ") + (dump ? "dump" : "check") + " needs FILE [--node N]");
    const std::optional<std::string> text = read_file(path);
    if (!text)
        return 2;
    std::vector<uint8_t> image(text->begin(), text->end());
    const wexctl::ImageCheck check = wexctl::check_image(image, start);
    for (const std::string &problem : check.problems)
        std::fprintf(dump ? stderr : stdout, "%s: %s\n", path.c_str(), problem.c_str());
    if (!dump) {
        if (check.problems.empty())
            std::printf("%s: %u nodes, valid from node %u\n", path.c_str(), check.nodes, start);
        return check.problems.empty() ? 0 : 1;
    }
    // The dump walks only the non-link tree, so link problems do not stop it.
    if (!check.walkable)
        return 1;
    ntoh_array_tree(image.data(), start, 0);
    display_array_tree(image.data(), start, 0);
    std::fflush(stdout);
    return check.problems.empty() ? 0 : 1;
}

int diff_command(const Args &args)
{
    if (wants_help(args)) {
        std::printf(
            "usage: wexctl diff OLD NEW\nPrints the lines only in OLD (-) and only in NEW (+) under their "
            "parents; exit 0 when the two hold the same lines, 1 otherwise.\n");
        return 0;
    }
    if (args.size() != 2)
        return usage_error("diff needs OLD and NEW");
    const std::optional<std::string> old_text = read_file(args[0]), new_text = read_file(args[1]);
    if (!old_text || !new_text)
        return 2;
    wex_diff(old_text->c_str(), new_text->c_str());
    std::fflush(stdout);
    return wex_is_diff_same(old_text->c_str(), new_text->c_str()) ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    const Args all(argv + 1, argv + argc);
    if (all.empty())
        return usage_error("a command is needed");
    if (all[0] == "--help" || all[0] == "-h") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const Args rest(all.begin() + 1, all.end());
    if (all[0] == "par" && !rest.empty() && (rest[0] == "check" || rest[0] == "dump"))
        return par_command(Args(rest.begin() + 1, rest.end()), rest[0] == "dump");
    if (all[0] == "diff")
        return diff_command(rest);
    if (const std::optional<int> status = wexctl::run_daemon_command(all[0], rest))
        return *status;
    return usage_error("unknown command '" + all[0] + "'");
}
