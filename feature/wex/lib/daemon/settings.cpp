// The shell's settings kept by wexd: the whole record read, one field
// written at a time, and the name of the dynamic par file.
#include <wex/wexd_client.h>

#include "common/alloc.h"
#include "common/text_field.h"
#include "wex_process_api.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace frame = wex::daemon;

namespace
{

// One setting: an all-zero record with the one field set, sent with the
// opcode that names the field.
template <typename Set> int32_t write_setting(int32_t q, uint32_t opcode, uint32_t lead, Set set) noexcept
{
    wexd_wex_config config;
    std::memset(&config, 0, sizeof config);
    set(config);
    return wexd_wex_configuration_set(q, &config, opcode, lead, "", "") == 0 ? 0 : -1;
}

} // namespace

extern "C" {

WEX_API int32_t wexd_wex_configuration_set(int32_t q, const wexd_wex_config *config, uint32_t opcode,
                                           uint32_t lead, const char *text1, const char *text2) noexcept
{
    if (!config)
        return -1;
    wexd_wex_config_msg msg;
    msg.lead = lead;
    msg.config = *config;
    uint32_t len = sizeof msg;
    return frame::request_response(q, frame::config_write(opcode), &msg, &len, text1 ? text1 : "",
                                   text2 ? text2 : "");
}

WEX_API int32_t wexd_max_wex_sessions_set(int32_t q, uint32_t max_sessions, uint32_t lead) noexcept
{
    return write_setting(q, WEX_OPC_MAX_SESSIONS_SET, lead,
                         [max_sessions](wexd_wex_config &c) { c.max_sessions = max_sessions; });
}

WEX_API int32_t wexd_session_timeout_set(int32_t q, uint32_t timeout, uint32_t flag) noexcept
{
    if (flag != 0)
        return write_setting(q, WEX_OPC_SESSION_TIMEOUT_SET, 0,
                             [timeout](wexd_wex_config &c) { c.session_timeout = timeout; });
    return write_setting(q, WEX_OPC_SESSION_TIMEOUT_ALT_SET, 0,
                         [timeout](wexd_wex_config &c) { c.session_timeout_alt = timeout; });
}

WEX_API int32_t wexd_term_set_length(int32_t q, uint32_t length) noexcept
{
    if (length == 0)
        return -1;
    return write_setting(q, WEX_OPC_TERM_LENGTH_SET, 0,
                         [length](wexd_wex_config &c) { c.term_length = length; });
}

WEX_API int32_t wexd_term_set_width(int32_t q, uint32_t width) noexcept
{
    if (width == 0)
        return -1;
    return write_setting(q, WEX_OPC_TERM_WIDTH_SET, 0, [width](wexd_wex_config &c) { c.term_width = width; });
}

WEX_API int32_t wexd_switchname_set(int32_t q, const char *name) noexcept
{
    if (!name)
        return -1;
    return write_setting(q, WEX_OPC_SWITCHNAME_SET, 0, [name](wexd_wex_config &c) {
        robust_strncpy(c.switchname, name, sizeof c.switchname);
    });
}

WEX_API int32_t wexd_wex_configuration_get(int32_t q, wexd_wex_config **reply) noexcept
{
    if (!reply)
        return -1;
    *reply = nullptr;
    frame::Reply payload;
    // A reply shorter than the record would be read past its end by the
    // caller: it is no record.
    if (frame::exchange(q, frame::kConfigGet, {}, payload) < 0 || payload.len < sizeof(wexd_wex_config))
        return -1;
    *reply = static_cast<wexd_wex_config *>(payload.release());
    return 0;
}

WEX_API int32_t wexd_wex_config_info_get(int32_t q, wexd_wex_config *config) noexcept
{
    if (!config)
        return -1;
    wexd_wex_config image;
    std::size_t reply_size = 0;
    if (frame::synchronous_request(q, WEX_OPC_CONFIG_GET, std::as_writable_bytes(std::span(&image, 1)),
                                   &reply_size) != 0 ||
        reply_size < sizeof image)
        return -1;
    *config = image;
    return 0;
}

WEX_API int32_t wexd_wex_dynamic_parfile_name_get(int32_t q, char *name) noexcept
{
    if (!name)
        return -1;
    frame::Reply payload;
    if (frame::exchange(q, frame::kDynamicParfileNameGet, {}, payload) < 0 || !payload.bytes)
        return -1;
    // A name cut to the destination would name another file: a reply whose
    // text does not end within the reply and within 64 bytes is refused.
    const std::string_view text =
        wex::field_text(reinterpret_cast<const char *>(payload.bytes.get()), payload.len);
    if (text.size() == payload.len || text.size() >= WEX_FILE_NAME_SIZE)
        return -1;
    std::memcpy(name, text.data(), text.size() + 1);
    return 0;
}

} // extern "C"
