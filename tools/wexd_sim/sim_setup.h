// Setting up a simulated wexd, whether wexd-sim's own process or the
// recording wexd of a feature's tests: the roles it serves and its queues.
#ifndef WEXD_SIM_SIM_SETUP_H
#define WEXD_SIM_SIM_SETUP_H

#include "handlers.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wexd_sim
{

// Serves the roles, locales and users of a roles file's text in place of
// those served before; on a line it cannot use, stores "line N: why" in
// error, keeps what is served and returns false.
bool load_roles(std::string_view text, SimState &state, std::string &error);

// Opens every queue the simulated wexd serves, or none: on a failure the
// queues already opened are closed again, and the one that failed is
// returned with errno set.
std::optional<uint32_t> open_served_queues(SimState &state, std::vector<ServedQueue> &served);

} // namespace wexd_sim

#endif
