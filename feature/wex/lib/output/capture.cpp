// The process-wide capture of listing output. The block always holds the
// captured text and its terminator and nothing more, so a caller may take it
// at any moment as an exactly sized C string.
#include <wex/output.h>

#include "common/alloc.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace
{

// Most calls format into this much stack first, so the text is formatted once.
constexpr std::size_t kWorkingBufferSize = 16384;

struct CaptureState {
    int32_t redirect = 0;
    char *buffer = nullptr;
    uint32_t length = 0;
};

CaptureState capture;

// Grows the block to hold added more characters and the terminator; false
// (block and text unchanged) when memory runs out or the length would wrap.
bool grow_by(std::size_t added)
{
    const std::size_t total = std::size_t{capture.length} + added;
    if (total >= UINT32_MAX)
        return false;
    void *grown = wex::mem_realloc(capture.buffer, total + 1);
    if (!grown)
        return false;
    capture.buffer = static_cast<char *>(grown);
    return true;
}

__attribute__((format(printf, 1, 0))) int32_t append_formatted(const char *format, va_list args)
{
    char working[kWorkingBufferSize];
    va_list again;
    va_copy(again, args);
    const int produced = std::vsnprintf(working, sizeof working, format, args);
    int32_t result = produced;
    if (produced < 0 || !grow_by(static_cast<std::size_t>(produced))) {
        result = -1;
    } else if (static_cast<std::size_t>(produced) < sizeof working) {
        std::memcpy(capture.buffer + capture.length, working, static_cast<std::size_t>(produced) + 1);
    } else {
        // Longer than the working buffer: format again straight into the
        // grown block rather than capture a cut text.
        std::vsnprintf(capture.buffer + capture.length, static_cast<std::size_t>(produced) + 1, format,
                       again);
    }
    va_end(again);
    if (result >= 0)
        capture.length += static_cast<uint32_t>(result);
    return result;
}

} // namespace

extern "C" {

WEX_API int32_t wex_set_redir2buf(void) noexcept
{
    capture.redirect = 1;
    return 1;
}

WEX_API int32_t wex_reset_redir2buf(void) noexcept
{
    capture = CaptureState{};
    return 0;
}

WEX_API int32_t wex_is_redir2buf(void) noexcept
{
    return capture.redirect;
}

WEX_API char *wex_get_buf(void) noexcept
{
    return capture.buffer;
}

WEX_API uint32_t wex_get_buf_len(void) noexcept
{
    return capture.length;
}

WEX_API char *wex_set_buf(char *buf, uint32_t len) noexcept
{
    if (buf) {
        capture.buffer = buf;
        capture.length = len;
    }
    return capture.buffer;
}

WEX_API int32_t wex_buf_printf(const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    const int32_t result = capture.redirect ? append_formatted(format, args) : std::vprintf(format, args);
    va_end(args);
    return result;
}

} // extern "C"
