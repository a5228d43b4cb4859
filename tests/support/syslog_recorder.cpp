#include "support/syslog_recorder.h"

#include <cstdarg>
#include <cstdio>

namespace wex_test
{

std::vector<LogLine> &syslog_lines()
{
    static std::vector<LogLine> lines;
    return lines;
}

} // namespace wex_test

namespace
{

__attribute__((format(printf, 2, 0))) void record(int priority, const char *format, va_list args)
{
    char text[512];
    std::vsnprintf(text, sizeof text, format, args);
    wex_test::syslog_lines().push_back({priority, text});
}

} // namespace

// The second form is what fortified builds call.
extern "C" __attribute__((format(printf, 2, 3))) void syslog(int priority, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    record(priority, format, args);
    va_end(args);
}

extern "C" __attribute__((format(printf, 3, 4))) void __syslog_chk(int priority, int, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    record(priority, format, args);
    va_end(args);
}
