#include "sample_tree.h"

#include "compiler.h"
#include "support/samples.h"

#include <fstream>
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
        const std::string path = std::string(WEX_TEST_SANDBOX) + "/commands.par";
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char *>(image->bytes.data()),
                   static_cast<std::streamsize>(image->bytes.size()));
        std::string why;
        return wex_shell::MainTree::load(path, why);
    }();
    return *tree;
}

} // namespace wex_test
