#include "main_tree.h"

#include "field_text.h"
#include "image_check.h"
#include "image_merge.h"
#include "node_record.h"
#include "output_file.h"
#include "param_types.h"

#include <wex/parse_tree.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <iterator>

namespace wexd_sim
{
namespace
{

constexpr std::size_t kMaxImageBytes = wex_grammar::kMaxImageNodes * WEX_NODE_SIZE;

struct LoadedTree {
    std::string name;
    std::vector<uint8_t> bytes;
};

// The image of file name in the par directory, checked; or why not.
std::optional<LoadedTree> load(const std::string &dir, const std::string &name, std::string &why)
{
    std::ifstream in(dir + "/" + name, std::ios::binary);
    if (!in) {
        why = "tree " + name + ": cannot be read";
        return std::nullopt;
    }
    LoadedTree tree{name, {}};
    tree.bytes.assign(std::istreambuf_iterator<char>(in), {});
    if (tree.bytes.size() > kMaxImageBytes) {
        why = "tree " + name + ": larger than an image can be";
        return std::nullopt;
    }
    const wex_grammar::ImageCheck check =
        wex_grammar::check_image(wex_grammar::shape_of(tree.bytes), tree.bytes.size(), 0);
    if (!check.problems.empty()) {
        why = "tree " + name + ": " + check.problems.front().line();
        return std::nullopt;
    }
    return tree;
}

// Each parameter of a subtype whose placeholder has registered bounds gets
// them as its range. The merged image is made from its nodes' fields, so
// reading and writing a node's fields gives back its other bytes too.
void apply_dynamic_ranges(std::vector<uint8_t> &image, const std::map<std::string, Bounds> &ranges)
{
    for (std::size_t at = 0; at + WEX_NODE_SIZE <= image.size(); at += WEX_NODE_SIZE) {
        wex_grammar::NodeFields node = wex_grammar::decode_record(&image[at]);
        bool bounded = false;
        for (wex_grammar::ParamFields &param : node.params) {
            const wex_grammar::Subtype *subtype =
                param.subtype == 0
                    ? nullptr
                    : wex_grammar::subtype_by_code(static_cast<int32_t>(param.subtype), param.type);
            const auto range =
                subtype ? ranges.find("<" + std::string(subtype->placeholder) + ">") : ranges.end();
            if (range == ranges.end())
                continue;
            param.min = static_cast<uint32_t>(range->second.lower);
            param.max = static_cast<uint32_t>(range->second.upper);
            bounded = true;
        }
        if (bounded) {
            const wex_grammar::Record record = wex_grammar::encode_record(node);
            std::copy(record.begin(), record.end(), image.begin() + static_cast<std::ptrdiff_t>(at));
        }
    }
}

uint32_t number_in(const char *name)
{
    uint32_t number = 0;
    for (const char *p = name + sizeof "main_tree" - 1; *p >= '0' && *p <= '9'; ++p)
        number = number * 10 + static_cast<uint32_t>(*p - '0');
    return number;
}

} // namespace

GeneratedTree generate_main_tree(const SimState &state)
{
    std::vector<std::string> names{"exec.par"};
    for (int32_t i = 0; i <= state.trees.last_index && i < WEX_TREE_TABLE_CAPACITY; ++i) {
        const tree_table_entry &entry = state.trees.entries[i];
        if (entry.par_file_name[0] == '\0') // a module's tree, not a command file
            names.push_back(wex_tools::field_text(entry.module_id) + ".par");
    }
    std::vector<LoadedTree> trees;
    std::string why;
    for (const std::string &name : names) {
        std::optional<LoadedTree> tree = load(state.par_dir, name, why);
        if (!tree)
            return {std::nullopt, why};
        trees.push_back(std::move(*tree));
    }
    std::vector<wex_grammar::NamedImage> images;
    for (const LoadedTree &tree : trees)
        images.push_back({tree.name, tree.bytes});
    wex_grammar::Diagnostics diagnostics;
    std::optional<std::vector<uint8_t>> merged = wex_grammar::merge_images(images, diagnostics);
    if (!merged) {
        const std::string report = diagnostics.report();
        return {std::nullopt, report.substr(0, report.find('\n'))};
    }
    apply_dynamic_ranges(*merged, state.subtypes);
    // The file is complete under its new name before it becomes current.
    const std::string name = wexd_get_new_dynamic_parfile_name();
    if (!wex_tools::write_file_whole("wexd-sim", state.par_dir + "/" + name, *merged))
        return {std::nullopt, name + " cannot be written"};
    wexd_update_current_dynamic_parfile_name();
    return {number_in(name.c_str()), name + " from " + std::to_string(trees.size()) + " trees, " +
                                         std::to_string(merged->size() / WEX_NODE_SIZE) + " nodes"};
}

} // namespace wexd_sim
