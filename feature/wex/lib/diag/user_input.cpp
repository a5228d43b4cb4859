// Asking the user for one line: prompt, time limit, length limit, validator
// and default.
#include <wex/diag.h>
#include <wex/wex_api.h>

#include "common/alloc.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/select.h>

extern "C" {
WEX_API int *cmd_baby_mode_p = nullptr;
}

namespace
{

constexpr int32_t kMaxLineSize = 256;

// Standard input has a line for getline: either bytes that an earlier read
// already buffered in the stream (select cannot see them), or a descriptor
// that becomes readable within the wait, which select leaves reduced.
int wait_for_input(const wex_user_input_t &request, timeval *wait) noexcept
{
    // The stream's buffer is glibc's own; lines sent together arrive in one read.
    if (stdin->_IO_read_ptr < stdin->_IO_read_end)
        return 1;
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(0, &readable);
    const int status = select(1, &readable, nullptr, nullptr, wait);
    if (request.debug)
        std::printf("Select returned with status %d\n", status);
    return status;
}

// One line without its line feed, or null when none came: the wait ended,
// select failed, or the input ended or failed.
wex::MallocPtr<char> read_line(const wex_user_input_t &request, timeval *wait) noexcept
{
    if (wait_for_input(request, wait) <= 0)
        return nullptr;
    char *raw = nullptr;
    std::size_t capacity = 0;
    const ssize_t read = getline(&raw, &capacity, stdin);
    wex::MallocPtr<char> line(raw);
    if (read < 0)
        return nullptr;
    line.get()[std::strcspn(line.get(), "\n")] = '\0';
    if (request.debug) {
        std::printf("Input:%s:\n", line.get());
        std::printf("getline return value = %d\n", static_cast<int>(read));
    }
    return line;
}

bool acceptable(const wex_user_input_t &request, char *line) noexcept
{
    if (std::strlen(line) > static_cast<std::size_t>(request.max_len - 1)) {
        std::puts("Input string too long");
        return false;
    }
    return !request.validate || request.validate(line) == 1;
}

} // namespace

extern "C" WEX_API int32_t wex_user_input_get(wex_user_input_t *request, char *dst) noexcept
{
    if (cmd_baby_mode_p && *cmd_baby_mode_p == 0)
        return 0;
    // A destination without room for the terminator cannot take any answer.
    if (!request || !dst || request->max_len < 1)
        return static_cast<int32_t>(WEX_STATUS_FAILURE);
    if (request->max_len > kMaxLineSize) {
        if (request->debug)
            std::puts("Max length too high");
        return static_cast<int32_t>(WEX_STATUS_FAILURE);
    }
    // Armed once: select leaves the remaining time in it, so retries share
    // the one limit.
    timeval limit{static_cast<time_t>(request->timeout), 0};
    timeval *wait = request->timeout ? &limit : nullptr;
    wex::MallocPtr<char> line;
    for (;;) {
        std::printf("%s", request->prompt ? request->prompt : "");
        std::fflush(stdout);
        line = read_line(*request, wait);
        // No line will come (time is up or the input ended): the answer is
        // the default, as for an empty line, instead of asking again.
        if (!line || acceptable(*request, line.get()))
            break;
    }
    const char *answer = line && line.get()[0] != '\0' ? line.get() : request->default_str;
    std::strncpy(dst, answer ? answer : "", static_cast<std::size_t>(request->max_len));
    return 0;
}
