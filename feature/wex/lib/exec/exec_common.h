// Pieces shared by the operations that run the shell.
#ifndef WEX_EXEC_EXEC_COMMON_H
#define WEX_EXEC_EXEC_COMMON_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/paths.h"

namespace wex::exec
{

// Writes out what the caller has buffered on standard output, then standard
// error, so a child started now does not print before it or a second copy.
void flush_std_streams() noexcept;

// Whether a fixed-capacity character field holds its terminator. A field
// without one has no known end, so it is refused rather than read past.
template <std::size_t N> bool terminated(const char (&field)[N]) noexcept
{
    return strnlen(field, N) < N;
}

// The folder of the main shell binary, under the compile-time root.
inline constexpr char shell_dir[] = WEX_PATH("/tarn/bin");

// Folds the command interpreter's result into the shell's status space.
uint32_t fold_interpreter_result(int result) noexcept;

// Prints "wex exit status = %d\n" when debug is set.
void print_exit_status(uint32_t debug, int result) noexcept;

} // namespace wex::exec

#endif
