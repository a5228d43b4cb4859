#include "tree_commands.h"

#include "input_file.h"
#include "node_layer.h"
#include "output_file.h"
#include "compiler.h"
#include "image_check.h"

#include <wex/parse_tree.h>

#include <cstdio>
#include <optional>
#include <span>

namespace wexctl
{
namespace
{

using Args = std::vector<std::string>;

constexpr const char *kProgram = "wexctl";
// A grammar text of this size would describe far more than an image holds.
constexpr std::size_t kMaxSourceBytes = 256u << 20;

constexpr const char *kTreeUsage =
    "usage: wexctl tree compile SRC... -o OUT.par\n"
    "       wexctl tree decompile IN.par [--nodes]\n"
    "compile turns grammar texts (command declarations, or one text of node stanzas) into a .par\n"
    "image in network order, written whole or not at all; every error is named FILE:LINE:COLUMN.\n"
    "decompile writes an image as grammar text on\n"
    "standard output, one stanza per node (--nodes). Exit status: 0 done, 2 errors or trouble.\n";

int tree_usage_error(const std::string &why)
{
    std::fprintf(stderr, "wexctl: %s\n%s", why.c_str(), kTreeUsage);
    return 2;
}

int compile(const Args &sources, const std::string &output)
{
    std::vector<wex_grammar::Source> texts;
    for (const std::string &path : sources) {
        std::optional<std::string> text = wex_tools::read_input(kProgram, path, kMaxSourceBytes);
        if (!text)
            return 2;
        texts.push_back({path, std::move(*text)});
    }
    wex_grammar::Diagnostics diagnostics;
    const std::optional<wex_grammar::CompiledImage> image = wex_grammar::compile(texts, diagnostics);
    if (!image) {
        std::fputs(diagnostics.report().c_str(), stderr);
        return 2;
    }
    return wex_tools::write_file_whole(kProgram, output, image->bytes) ? 0 : 2;
}

int decompile(const std::string &path)
{
    const std::optional<std::string> bytes =
        wex_tools::read_input(kProgram, path, wex_grammar::kMaxImageNodes * WEX_NODE_SIZE);
    if (!bytes)
        return 2;
    if (bytes->empty() || bytes->size() % WEX_NODE_SIZE != 0) {
        std::fprintf(stderr, "wexctl: %s: %zu bytes is not a whole number of %u-byte nodes\n", path.c_str(),
                     bytes->size(), WEX_NODE_SIZE);
        return 2;
    }
    const std::span image(reinterpret_cast<const uint8_t *>(bytes->data()), bytes->size());
    std::fputs(wex_grammar::write_node_layer(image).c_str(), stdout);
    return 0;
}

bool wants_help(const Args &args)
{
    for (const std::string &arg : args) {
        if (arg == "--help" || arg == "-h")
            return true;
    }
    return false;
}

} // namespace

int run_tree_command(const Args &args)
{
    if (args.empty() || wants_help(args)) {
        std::fputs(kTreeUsage, args.empty() ? stderr : stdout);
        return args.empty() ? 2 : 0;
    }
    if (args[0] == "compile") {
        if (args.size() < 4 || args[args.size() - 2] != "-o")
            return tree_usage_error("tree compile needs SRC... -o OUT.par");
        return compile(Args(args.begin() + 1, args.end() - 2), args.back());
    }
    if (args[0] == "decompile") {
        if (args.size() < 2 || args.size() > 3 || (args.size() == 3 && args[2] != "--nodes"))
            return tree_usage_error("tree decompile needs IN.par [--nodes]");
        return decompile(args[1]);
    }
    return tree_usage_error("tree needs compile or decompile");
}

} // namespace wexctl
