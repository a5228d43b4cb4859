// How much a library call printed on standard output, learned on the way
// through, so that the call need not be made a second time to ask.
#ifndef WEXCTL_PRINTED_BYTES_H
#define WEXCTL_PRINTED_BYTES_H

#include <cstddef>
#include <functional>
#include <optional>

namespace wexctl
{

// Runs print with standard output passed through a counter to the real
// standard output; returns the bytes it printed, or nothing (print not run)
// when no counting stream can be made.
std::optional<std::size_t> printed_bytes(const std::function<void()> &print);

} // namespace wexctl

#endif
