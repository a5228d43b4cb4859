#include "tree_commands.h"

#include "input_file.h"
#include "node_layer.h"
#include "output_file.h"
#include "program.h"
#include "command_writer.h"
#include "compiler.h"
#include "graph.h"
#include "image_merge.h"
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
    "       wexctl tree graph IN.par [--from NODE] [--depth N]\n"
    "       wexctl tree merge IN.par... -o OUT.par\n"
    "compile turns grammar texts (command declarations, or one text of node stanzas) into a .par\n"
    "image in network order, written whole or not at all; every error is named FILE:LINE:COLUMN.\n"
    "decompile writes an image as command declarations on standard output when they compile back\n"
    "to the same bytes, else (and with --nodes) as one stanza per node. graph writes the tree from\n"
    "NODE (default 0), N levels deep (default all), as Graphviz DOT: keywords boxed, parameters\n"
    "round, submodes bold, the last words of commands doubled, links dashed. merge makes one tree\n"
    "of several images, as wexd makes the main tree: words at the same place are one node, whose\n"
    "fields must agree. Exit status: 0 done, 1 an invalid image, 2 errors or trouble.\n";

int tree_usage_error(const std::string &why)
{
    return wex_tools::usage_error("wexctl", why, kTreeUsage);
}

// The image a compile or merge made, written whole; or its errors.
int write_or_report(const std::vector<uint8_t> *image, const wex_grammar::Diagnostics &diagnostics,
                    const std::string &output)
{
    if (!image) {
        std::fputs(diagnostics.report().c_str(), stderr);
        return 2;
    }
    return wex_tools::write_file_whole(kProgram, output, *image) ? 0 : 2;
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
    return write_or_report(image ? &image->bytes : nullptr, diagnostics, output);
}

// A whole image as a .par file holds it, or nothing (said why).
std::optional<std::string> read_image(const std::string &path)
{
    std::optional<std::string> bytes =
        wex_tools::read_input(kProgram, path, wex_grammar::kMaxImageNodes * WEX_NODE_SIZE);
    if (bytes && (bytes->empty() || bytes->size() % WEX_NODE_SIZE != 0)) {
        std::fprintf(stderr, "wexctl: %s: %zu bytes is not a whole number of %u-byte nodes\n", path.c_str(),
                     bytes->size(), WEX_NODE_SIZE);
        return std::nullopt;
    }
    return bytes;
}

std::span<const uint8_t> bytes_of(const std::string &image)
{
    return {reinterpret_cast<const uint8_t *>(image.data()), image.size()};
}

// Whether the image holds what the walks need from node from; each problem
// is said on standard error.
bool walkable(const std::string &path, const std::string &image, uint32_t from)
{
    const wex_grammar::ImageCheck check =
        wex_grammar::check_image(wex_grammar::shape_of(bytes_of(image)), image.size(), from);
    for (const wex_grammar::Problem &problem : check.problems)
        std::fprintf(stderr, "wexctl: %s: %s\n", path.c_str(), problem.line().c_str());
    return check.problems.empty();
}

int graph(const std::string &path, uint32_t from, uint32_t depth)
{
    const std::optional<std::string> image = read_image(path);
    if (!image)
        return 2;
    if (!walkable(path, *image, from))
        return 1;
    std::fputs(wex_grammar::write_graph(bytes_of(*image), from, depth).c_str(), stdout);
    return 0;
}

// IN.par [--from NODE] [--depth N]
int graph_command(const Args &args)
{
    uint64_t from = 0, depth = wex_grammar::kMaxImageNodes;
    for (std::size_t i = 2; i < args.size(); i += 2) {
        const bool known = args[i] == "--from" || args[i] == "--depth";
        const std::optional<uint64_t> value =
            known && i + 1 < args.size() ? wex_tools::parse_number(args[i + 1], wex_grammar::kMaxImageNodes)
                                         : std::nullopt;
        if (!value)
            return tree_usage_error("tree graph needs IN.par [--from NODE] [--depth N]");
        (args[i] == "--from" ? from : depth) = *value;
    }
    if (args.size() < 2)
        return tree_usage_error("tree graph needs IN.par [--from NODE] [--depth N]");
    return graph(args[1], static_cast<uint32_t>(from), static_cast<uint32_t>(depth));
}

int merge(const Args &inputs, const std::string &output)
{
    std::vector<std::string> images;
    for (const std::string &path : inputs) {
        std::optional<std::string> image = read_image(path);
        if (!image)
            return 2;
        if (!walkable(path, *image, 0))
            return 1;
        images.push_back(std::move(*image));
    }
    std::vector<wex_grammar::NamedImage> named;
    for (std::size_t i = 0; i < images.size(); ++i)
        named.push_back({inputs[i], bytes_of(images[i])});
    wex_grammar::Diagnostics diagnostics;
    const std::optional<std::vector<uint8_t>> merged = wex_grammar::merge_images(named, diagnostics);
    return write_or_report(merged ? &*merged : nullptr, diagnostics, output);
}

// The command layer where the image can be written in it, else the node
// layer; --nodes asks for the node layer.
int decompile(const std::string &path, bool nodes)
{
    const std::optional<std::string> image = read_image(path);
    if (!image)
        return 2;
    const std::optional<std::string> commands =
        nodes ? std::nullopt : wex_grammar::write_command_layer(bytes_of(*image));
    std::fputs(commands ? commands->c_str() : wex_grammar::write_node_layer(bytes_of(*image)).c_str(),
               stdout);
    return 0;
}

} // namespace

int run_tree_command(const Args &args)
{
    if (args.empty() || wex_tools::wants_help(args)) {
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
        return decompile(args[1], args.size() == 3);
    }
    if (args[0] == "graph")
        return graph_command(args);
    if (args[0] == "merge") {
        if (args.size() < 4 || args[args.size() - 2] != "-o")
            return tree_usage_error("tree merge needs IN.par... -o OUT.par");
        return merge(Args(args.begin() + 1, args.end() - 2), args.back());
    }
    return tree_usage_error("tree needs compile, decompile, graph or merge");
}

} // namespace wexctl
