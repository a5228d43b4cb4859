// URI arguments: the platform's parser splits the text, the record keeps
// the components in fixed fields.
#include <wex/param.h>
#include <wex/parse_tree.h>

#include "common/text_field.h"

#include "uriparse.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

namespace
{

// The parse context the platform's parser works in.
struct UriParseContext {
    uint32_t magic = URIPARSE_CONTEXT_MAGIC;
    uint32_t version = URIPARSE_CONTEXT_VERSION;
    char strings[1016];
};
static_assert(sizeof(UriParseContext) == 1024);

// Texts given by callers: at most size - 1 characters.
constexpr uint32_t kShortText = 31; // scheme, user, password
constexpr uint32_t kHostText = 63;  // host prefix, host
constexpr uint32_t kPathText = 255;

// A parsed component as long as its field or longer is cut and terminated:
// the record's readers expect terminated text.
template <std::size_t N> void copy_component(char (&field)[N], const char *component) noexcept
{
    robust_strncpy(field, component, N);
}

// The host prefix and the host, each cut to 62 characters, together cut to
// the 63 characters the server field holds.
void join_server(char (&server)[64], std::string_view prefix, const char *host) noexcept
{
    char cut_host[kHostText];
    robust_strncpy(cut_host, host, sizeof cut_host);
    std::snprintf(server, sizeof server, "%.*s%s", static_cast<int>(prefix.size()), prefix.data(), cut_host);
}

// A relative path gains its leading "/"; the whole stays within the field.
void set_path(char (&field)[256], const char *path) noexcept
{
    if (path && path[0] != '/')
        std::snprintf(field, sizeof field, "/%s", path);
    else
        robust_strncpy(field, path, kPathText);
}

} // namespace

extern "C" {

WEX_API int32_t wex_xml_parse_uri2(uri_info *info, const char *text, const char *default_scheme) noexcept
{
    if (!info)
        return -1;
    UriParseContext context;
    warden_strings_init(context.strings, 10, sizeof context.strings);
    const int result = uriparse_parse(text, &context, 1);
    if (result != 0)
        return result;
    std::memset(info, 0, sizeof *info);
    copy_component(info->scheme, uriparse_scheme_get(&context));
    if (info->scheme[0] != '\0')
        info->type = uri_map_get_uri_type_from_scheme(info->scheme);
    else if (default_scheme)
        info->type = uri_map_get_uri_type_from_scheme(default_scheme);
    copy_component(info->user, uriparse_user_get(&context));
    copy_component(info->password, uriparse_password_get(&context));
    copy_component(info->server, uriparse_host_get(&context));
    info->port = static_cast<int32_t>(std::strtol(uriparse_port_get(&context), nullptr, 10));
    copy_component(info->path, uriparse_path_get(&context));
    return 0;
}

WEX_API int32_t wex_xml_parse_uri(uri_info *info, const char *text) noexcept
{
    return wex_xml_parse_uri2(info, text, nullptr);
}

WEX_API int32_t wex_uri_info_populate(uri_info *info, const char *scheme, const char *user,
                                      const char *password, const char *host_prefix, const char *host,
                                      int32_t port, const char *path) noexcept
{
    if (!info)
        return -1;
    info->type = uri_map_get_uri_type_from_scheme(scheme);
    robust_strncpy(info->scheme, scheme, kShortText);
    robust_strncpy(info->user, user, kShortText);
    robust_strncpy(info->password, password, kShortText);
    robust_strncpy(info->host_prefix, host_prefix, kHostText);
    join_server(info->server, wex::field_text(info->host_prefix), host);
    info->port = port;
    set_path(info->path, path);
    return 0;
}

WEX_API int32_t wex_uri_info_copy(uri_info *dst, const uri_info *src) noexcept
{
    if (!dst || !src)
        return -1;
    // src may be dst, and its texts may fill their fields: a terminated
    // copy is read instead.
    uri_info s = *src;
    for (std::span<char> field :
         {std::span<char>(s.scheme), std::span<char>(s.user), std::span<char>(s.password),
          std::span<char>(s.server), std::span<char>(s.path)})
        field.back() = '\0';
    return wex_uri_info_populate(dst, s.scheme, s.user, s.password, "", s.server, s.port, s.path);
}

WEX_API int32_t wex_uri_info_print(const uri_info *info) noexcept
{
    if (!info)
        return -1;
    print_int(" type", static_cast<int32_t>(info->type));
    wex::print_text_field(" Scheme", info->scheme, sizeof info->scheme);
    wex::print_text_field(" user", info->user, sizeof info->user);
    wex::print_text_field(" server", info->server, sizeof info->server);
    print_int(" port", info->port);
    wex::print_text_field(" path", info->path, sizeof info->path);
    wex::print_text_field(" vrf", info->vrf, sizeof info->vrf);
    return 0;
}

} // extern "C"
