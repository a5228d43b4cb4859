// Requests to wexd that more than one program makes: a queue of the
// process's own to make them from, who holds the CLI lock, which features
// registered commands, which roles a user holds, and the shell's sessions.
#ifndef WEX_TOOLS_DAEMON_QUERIES_H
#define WEX_TOOLS_DAEMON_QUERIES_H

#include "sim_replies.h"

#include <optional>
#include <string>
#include <vector>

namespace wex_tools
{

// A queue numbered from the process id, the next one when a live process
// holds it; -1 with errno when none opens.
int open_client_queue();

// The CLI lock's holder, or nothing when wexd does not answer in full.
std::optional<SimLockHolder> lock_holder(int q);
// "held by requester N", "not held", or that wexd did not say.
std::string holder_text(const std::optional<SimLockHolder> &holder);

// The features wexd knows, or nothing when it does not answer; status is
// the request's result.
std::optional<std::vector<SimFeatureEntry>> feature_table(int q, int &status);

// The names of the roles user holds, or nothing when wexd does not answer.
std::optional<std::vector<std::string>> user_roles(int q, const std::string &user, int &status);

// Makes the session known to wexd; the request's result (a positive status
// when wexd refuses it: every session it allows is in use).
int open_session(int q, const SimSession &session);
// Says the session of the process ended.
void close_session(int q, uint32_t pid);
// The sessions wexd knows, or nothing when it does not answer.
std::optional<std::vector<SimSession>> sessions(int q);

} // namespace wex_tools

#endif
