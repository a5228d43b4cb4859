// What every program of the project does the same way: its version, its
// help, the end of its output, and a wait that cannot outlast a stated time.
#ifndef WEX_TOOLS_PROGRAM_H
#define WEX_TOOLS_PROGRAM_H

#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace wex_tools
{

// The project's version, as "1.2.3".
const char *project_version();

// A time as the programs show it: "YYYY-MM-DD HH:MM:SS", in UTC.
std::string utc_time_text(std::time_t when);

// "PROGRAM VERSION\n" on standard output when args hold --version; true
// when they did.
bool print_version_if_asked(const char *program, const std::vector<std::string> &args);

// Whether args ask for help: --help or -h anywhere among them.
bool wants_help(const std::vector<std::string> &args);

// "PROGRAM: WHY", then the usage text, on standard error; exit status 2,
// the status of every usage error.
int usage_error(const char *program, const std::string &why, const char *usage);

// Flushes standard output and gives status, or 2 with a line on standard
// error when the output could not be written (a full disk, a closed pipe).
int finish_output(const char *program, int status);

// Runs print with its standard output sent to standard error: the
// library's own messages, where a tool reports trouble.
void on_standard_error(const std::function<void()> &print);

// Runs work and returns its result, unless it takes more than seconds:
// then on_timeout runs and the process ends with exit status 2, whatever
// work was still waiting for.
int run_within(unsigned seconds, const std::function<int()> &work, const std::function<void()> &on_timeout);

} // namespace wex_tools

#endif
