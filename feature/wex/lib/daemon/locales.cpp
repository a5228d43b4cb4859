// Locales kept by wexd: verification of a name and the locale query.
#include <wex/wexd_client.h>

#include "wex_process_api.h"

#include <cstring>

namespace frame = wex::daemon;

namespace
{

// The name is copied up to the whole field: one of 64 characters fills it
// without a terminator, as wexd reads the field by its width.
wexd_perm_locale_conf_cli_wrapper locale_request(uint32_t query_kind, const char *name) noexcept
{
    wexd_perm_locale_conf_cli_wrapper request;
    wexd_perm_locale_conf_cli_wrapper_init(&request);
    request.query_kind = query_kind;
    if (name)
        std::memcpy(request.name, name, strnlen(name, sizeof request.name));
    return request;
}

} // namespace

extern "C" {

WEX_API void wexd_perm_locale_conf_cli_wrapper_init(wexd_perm_locale_conf_cli_wrapper *request) noexcept
{
    if (request)
        std::memset(request, 0, sizeof *request);
}

WEX_API int32_t wexd_perm_locale_name_verify(int32_t q, const char *name) noexcept
{
    if (!name)
        return -1;
    const wexd_perm_locale_conf_cli_wrapper request = locale_request(0, name);
    return frame::verify_name(q, frame::kLocaleNameVerify, frame::bytes_of(request),
                              WEX_STATUS_LOCALE_UNKNOWN);
}

WEX_API int32_t wexd_locale_info_get(int32_t q, uint32_t msg_type, uint32_t query_kind, const char *name,
                                     void **buf, uint32_t *len) noexcept
{
    // Nowhere to hand the data to: no request is worth sending.
    if (!buf || !len)
        return -1;
    const wexd_perm_locale_conf_cli_wrapper request = locale_request(query_kind, name);
    return frame::query(q, frame::with_msg_type(frame::kLocaleInfoGet, msg_type), frame::bytes_of(request),
                        buf, len);
}

} // extern "C"
