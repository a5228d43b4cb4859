// Every request wexd-sim serves, handed straight to its handlers: the first
// byte picks the queue, the second the opcode among the queue's routes (or
// one it does not serve), the next four the message type, the rest is the
// payload.
#include "handlers.h"
#include "harness.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace
{

constexpr uint32_t kQueues[] = {WEXD_QUEUE, PARSE_TREE_QUEUE, ASCII_CFG_SERVER_QUEUE, WEX_NOTIFY_QUEUE};

// One simulator's state for the whole run: requests build on each other,
// as they do in a long-running wexd-sim.
wexd_sim::SimState &state()
{
    static auto shared = std::make_unique<wexd_sim::SimState>();
    return *shared;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 6)
        return 0;
    wexd_sim::ServedQueue queue{&state(), -1, kQueues[data[0] % std::size(kQueues)]};
    const auto routes = wexd_sim::routes_of(queue.number);
    const std::size_t pick = data[1] % (routes.size() + 1);
    ipcq_request_info_t request{};
    std::memcpy(&request.msg_type, data + 2, sizeof request.msg_type);
    // The payload in a block of its own size, so a read past it is caught.
    std::unique_ptr<uint8_t[]> payload(size > 6 ? new uint8_t[size - 6] : nullptr);
    if (payload)
        std::memcpy(payload.get(), data + 6, size - 6);
    request.payload = payload.get();
    request.len = static_cast<uint32_t>(size - 6);
    request.opcode = pick < routes.size() ? routes[pick].opcode : 65535;
    ipcq_response_t response{};
    if (pick < routes.size())
        routes[pick].handler(&queue, &request, &response);
    else
        wexd_sim::on_unknown(&queue, &request, &response);
    std::free(response.payload);
    return 0;
}
