// One line per message received, so that a person can watch the
// conversation: time, queue, sender, opcode by name and what it carried;
// and a line for each thing the simulator itself does.
#ifndef WEXD_SIM_MESSAGE_LOG_H
#define WEXD_SIM_MESSAGE_LOG_H

#include "ipcq_serve.h"

#include <string>

namespace wexd_sim
{

// The name of an opcode the library sends, or "unknown".
const char *opcode_name(uint32_t opcode);

// What the log holds: events only (start, reload, stop), or a line for
// every message as well.
enum class LogLevel { events, messages };
void set_log_level(LogLevel level);

// Writes the line for a request that arrived on queue, with a short
// decoding of its payload.
void log_request(uint32_t queue, const ipcq_request_info_t &request, const std::string &what);

// Writes a line whatever the level: what the simulator itself did.
void log_event(const std::string &line);

// Where the lines go instead of standard output, while sink is set: it is
// called with the log's lock held, so it must not log.
using LogSink = void (*)(void *context, const std::string &lines);
void set_log_sink(LogSink sink, void *context);

// Lines are kept in memory and written out by this call, which the
// simulator makes on a timer and before it exits, so that no serving thread
// waits on the log's reader; a thread that finds much unwritten writes it
// out itself rather than let it grow.
void flush_log();

} // namespace wexd_sim

#endif
