// Help of a registered interface type, as it travels inside the interface
// table entry.
#include <wex/param.h>
#include <wex/parse_tree.h>

#include "common/text_field.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace
{

// The fields in use of a record that may come from another process: a count
// outside 0 to 5 is taken at the nearest bound instead of indexing past the
// array.
int32_t fields_in_use(const intf_help_info *info) noexcept
{
    return std::clamp<int32_t>(info->num_fields, 0, WEX_INTF_HELP_MAX_FIELDS);
}

} // namespace

extern "C" {

WEX_API int32_t wex_intf_help_info_reset(intf_help_info *info, const char *help_str) noexcept
{
    if (!info)
        return -1;
    std::memset(info, 0, sizeof *info);
    // Help texts of 64 characters or more are cut so the entry's next field survives.
    robust_strncpy(info->help_str, help_str, sizeof info->help_str);
    return 0;
}

WEX_API int32_t wex_intf_help_info_add(intf_help_info *info, const char *name, int32_t min,
                                       int32_t max) noexcept
{
    if (!info || info->num_fields < 0 || info->num_fields >= WEX_INTF_HELP_MAX_FIELDS)
        return -1;
    intf_field_help_info &field = info->fields[info->num_fields];
    robust_strncpy(field.name, name, sizeof field.name);
    field.min = min;
    field.max = max;
    ++info->num_fields;
    return 0;
}

WEX_API int32_t wex_intf_help_info_copy(const intf_help_info *src, intf_help_info *dst) noexcept
{
    if (!dst)
        return -1;
    if (!src)
        return wex_intf_help_info_reset(dst, nullptr);
    // src and dst may be the same record: work from a copy of the source.
    // Its texts are read at most 63 characters far, terminated or not.
    const intf_help_info source = *src;
    wex_intf_help_info_reset(dst, source.help_str);
    for (int32_t i = 0; i < fields_in_use(&source); ++i)
        wex_intf_help_info_add(dst, source.fields[i].name, source.fields[i].min, source.fields[i].max);
    return 0;
}

WEX_API int32_t wex_intf_field_help_info_show(const intf_field_help_info *field) noexcept
{
    if (!field)
        return -1;
    const std::string_view name = wex::field_text(field->name);
    std::printf("\t %.*s <%d-%d>", static_cast<int>(name.size()), name.data(), field->min, field->max);
    return 0;
}

WEX_API int32_t wex_intf_help_info_show(const intf_help_info *info) noexcept
{
    if (!info)
        return -1;
    std::puts("\n Interface help information:");
    wex::print_text_field("Intf help str", info->help_str, sizeof info->help_str);
    for (int32_t i = 0; i < fields_in_use(info); ++i) {
        wex_intf_field_help_info_show(&info->fields[i]);
        std::putchar('\n');
    }
    return 0;
}

} // extern "C"
