#include "ipcq_serve.h"

#include "bcp.h"

#include <cerrno>
#include <cstdlib>

namespace
{

const ipcq_route_t *find_route(const ipcq_route_t *routes, size_t count, uint32_t opcode)
{
    for (size_t i = 0; i < count; ++i) {
        if (routes[i].opcode == opcode)
            return &routes[i];
    }
    return nullptr;
}

ipcq_request_info_t raw_request(const ipcq_msg_handle_t *msg)
{
    return ipcq_request_info_t{
        msg, ipcq_opcode_get(msg),  ipcq_sender_address_get(msg), ipcq_sender_queue_get(msg),
        0,   ipcq_payload_get(msg), ipcq_payload_size(msg)};
}

// Runs the handler and sends its answer, framed as the request was.
void answer(int q, const ipcq_msg_handle_t *msg, ipcq_handler_t handler, int framing, void *context)
{
    ipcq_request_info_t request = raw_request(msg);
    if (framing == IPCQ_ROUTE_BCP &&
        bcp_parse_request(msg, &request.msg_type, &request.payload, &request.len) != 0)
        return;
    ipcq_response_t response{};
    handler(context, &request, &response);
    if (!response.no_reply) {
        // A sender that stopped waiting is its own affair; serving goes on.
        if (framing == IPCQ_ROUTE_BCP)
            bcp_reply(q, msg, response.status, response.payload, response.len);
        else
            ipcq_reply(q, msg, response.payload, response.len);
    }
    std::free(response.payload);
}

// Failures of one message (a sender that hung up or sent garbage, a signal,
// an idle second) do not end the loop; a queue that is gone does.
bool queue_failed(int error)
{
    return error == EBADF || error == EINVAL;
}

} // namespace

extern "C" int ipcq_serve(int q, const ipcq_route_t *routes, size_t route_count, ipcq_handler_t unknown,
                          void *context, volatile sig_atomic_t *stop)
{
    ipcq_recv_options_t options{};
    options.version = 1;
    options.timeout_s = 1;
    while (!(stop && *stop)) {
        ipcq_msg_handle_t msg = nullptr;
        if (ipcq_recv(q, &msg, &options) != 0) {
            if (queue_failed(errno))
                return -1;
            continue;
        }
        const ipcq_route_t *route = find_route(routes, route_count, ipcq_opcode_get(&msg));
        if (route && route->handler)
            answer(q, &msg, route->handler, route->framing, context);
        else if (unknown)
            answer(q, &msg, unknown, IPCQ_ROUTE_RAW, context);
        ipcq_drop(q, &msg);
    }
    return 0;
}
