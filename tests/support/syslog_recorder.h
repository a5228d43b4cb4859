// Test programs define syslog themselves: every line the library logs is
// kept here, in order, instead of reaching the system log.
#ifndef WEX_TEST_SYSLOG_RECORDER_H
#define WEX_TEST_SYSLOG_RECORDER_H

#include <string>
#include <vector>

namespace wex_test
{

struct LogLine {
    int priority;
    std::string text;
    bool operator==(const LogLine &) const = default;
};

// The lines logged since the last clear.
std::vector<LogLine> &syslog_lines();

} // namespace wex_test

#endif
