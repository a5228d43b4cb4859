// One-way notifications (configuration changed, logout coming) and the
// printer of wexd's event history.
#include <wex/wexd_client.h>

#include "wex_process_api.h"

#include "evlog.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace frame = wex::daemon;

namespace
{

constexpr const char *kEventNames[] = {
    "E_WEXD_HEARTBEAT", "E_WEXD_INTERFACE", "E_WEXD_HOOK", "E_WEXD_MSG", "E_WEXD_PRIV_MSG", "E_WEXD_LOCK",
};
// What an event outside the table is called in the header: it is marked
// rather than given a neighbour's name.
constexpr const char *kUnknownEventName = "E_WEXD_UNKNOWN";

int32_t notify(int32_t q, uint32_t opcode, std::span<const std::byte> payload) noexcept
{
    return frame::send_one_way(q, WEX_NOTIFY_QUEUE, opcode, payload, frame::SendOptions::none);
}

int32_t announce(int32_t q, uint32_t opcode, uint32_t value, const char *failure) noexcept
{
    if (notify(q, opcode, frame::bytes_of(value)) == 0)
        return 0;
    const int error = errno;
    std::perror(failure);
    return WEX_ANNOUNCE_ERRNO_STATUS(error);
}

// The event's name, or NULL for a code outside wexd's events.
const char *event_name(uint32_t event_code) noexcept
{
    const uint32_t index = (event_code & 0x7FFFFFFFu) - WEXD_EVENT_BASE;
    return index < std::size(kEventNames) ? kEventNames[index] : nullptr;
}

} // namespace

extern "C" {

WEX_API int32_t wex_notify_cfg_update(int32_t q, uint32_t value1, uint32_t value2, uint32_t value3) noexcept
{
    wex_cfg_update_msg msg;
    std::memset(&msg, 0, sizeof msg);
    msg.values[0] = value1;
    msg.values[1] = value2;
    msg.values[2] = value3;
    return notify(q, WEX_OPC_CFG_CHANGE_NOTIFY, frame::bytes_of(msg));
}

WEX_API int32_t wex_api_notify_cfg_change(const pinfo *info) noexcept
{
    // Per-VSAN generation replays configuration that has not changed.
    if (info && (info->info_flags & WEX_PINFO_PER_VSAN_ASCII_GEN) == 0)
        notify(info->ipcq_q, WEX_OPC_CFG_CHANGE_NOTIFY, {});
    return 0;
}

WEX_API int32_t wex_config_change_notify(int32_t q) noexcept
{
    return notify(q, WEX_OPC_CFG_CHANGE_NOTIFY, {}) == 0 ? 0 : WEX_ERRNO_STATUS(errno);
}

WEX_API int32_t wex_announce_logout_warning(int32_t q, uint32_t value) noexcept
{
    return announce(q, WEX_OPC_LOGOUT_WARNING_ANNOUNCE, value, "Error: Logout warning notify failed");
}

WEX_API int32_t wex_announce_abs_timeout(int32_t q, uint32_t value) noexcept
{
    return announce(q, WEX_OPC_ABS_TIMEOUT_ANNOUNCE, value, "Error: Absolute timeout notify failed");
}

WEX_API int32_t wait_for_chassis_box_online(void) noexcept
{
    return 0;
}

WEX_API int32_t wexd_hist_print_event(const char *text, uint32_t value2, uint32_t event_code, uint32_t value4,
                                      uint32_t value5, uint32_t time_s) noexcept
{
    if (!text) {
        std::puts("NULL buffer pointer");
        return 1;
    }
    const char *name = event_name(event_code);
    evlog_hist_print_event_header(time_s, name ? name : kUnknownEventName, value2, value4, value5);
    if (name)
        std::printf("    %s\n", text);
    else
        std::puts("Unknown Event");
    return 0;
}

} // extern "C"
