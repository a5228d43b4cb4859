// The remediation engine on two untrusted configuration texts, read through
// the sample grammars: the input is RUNNING, a NUL byte, then WANTED.
#include "harness.h"

#include "command_grammar.h"
#include "compiler.h"
#include "line_set_diff.h"
#include "main_tree.h"
#include "remediation.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

namespace
{

std::string read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

const wex_remediation::CommandGrammar &sample_grammar()
{
    static const std::optional<wex_shell::MainTree> tree = [] {
        std::vector<wex_grammar::Source> sources;
        for (const char *name : {"exec.tree", "zone.tree", "interface.tree"})
            sources.push_back({name, read_file(std::string(WEX_TREES_DIR) + "/" + name)});
        wex_grammar::Diagnostics diagnostics;
        const auto image = wex_grammar::compile(sources, diagnostics);
        std::string why;
        std::optional<wex_shell::MainTree> loaded;
        if (image)
            loaded = wex_shell::MainTree::from_image(image->bytes, why);
        if (!loaded)
            std::abort(); // the sample grammars always compile
        return loaded;
    }();
    static const wex_remediation::CommandGrammar grammar(*tree);
    return grammar;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto [running, wanted] = split_at_nul(data, size);
    for (const auto on_problem : {wex_remediation::OnProblem::refuse, wex_remediation::OnProblem::skip})
        wex_remediation::remediate(sample_grammar(), running, wanted, on_problem);
    using wex_remediation::ConfigText, wex_remediation::LastLine;
    wex_remediation::diff_json(wex_remediation::line_set_diff(ConfigText(running, LastLine::ignored),
                                                              ConfigText(wanted, LastLine::ignored)));
    return 0;
}
