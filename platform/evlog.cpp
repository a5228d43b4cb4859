#include "evlog.h"

#include <cstdio>
#include <ctime>

extern "C" void evlog_hist_print_event_header(uint32_t time_s, const char *event_name, uint32_t value2,
                                              uint32_t value4, uint32_t value5)
{
    const std::time_t when = static_cast<std::time_t>(time_s);
    std::tm utc{};
    char stamp[32] = "";
    if (gmtime_r(&when, &utc))
        std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &utc);
    std::printf("%s %s %u %u %u\n", stamp, event_name ? event_name : "", value2, value4, value5);
}
