#include "sim_setup.h"

#include "role_config.h"

#include "ipcq.h"

#include <cerrno>
#include <sstream>

namespace wexd_sim
{

bool load_roles(std::string_view text, SimState &state, std::string &error)
{
    std::istringstream lines{std::string(text)};
    RoleConfig config;
    if (!read_role_config(lines, config, error))
        return false;
    const std::lock_guard guard(state.lock);
    state.roles = std::move(config.roles);
    state.locales = std::move(config.locales);
    state.users = std::move(config.users);
    return true;
}

std::optional<uint32_t> open_served_queues(SimState &state, std::vector<ServedQueue> &served)
{
    for (const uint32_t number : kServedQueues) {
        const int q = ipcq_open(WEX_DEST_ADDRESS, number);
        if (q < 0) {
            const int error = errno;
            for (const ServedQueue &open : served)
                ipcq_close(open.q);
            served.clear();
            errno = error;
            return number;
        }
        served.push_back({&state, q, number});
    }
    return std::nullopt;
}

} // namespace wexd_sim
