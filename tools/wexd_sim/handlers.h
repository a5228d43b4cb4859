// The simulator's answer to every opcode the library sends, by queue.
#ifndef WEXD_SIM_HANDLERS_H
#define WEXD_SIM_HANDLERS_H

#include "sim_state.h"

#include "ipcq_serve.h"

#include <span>

namespace wexd_sim
{

// One served queue: the transport queue it was opened as and its number.
struct ServedQueue {
    SimState *state;
    int q;
    uint32_t number;
};

// The queues the simulated wexd serves: its own, parse-tree registration,
// the configuration server and notifications.
inline constexpr uint32_t kServedQueues[] = {WEXD_QUEUE, PARSE_TREE_QUEUE, ASCII_CFG_SERVER_QUEUE,
                                             WEX_NOTIFY_QUEUE};

// The routes of a queue (37, 296, 76 or 0); empty for any other.
std::span<const ipcq_route_t> routes_of(uint32_t queue);

// What answers a request whose opcode the queue does not serve.
void on_unknown(void *context, const ipcq_request_info_t *request, ipcq_response_t *response);

} // namespace wexd_sim

#endif
