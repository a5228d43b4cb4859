// One line per message received, so that a person can watch the
// conversation: time, queue, sender, opcode by name and what it carried.
#ifndef WEXD_SIM_MESSAGE_LOG_H
#define WEXD_SIM_MESSAGE_LOG_H

#include "ipcq_serve.h"

#include <string>

namespace wexd_sim
{

// The name of an opcode the library sends, or "unknown".
const char *opcode_name(uint32_t opcode);

// Writes the line for a request that arrived on queue, with a short
// decoding of its payload.
void log_request(uint32_t queue, const ipcq_request_info_t &request, const std::string &what);

} // namespace wexd_sim

#endif
