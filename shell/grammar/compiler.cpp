#include "compiler.h"

#include "command_layer.h"
#include "image_check.h"
#include "tree_builder.h"

#include <deque>

namespace wex_grammar
{
namespace
{

std::optional<CompiledImage> parse(const std::vector<Source> &sources, Diagnostics &diagnostics)
{
    for (const Source &source : sources) {
        if (!is_node_layer(source.text))
            continue;
        if (sources.size() == 1)
            return read_node_layer(source.text, source.name, diagnostics);
        diagnostics.error(source.name, Position{},
                          "a node-layer text describes a whole image and is compiled alone");
        return std::nullopt;
    }
    // Each command is built as soon as it is read, so a large grammar is
    // never held whole as declarations.
    std::deque<CommandFile> files;
    TreeBuilder builder(diagnostics);
    for (const Source &source : sources) {
        files.push_back(CommandFile{source.name, {}, {}});
        read_command_layer(
            source.text, files.back(), diagnostics,
            [&](const CommandFile &file, CommandDecl &&command) { builder.add(file, std::move(command)); });
    }
    return builder.finish();
}

// What the walks need, from the first node; each problem where its node
// was written.
bool structure_holds(const CompiledImage &image, Diagnostics &diagnostics)
{
    const ImageCheck check = check_image(shape_of(image.bytes), image.bytes.size(), 0);
    for (const Problem &problem : check.problems) {
        const Origin origin = problem.node < 0 ? image.node_at.front() : image.node_at[problem.node];
        diagnostics.error(origin.file, origin.at, problem.line());
    }
    return check.problems.empty();
}

} // namespace

std::optional<CompiledImage> compile(const std::vector<Source> &sources, Diagnostics &diagnostics)
{
    std::optional<CompiledImage> image = parse(sources, diagnostics);
    if (image && image->bytes.empty())
        diagnostics.error(sources.front().name, Position{}, "the text describes no node");
    if (!image || image->bytes.empty() || !structure_holds(*image, diagnostics))
        return std::nullopt;
    return image;
}

} // namespace wex_grammar
