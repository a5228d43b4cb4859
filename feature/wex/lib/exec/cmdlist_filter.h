// The command-list filter of script runs.
#ifndef WEX_EXEC_CMDLIST_FILTER_H
#define WEX_EXEC_CMDLIST_FILTER_H

#include <wex/exec.h>

#include <string_view>

namespace wex::exec
{

// Runs the lines of the record's script that the context's command list
// does not hold yet, recording them there; falls back to the whole script
// when the list cannot be used. The status of the one run it makes.
uint32_t cmdlist_filter(const wex_system_params_t &params) noexcept;

// Whether a script line and a list line hold the same blank-separated words
// (the script line judged on its first 240 bytes).
bool cmdlist_lines_equal(std::string_view script_line, std::string_view list_line) noexcept;

} // namespace wex::exec

#endif
