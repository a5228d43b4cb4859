// The command-line lock that wexd holds for one requester at a time.
#include <wex/wexd_client.h>

#include "wex_process_api.h"

namespace frame = wex::daemon;

extern "C" {

WEX_API int32_t wexd_send_lock_unlock_notification(int32_t q, uint32_t action, uint32_t requester,
                                                   uint32_t mode) noexcept
{
    const wexd_cli_lock_req request{action, requester, mode};
    frame::Reply reply;
    return frame::write_status(frame::exchange(q, frame::kCliLock, frame::bytes_of(request), reply));
}

WEX_API int32_t wexd_cli_lock(int32_t q, uint32_t requester) noexcept
{
    return wexd_send_lock_unlock_notification(q, WEXD_CLI_LOCK, requester, WEXD_CLI_LOCK_MODE_ORDINARY);
}

WEX_API int32_t wexd_cli_lock_for_upgrade(int32_t q, uint32_t requester) noexcept
{
    return wexd_send_lock_unlock_notification(q, WEXD_CLI_LOCK, requester, WEXD_CLI_LOCK_MODE_UPGRADE);
}

WEX_API int32_t wexd_cli_unlock(int32_t q, uint32_t requester) noexcept
{
    return wexd_send_lock_unlock_notification(q, WEXD_CLI_UNLOCK, requester, WEXD_CLI_LOCK_MODE_ORDINARY);
}

WEX_API int32_t wexd_cli_unlock_forced(int32_t q, uint32_t requester) noexcept
{
    return wexd_send_lock_unlock_notification(q, WEXD_CLI_UNLOCK, requester, WEXD_CLI_LOCK_MODE_FORCED);
}

} // extern "C"
