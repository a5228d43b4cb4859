#include "sample_tree.h"

#include "compiler.h"
#include "support/samples.h"

#include <optional>

namespace wex_test
{

const wex_shell::MainTree &sample_tree()
{
    static const std::optional<wex_shell::MainTree> tree = [] {
        std::vector<wex_grammar::Source> sources;
        for (const char *name : {"exec.tree", "zone.tree", "interface.tree"})
            sources.push_back({name, sample_grammar(name)});
        wex_grammar::Diagnostics diagnostics;
        const auto image = wex_grammar::compile(sources, diagnostics);
        std::string why;
        return wex_shell::MainTree::from_image(image->bytes, why);
    }();
    return *tree;
}

} // namespace wex_test
