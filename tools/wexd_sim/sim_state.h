// What the simulated wexd and registration service remember between
// requests. Every handler runs under the one lock.
#ifndef WEXD_SIM_SIM_STATE_H
#define WEXD_SIM_SIM_STATE_H

#include "sim_replies.h"

#include <wex/wexd_client.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace wexd_sim
{

struct Bounds {
    int32_t lower;
    int32_t upper;
};

struct SimState {
    std::mutex lock;
    intf_table interfaces{};
    tree_table trees{};
    wexd_wex_config config{};
    std::string dynamic_parfile = "/tarn/etc/par/dynamic_1.par"; // the current main tree's path
    std::string par_dir; // where the trees and main trees are; empty: no main tree is made
    bool cli_locked = false;
    uint32_t cli_holder = 0;
    std::vector<wexd_perm_group_entry> roles;
    std::vector<std::string> locales;
    std::map<std::string, std::vector<std::string>> users; // each user's roles
    std::map<std::string, uint32_t> feature_queues;        // module -> queue it registered from
    std::map<std::string, Bounds> subtypes;
    std::map<uint32_t, wex_tools::SimSession> sessions; // by process id
    uint32_t feature_privilege = 1;

    SimState()
    {
        interfaces.last_index = -1;
        trees.last_index = -1;
        robust_strncpy(config.switchname, "switch", sizeof config.switchname);
        config.max_sessions = 32;
        config.term_width = 80;
        config.term_length = 24;
    }
};

} // namespace wexd_sim

#endif
