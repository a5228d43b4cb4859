// The interface table: one entry per interface type the grammar knows, as
// wexd keeps it and hands its image out.
#include <wex/wexd_client.h>

#include "common/text_field.h"

#include <cstdio>
#include <cstring>

namespace
{

// Entries in use of a table that may be an image from another process: a
// last index outside -1 to 23 counts as no entry rather than a walk past the
// table.
int32_t entries_in_use(const intf_table *t) noexcept
{
    const int32_t last = t->last_index;
    return last >= -1 && last < WEX_INTF_TABLE_CAPACITY ? last + 1 : 0;
}

// A text of a caller, or of a field of another entry, cut to its field.
template <std::size_t N> void set_field(char (&field)[N], const char *text) noexcept
{
    robust_strncpy(field, text, N);
}

void print_table_rule(char sign)
{
    char rule[40];
    std::memset(rule, sign, sizeof rule - 1);
    rule[sizeof rule - 1] = '\0';
    std::puts(rule);
}

} // namespace

extern "C" {

WEX_API int32_t set_interface_table_entry(intf_table_entry *e, uint64_t mask, const char *name,
                                          int32_t min_match_len, int32_t format, const char *verify_func_name,
                                          const char *list_func_name, const char *lib_name,
                                          const intf_help_info *help_info,
                                          uint16_t ascii_gen_priority) noexcept
{
    if (!e)
        return -1;
    e->mask = mask;
    set_field(e->name, name);
    e->min_match_len = min_match_len;
    e->format = format;
    set_field(e->verify_func_name, verify_func_name);
    set_field(e->list_func_name, list_func_name);
    set_field(e->lib_name, lib_name);
    e->ascii_gen_priority = ascii_gen_priority;
    e->reserved[0] = e->reserved[1] = 0;
    return wex_intf_help_info_copy(help_info, &e->help_info);
}

WEX_API int32_t copy_interface_table_entry(const intf_table_entry *src, intf_table_entry *dst) noexcept
{
    if (!src || !dst)
        return -1;
    // Work from a copy: src may be dst, or a reply whose texts lack terminators.
    const intf_table_entry s = *src;
    return set_interface_table_entry(dst, s.mask, s.name, s.min_match_len, s.format, s.verify_func_name,
                                     s.list_func_name, s.lib_name, &s.help_info, s.ascii_gen_priority);
}

WEX_API void show_interface_table_entry(const intf_table_entry *e) noexcept
{
    if (!e)
        return;
    std::printf("\n Interface Mask:%lld", static_cast<long long>(e->mask));
    wex::print_text_field(" Interface Name", e->name, sizeof e->name);
    print_int(" Minimum match length", e->min_match_len);
    print_int(" Interface format", e->format);
    wex::print_text_field(" Ifindex Verification func", e->verify_func_name, sizeof e->verify_func_name);
    wex::print_text_field(" Ifindex Listing func", e->list_func_name, sizeof e->list_func_name);
    wex::print_text_field(" Library name", e->lib_name, sizeof e->lib_name);
    print_int(" Ascii gen priority", e->ascii_gen_priority);
    wex_intf_help_info_show(&e->help_info);
}

WEX_API void show_interface_table(const intf_table_entry *first, int32_t count) noexcept
{
    print_table_rule('=');
    std::puts("Displaying Interface Table");
    print_table_rule('=');
    for (int32_t i = 0; first && i < count; ++i) {
        print_table_rule('-');
        show_interface_table_entry(&first[i]);
        std::putchar('\n');
    }
    print_table_rule('=');
}

WEX_API int32_t search_entry_in_interface_table(const intf_table *t, uint64_t mask) noexcept
{
    int32_t slot = -1;
    if (t && wexd_interface_table_search(t->entries, entries_in_use(t) - 1, mask, &slot) != 0)
        return -1;
    return slot;
}

WEX_API int32_t insert_entry_in_interface_table(intf_table *t, const intf_table_entry *e) noexcept
{
    // A full table, or a damaged last index, refuses the entry: nothing is
    // written past the 24 slots.
    if (!t || !e || t->last_index < -1 || t->last_index >= WEX_INTF_TABLE_CAPACITY - 1)
        return -1;
    if (copy_interface_table_entry(e, &t->entries[t->last_index + 1]) != 0)
        return -1;
    ++t->last_index;
    return 0;
}

WEX_API int32_t delete_entry_from_interface_table(intf_table *t, int32_t slot) noexcept
{
    if (!t || slot < 0 || slot >= entries_in_use(t))
        return -1;
    for (int32_t i = slot + 1; i < entries_in_use(t); ++i)
        copy_interface_table_entry(&t->entries[i], &t->entries[i - 1]);
    --t->last_index;
    return 0;
}

WEX_API int32_t wexd_interface_table_search(const intf_table_entry *first, int32_t last_index, uint64_t mask,
                                            int32_t *slot) noexcept
{
    for (int32_t i = 0; first && i <= last_index; ++i) {
        if (first[i].mask == mask) {
            if (slot)
                *slot = i;
            return 0;
        }
    }
    return static_cast<int32_t>(WEX_STATUS_INTF_TYPE_UNKNOWN);
}

} // extern "C"
