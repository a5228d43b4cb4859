#include <wex/parse_tree.h>

#include <algorithm>
#include <cstring>

namespace
{

// Entries a table holds by its last_index. A value outside -1 to 511 can only
// come from a damaged table; bounding it keeps every access inside entries.
int32_t valid_entries(const tree_table *t) noexcept
{
    return std::clamp<int32_t>(t->last_index, -1, WEX_TREE_TABLE_CAPACITY - 1) + 1;
}

} // namespace

extern "C" {

WEX_API void set_tree_table_entry(tree_table_entry *e, const char *module_id,
                                  const char *par_file_name) noexcept
{
    // Names longer than their fields are cut at the field, so an entry (also
    // a registration payload) never spills into its neighbour.
    robust_strncpy(e->module_id, module_id, sizeof e->module_id);
    robust_strncpy(e->par_file_name, par_file_name, sizeof e->par_file_name);
}

WEX_API void copy_tree_table_entry(const tree_table_entry *src, tree_table_entry *dst) noexcept
{
    set_tree_table_entry(dst, src->module_id, src->par_file_name);
}

WEX_API int32_t insert_entry_in_tree_table(tree_table *t, const tree_table_entry *e) noexcept
{
    if (t->last_index > WEX_TREE_TABLE_CAPACITY - 2 || t->last_index < -1)
        return -1;
    ++t->last_index;
    copy_tree_table_entry(e, &t->entries[t->last_index]);
    return 0;
}

WEX_API int32_t search_entry_in_tree_table(const tree_table *t, const char *par_file_name) noexcept
{
    const int32_t n = valid_entries(t);
    for (int32_t i = 0; i < n; ++i) {
        const char *name = t->entries[i].par_file_name;
        if (std::strncmp(name, par_file_name ? par_file_name : "", sizeof t->entries[i].par_file_name) == 0)
            return i;
    }
    return -1;
}

WEX_API int32_t delete_entry_from_tree_table(tree_table *t, int32_t index) noexcept
{
    const int32_t count = valid_entries(t);
    // Only a valid entry can be removed; anything else leaves the table alone.
    if (index < 0 || index >= count)
        return -1;
    const auto after = static_cast<std::size_t>(count - index - 1);
    std::memmove(&t->entries[index], &t->entries[index + 1], after * sizeof t->entries[0]);
    t->last_index = count - 2;
    return 0;
}

WEX_API int32_t populate_subtree_path(subtree_path *p, uint32_t type, const char *location) noexcept
{
    // The record's location field bounds the copy, so a long text is cut
    // instead of overrunning the caller's record.
    robust_strncpy(p->location, location, sizeof p->location);
    p->type = type;
    return 0;
}

} // extern "C"
