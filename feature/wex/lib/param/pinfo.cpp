// The argument list of a parsed command and the fill-in helpers of the
// argument values. The limits are the caller's to keep, as the shell has
// always kept them; only the range-list index is guarded.
#include <wex/param.h>
#include <wex/parse_tree.h>

#include <algorithm>
#include <cstring>

extern "C" {

WEX_API int pinfo_delete_all_arg(pinfo *info) noexcept
{
    info->param_count = 0;
    return 0;
}

WEX_API int pinfo_insert_arg(pinfo *info, param_arg *arg) noexcept
{
    info->args[info->param_count++] = arg;
    return 0;
}

WEX_API int pinfo_insert_arg_at_index(pinfo *info, param_arg *arg, int index) noexcept
{
    param_arg **slots = info->args;
    std::copy_backward(slots + index, slots + info->param_count, slots + info->param_count + 1);
    slots[index] = arg;
    ++info->param_count;
    return 0;
}

WEX_API int pinfo_set_arg(pinfo *info, param_arg *arg, int n) noexcept
{
    info->args[n - 1] = arg;
    return 0;
}

WEX_API int pinfo_delete_arg(pinfo *info, int n) noexcept
{
    param_arg **slots = info->args;
    std::copy(slots + n, slots + info->param_count, slots + n - 1);
    --info->param_count;
    return 0;
}

WEX_API int populate_param_arg(param_arg *arg, int32_t token_id, uint32_t type, uint32_t /*unused*/,
                               uint64_t intf_mask, void *value) noexcept
{
    arg->token_id = token_id;
    arg->type = type;
    arg->intf_mask = intf_mask;
    arg->value = value;
    return 0;
}

WEX_API int populate_intf_range(intf_range_list *list, uint32_t index, uint32_t first, uint32_t last) noexcept
{
    if (index <= WEX_INTF_RANGE_MAX_INDEX)
        populate_mono_intf_range(&list->ranges[index], first, last);
    return 0;
}

WEX_API int populate_mono_intf_range(intf_range *range, uint32_t first, uint32_t last) noexcept
{
    range->first = first;
    range->last = last;
    return 0;
}

WEX_API int populate_intf(uint32_t *value, uint32_t if_index) noexcept
{
    *value = if_index;
    return 0;
}

WEX_API int pinfo_get_latest_intf_mask(const pinfo *info, uint64_t *mask) noexcept
{
    *mask = 0;
    for (int slot = info->param_count - 1; slot >= 0; --slot) {
        const param_arg *arg = info->args[slot];
        if (arg->type == TYPE_INTERFACE || arg->type == TYPE_INTERFACE_RANGE) {
            *mask = arg->intf_mask;
            return *mask != 0 ? 0 : -1;
        }
    }
    return -1;
}

WEX_API int pinfo_basic_copy(pinfo *dest, const pinfo *source) noexcept
{
    if (!source) {
        std::memset(dest, 0, sizeof *dest);
        return 0;
    }
    std::memmove(dest, source, sizeof *dest);
    dest->param_count = 0;
    return 0;
}

} // extern "C"
