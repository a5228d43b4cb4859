// Capture of standard output and standard error at the descriptor level, so
// that everything a call writes (stdio, write(2), perror) is seen byte for byte.
#ifndef WEX_TEST_CAPTURE_H
#define WEX_TEST_CAPTURE_H

#include <functional>
#include <string>

namespace wex_test
{

struct Output {
    std::string out;
    std::string err;
};

// Runs fn with descriptors 1 and 2 sent to temporary files; returns what each got.
Output capture_output(const std::function<void()> &fn);

// What fn writes to standard output and error together, in the order written.
std::string capture_combined(const std::function<void()> &fn);

// What fn writes to standard output.
std::string capture_stdout(const std::function<void()> &fn);

// What fn prints through the library's listing output, taken from its
// capture buffer rather than standard output.
std::string capture_buffered(const std::function<void()> &fn);

// Reads the whole of an open descriptor from its start.
std::string read_whole_fd(int fd);

} // namespace wex_test

#endif
