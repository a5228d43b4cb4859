#include <wex/parse_tree.h>

#include "common/alloc.h"

#include <cstdio>
#include <cstring>
#include <string_view>
#include <strings.h>

namespace
{

std::string_view trim_blanks(std::string_view s) noexcept
{
    const auto first = s.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    const auto last = s.find_last_not_of(' ');
    return s.substr(first, last - first + 1);
}

} // namespace

extern "C" {

WEX_API uint32_t robust_strlen(const char *s) noexcept
{
    return s ? static_cast<uint32_t>(std::strlen(s)) : 0;
}

WEX_API void robust_strcpy(char *dst, const char *src) noexcept
{
    if (!src) {
        dst[0] = '\0';
        return;
    }
    std::strcpy(dst, src);
}

WEX_API void robust_strncpy(char *dst, const char *src, uint32_t size) noexcept
{
    // A zero capacity has no room even for the terminator: write nothing.
    if (size == 0)
        return;
    if (!src) {
        dst[0] = '\0';
        return;
    }
    // strncpy's NUL padding is part of the contract: fields go on the wire.
    std::strncpy(dst, src, size - 1);
    dst[size - 1] = '\0';
}

WEX_API void robust_strncat(char *dst, const char *src, uint32_t size) noexcept
{
    const uint32_t len = robust_strlen(dst);
    const int64_t room = static_cast<int64_t>(size) - len;
    if (room > 0)
        robust_strncpy(dst + len, src, static_cast<uint32_t>(room));
}

WEX_API int32_t robust_strcasecmp(const char *a, const char *b) noexcept
{
    if (!b)
        return -1;
    if (!a)
        return 1;
    return strcasecmp(a, b);
}

WEX_API int32_t treelink_lexicograph_cmp(const void *a, const void *b) noexcept
{
    const auto token_of = [](const void *node) { return static_cast<const parse_tree_node *>(node)->Token; };
    return robust_strcasecmp(token_of(a), token_of(b));
}

WEX_API int32_t treegen_lexicograph_cmp(const void *a, const void *b) noexcept
{
    const auto token_of = [](const void *node) { return static_cast<const generator_node *>(node)->Token; };
    return robust_strcasecmp(token_of(a), token_of(b));
}

WEX_API uint32_t strtrim(const char *str, char **out) noexcept
{
    // A missing text or result slot trims to nothing rather than crashing
    // the caller's process.
    if (!out)
        return 0;
    *out = nullptr;
    const std::string_view whole(str ? str : "");
    if (whole.size() > STRING_BUFFER_SIZE)
        std::puts("Error: String length bigger than STRING_BUFFER_SIZE");
    // The result is allocated at its exact size, so a trimmed text of
    // STRING_BUFFER_SIZE characters or more comes back whole, never cut.
    const std::string_view trimmed = trim_blanks(whole);
    if (trimmed.empty())
        return 0;
    auto *copy = static_cast<char *>(wex::mem_alloc(trimmed.size() + 1));
    // Out of memory: no text, as for a blank input; the caller frees nothing.
    if (!copy)
        return 0;
    std::memcpy(copy, trimmed.data(), trimmed.size());
    copy[trimmed.size()] = '\0';
    *out = copy;
    return static_cast<uint32_t>(trimmed.size());
}

} // extern "C"
