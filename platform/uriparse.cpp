// The URI parser stand-in, on liburiparser: RFC 3986 parsing, with the
// components kept as terminated strings in the caller's string area.
#include "uriparse.h"

#include <uriparser/Uri.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <strings.h>

namespace
{

// The string area: bookkeeping, then the strings one after another.
struct StringArea {
    uint16_t capacity; // strings it may hold
    uint16_t count;    // strings it holds
    uint16_t size;     // bytes of the whole area
    uint16_t used;     // bytes of data in use
    uint16_t offsets[10];
    char data[1];
};
constexpr std::size_t kAreaHead = offsetof(StringArea, data);
constexpr uint32_t kMaxStrings = 10;
constexpr std::size_t kContextHead = 8;

enum Component { kScheme, kUser, kPassword, kHost, kPort, kPath, kComponents };

struct Context {
    uint32_t magic;
    uint32_t version;
};

bool is_context(const void *context)
{
    if (!context)
        return false;
    Context head;
    std::memcpy(&head, context, sizeof head);
    return head.magic == URIPARSE_CONTEXT_MAGIC && head.version == URIPARSE_CONTEXT_VERSION;
}

StringArea *area_of(void *context)
{
    return reinterpret_cast<StringArea *>(static_cast<char *>(context) + kContextHead);
}

const StringArea *area_of(const void *context)
{
    return reinterpret_cast<const StringArea *>(static_cast<const char *>(context) + kContextHead);
}

std::string text_of(const UriTextRangeA &range)
{
    return range.first ? std::string(range.first, range.afterLast) : std::string();
}

std::string decoded(std::string text, bool decode)
{
    if (decode && !text.empty())
        text.resize(static_cast<std::size_t>(uriUnescapeInPlaceA(text.data()) - text.data()));
    return text;
}

std::string path_of(const UriUriA &uri)
{
    std::string path = uri.absolutePath || uri.hostText.first ? "/" : "";
    for (const UriPathSegmentA *segment = uri.pathHead; segment; segment = segment->next) {
        path += text_of(segment->text);
        if (segment->next)
            path += '/';
    }
    return path;
}

std::array<std::string, kComponents> components_of(const UriUriA &uri, bool decode)
{
    std::array<std::string, kComponents> parts;
    parts[kScheme] = text_of(uri.scheme);
    const std::string user_info = text_of(uri.userInfo);
    const std::size_t colon = user_info.find(':');
    parts[kUser] = decoded(user_info.substr(0, colon), decode);
    parts[kPassword] = colon == std::string::npos ? "" : decoded(user_info.substr(colon + 1), decode);
    parts[kHost] = text_of(uri.hostText);
    parts[kPort] = text_of(uri.portText);
    parts[kPath] = decoded(path_of(uri), decode);
    return parts;
}

// Stores the strings in the area; false, with the area emptied, when they
// do not fit.
bool store(StringArea *area, const std::array<std::string, kComponents> &parts)
{
    area->count = 0;
    area->used = 0;
    const std::size_t room = area->size - kAreaHead;
    std::size_t used = 0;
    for (const std::string &part : parts) {
        if (area->count >= area->capacity || part.size() + 1 > room - used) {
            area->count = 0;
            return false;
        }
        std::memcpy(area->data + used, part.c_str(), part.size() + 1);
        area->offsets[area->count++] = static_cast<uint16_t>(used);
        used += part.size() + 1;
    }
    area->used = static_cast<uint16_t>(used);
    return true;
}

const char *component(const void *context, Component which)
{
    if (!is_context(context))
        return "";
    const StringArea *area = area_of(context);
    return which < area->count ? area->data + area->offsets[which] : "";
}

struct Scheme {
    const char *name;
    uint32_t type;
};
constexpr Scheme kSchemes[] = {
    {"bootflash", 1}, {"slot0", 2}, {"ftp", 3},  {"tftp", 4},
    {"scp", 5},       {"sftp", 6},  {"http", 7}, {"volatile", 8},
};

} // namespace

extern "C" int warden_strings_init(void *area, uint32_t count, uint32_t size)
{
    if (!area || size < kAreaHead + 1 || size > UINT16_MAX || count > kMaxStrings)
        return -1;
    std::memset(area, 0, size);
    auto *strings = static_cast<StringArea *>(area);
    strings->capacity = static_cast<uint16_t>(count);
    strings->size = static_cast<uint16_t>(size);
    return 0;
}

extern "C" int uriparse_parse(const char *text, void *context, int flags)
{
    if (!text || !is_context(context))
        return URIPARSE_ERR_CONTEXT;
    StringArea *area = area_of(context);
    area->count = 0;
    UriUriA uri;
    const char *error_at = nullptr;
    if (uriParseSingleUriA(&uri, text, &error_at) != URI_SUCCESS)
        return URIPARSE_ERR_SYNTAX;
    const bool stored = store(area, components_of(uri, (flags & URIPARSE_DECODE) != 0));
    uriFreeUriMembersA(&uri);
    return stored ? 0 : URIPARSE_ERR_TOO_LONG;
}

extern "C" const char *uriparse_scheme_get(const void *context)
{
    return component(context, kScheme);
}

extern "C" const char *uriparse_user_get(const void *context)
{
    return component(context, kUser);
}

extern "C" const char *uriparse_password_get(const void *context)
{
    return component(context, kPassword);
}

extern "C" const char *uriparse_host_get(const void *context)
{
    return component(context, kHost);
}

extern "C" const char *uriparse_port_get(const void *context)
{
    return component(context, kPort);
}

extern "C" const char *uriparse_path_get(const void *context)
{
    return component(context, kPath);
}

extern "C" uint32_t uri_map_get_uri_type_from_scheme(const char *scheme)
{
    if (!scheme)
        return 0;
    for (const Scheme &known : kSchemes) {
        if (strcasecmp(known.name, scheme) == 0)
            return known.type;
    }
    return 0;
}
