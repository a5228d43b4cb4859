// Printers of multi-valued arguments and the tests on interface types.
#include <wex/param.h>

#include "if_index.h"

#include <cstdio>

namespace
{

enum class Radix { decimal, hexadecimal };

// Prints " low - high" per entry with a comma between entries.
void print_range_entries(const integer_range *ranges, uint32_t count, Radix radix) noexcept
{
    for (uint32_t i = 0; i < count; ++i) {
        if (i > 0)
            std::printf(",");
        if (radix == Radix::hexadecimal)
            std::printf(" 0x%x - 0x%x", ranges[i].low, ranges[i].high);
        else
            std::printf(" %d - %d", static_cast<int>(ranges[i].low), static_cast<int>(ranges[i].high));
    }
}

} // namespace

extern "C" {

WEX_API int32_t wex_submode_cmd_history = 0;

WEX_API void print_if_index_list(const if_index_list *list) noexcept
{
    std::printf("Ifindex list length: %d\n", list->count);
    for (int32_t i = 0; i < list->count; ++i)
        std::printf("%x ", list->if_indexes[i]);
    std::printf("\n");
}

WEX_API void print_hex_multi_range(const hex_multi_range *ranges) noexcept
{
    print_range_entries(ranges->ranges, ranges->count, Radix::hexadecimal);
}

WEX_API void print_integer_multi_range(const integer_multi_range *ranges) noexcept
{
    print_range_entries(ranges->ranges, ranges->count, Radix::decimal);
}

WEX_API int wex_is_interface_type_per_vsan(uint64_t intf_type_mask) noexcept
{
    switch (intf_type_mask) {
    case 0x1:
    case 0x4:
    case 0x10:
    case 0x40:
    case 0x40000:
    case 0x80000:
    case 0x8000000:
        return 1;
    default:
        return 0;
    }
}

WEX_API int wex_is_interface_type_restricted(uint32_t if_index) noexcept
{
    // Types 2, 4, 5, 6, 10, 11, 12, 15 and 22.
    constexpr uint32_t kRestrictedTypes = 0x409C74;
    uint8_t type = 0;
    if (if_index_get_type(if_index, &type) != 0)
        return 1;
    return type <= 22 && ((kRestrictedTypes >> type) & 1) ? 1 : 0;
}

WEX_API int wex_get_timeout_user_value(int value) noexcept
{
    return value == -1 ? 0 : value;
}

WEX_API void wex_submode_cmd_history_init(int value) noexcept
{
    wex_submode_cmd_history = value;
}

WEX_API int wex_get_submode_cmd_history(void) noexcept
{
    return wex_submode_cmd_history;
}

} // extern "C"
