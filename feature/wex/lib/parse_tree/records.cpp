#include <wex/parse_tree.h>

namespace
{
// The caller's parse tree; set once by the process, read afterwards.
void *parse_tree_root = nullptr;
} // namespace

extern "C" {

WEX_API uint64_t wex_get_param_type_from_mask(uint64_t mask) noexcept
{
    return mask;
}

WEX_API int32_t bmask128_uint32_copy(bmask128 *dst, uint32_t value) noexcept
{
    for (unsigned bit = 0; bit < 32; ++bit) {
        if (value & (1u << bit))
            dst->bits[bit / 8] |= static_cast<uint8_t>(0x80u >> (bit % 8));
    }
    return 0;
}

WEX_API int32_t wex_parse_tree_root_set(void *root) noexcept
{
    parse_tree_root = root;
    return 0;
}

WEX_API void *wex_parse_tree_root_get(void) noexcept
{
    return parse_tree_root;
}

} // extern "C"
