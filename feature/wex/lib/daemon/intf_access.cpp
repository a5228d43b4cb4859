// Reading wexd's interface table, and the permission checks on interfaces.
#include <wex/diag.h>
#include <wex/wexd_client.h>

#include "common/alloc.h"
#include "wex_process_api.h"

#include "if_index.h"

#include <cstdio>

namespace
{

// Interface types a VSAN-restricted user may still configure.
constexpr uint8_t kConfigurableTypes[] = {1, 8};

// The image wexd sent is a table only when it is whole and its last index
// names slots of the table.
bool is_table_image(const intf_table &image, std::size_t reply_size) noexcept
{
    return reply_size >= sizeof image && image.last_index >= -1 && image.last_index < WEX_INTF_TABLE_CAPACITY;
}

} // namespace

extern "C" {

WEX_API int32_t wexd_interface_table_get(int32_t q, intf_table_entry **entries) noexcept
{
    if (!entries)
        return -1;
    intf_table image{};
    std::size_t reply_size = 0;
    // A short or inconsistent image is as useless as no answer: the caller
    // learns that the table could not be read, and nothing past the reply is used.
    if (wex::daemon::synchronous_request(q, WEX_OPC_INTF_TABLE_GET,
                                         std::as_writable_bytes(std::span(&image, 1)), &reply_size) != 0 ||
        !is_table_image(image, reply_size)) {
        std::puts("Could not communicate with wexd");
        return -1;
    }
    const int32_t count = image.last_index + 1;
    // An empty table hands out no buffer: there is nothing to free.
    if (count == 0) {
        *entries = nullptr;
        return 0;
    }
    auto *copy = static_cast<intf_table_entry *>(wex::mem_alloc(sizeof(intf_table_entry) * count));
    if (!copy)
        return -1;
    for (int32_t i = 0; i < count; ++i)
        copy_interface_table_entry(&image.entries[i], &copy[i]);
    *entries = copy;
    return count;
}

WEX_API int32_t wex_is_interface_config_allowed(void * /*unused*/, const vsan_mask *mask,
                                                uint32_t if_index) noexcept
{
    // A user whose VSAN policy is unknown is held to the restricted rule.
    if (mask && !wex_is_user_vsan_restricted(mask))
        return 1;
    if (wex_lib_debug_filter & WEX_DEBUG_EOL)
        std::printf("Checking if interface config allowed for Ifindex = %x\n", if_index);
    uint8_t type = 0;
    if (if_index_get_type(if_index, &type) != 0)
        return 0;
    for (uint8_t allowed : kConfigurableTypes) {
        if (type == allowed)
            return 1;
    }
    return 0;
}

WEX_API int32_t wex_intf_type_perm_check(void * /*unused*/) noexcept
{
    return 1;
}

WEX_API int32_t wex_is_interface_display_allowed(void * /*unused*/) noexcept
{
    return 1;
}

WEX_API int32_t wex_fc_intf_perm_check(vsan_mask ** /*mask*/) noexcept
{
    return 1;
}

} // extern "C"
