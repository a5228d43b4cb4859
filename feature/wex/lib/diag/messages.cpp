// The standard texts for processes that do not answer, the log file, the
// time stamp within the hour and lower-casing.
#include <wex/diag.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <sys/time.h>

namespace
{

constexpr const char *kNoResponseRetry =
    "Process did not respond within the expected timeframe, please try again.";
constexpr const char *kNoResponse = "Process did not respond within the expected timeframe";
constexpr const char *kCheckWithShow =
    "Please check if command was successful using appropriate show commands";

} // namespace

extern "C" {

WEX_API void wex_print_communication_failure_message(void) noexcept
{
    std::puts("Communication could not be established with the process");
}

WEX_API void wex_print_timeout_message(unsigned int kind) noexcept
{
    switch (kind) {
    case 1:
        std::puts(kNoResponseRetry);
        break;
    case 3:
        std::puts(kNoResponse);
        std::puts(kCheckWithShow);
        break;
    case 2:
    case 4:
    case 5:
    case 6:
        std::puts(kCheckWithShow);
        break;
    default:
        break;
    }
}

WEX_API int wex_print_ipcq_error_message(unsigned int kind, int error) noexcept
{
    if (error == EPIPE)
        wex_print_communication_failure_message();
    else if (error == ETIME)
        wex_print_timeout_message(kind);
    else
        std::perror("Internal CLI error");
    return 0;
}

WEX_API int wex_log_mesg_to_file(const char *path, const char *text) noexcept
{
    if (!path || !text)
        return 0;
    std::FILE *file = std::fopen(path, "a");
    if (!file)
        return 0;
    std::fputs(text, file);
    std::fclose(file);
    return 0;
}

WEX_API int wex_log_file_clear(const char *path) noexcept
{
    if (!path) {
        errno = EINVAL;
        return -1;
    }
    return std::remove(path);
}

WEX_API int64_t wex_time(void) noexcept
{
    timeval now{};
    if (gettimeofday(&now, nullptr) != 0)
        return -1;
    return static_cast<int64_t>(now.tv_sec % 3600) * 1000000 + now.tv_usec;
}

WEX_API void wex_convert_str_to_lower_case(char *text) noexcept
{
    for (char *at = text; at && *at; ++at)
        *at = static_cast<char>(std::tolower(static_cast<unsigned char>(*at)));
}

} // extern "C"
