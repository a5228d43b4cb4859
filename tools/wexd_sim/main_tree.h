// The main parse tree as wexd makes it: the base exec grammar and the tree
// of every registered module merged into the next dynamic main-tree file.
#ifndef WEXD_SIM_MAIN_TREE_H
#define WEXD_SIM_MAIN_TREE_H

#include "sim_state.h"

#include <cstdint>
#include <optional>
#include <string>

namespace wexd_sim
{

struct GeneratedTree {
    std::optional<uint32_t> number; // of main_tree<N>.par; nothing when refused
    std::string report;             // what was merged, or why it was refused
};

// Reads <par dir>/exec.par and <par dir>/<module>.par of each registered
// module, refuses any that fails the image check, merges them, bounds the
// subtype parameters with the registered dynamic ranges, and writes the
// result in full under the next dynamic name before making it current.
GeneratedTree generate_main_tree(const SimState &state);

} // namespace wexd_sim

#endif
