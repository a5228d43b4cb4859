/* The switch's URI parser and scheme map.
 *
 * A parse context is 1024 bytes: the word URIPARSE_CONTEXT_MAGIC, the word
 * URIPARSE_CONTEXT_VERSION, then a string area of 1016 bytes that
 * warden_strings_init prepares and that uriparse_parse fills with the
 * components of one URI. */
#ifndef WEX_PLATFORM_URIPARSE_H
#define WEX_PLATFORM_URIPARSE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define URIPARSE_CONTEXT_MAGIC 0x4BDA43CFu
#define URIPARSE_CONTEXT_VERSION 0x00040000u

/* uriparse_parse flags: decode %XX escapes in the user, password and path. */
#define URIPARSE_DECODE 1

/* uriparse_parse results beside 0. */
#define URIPARSE_ERR_SYNTAX 1   /* not a URI (RFC 3986) */
#define URIPARSE_ERR_TOO_LONG 2 /* the components do not fit the string area */
#define URIPARSE_ERR_CONTEXT 3  /* the context lacks its leading words, or the text is NULL */

/* Prepares a string area of size bytes for up to count strings. Returns 0,
 * or -1 when the area is too small for its own bookkeeping. */
int warden_strings_init(void *area, uint32_t count, uint32_t size);

/* Parses text into the context's string area. 0, or a URIPARSE_ERR_* code
 * (the area then holds no components). */
int uriparse_parse(const char *text, void *context, int flags);

/* The components of the last successful parse, terminated; "" when the URI
 * has none (or nothing was parsed). The path of a URI with an authority
 * begins with "/"; the port is its digits. */
const char *uriparse_scheme_get(const void *context);
const char *uriparse_user_get(const void *context);
const char *uriparse_password_get(const void *context);
const char *uriparse_host_get(const void *context);
const char *uriparse_port_get(const void *context);
const char *uriparse_path_get(const void *context);

/* The URI type of a scheme, compared without regard to case: 1 bootflash,
 * 2 slot0, 3 ftp, 4 tftp, 5 scp, 6 sftp, 7 http, 8 volatile; 0 for any other
 * scheme or NULL. */
uint32_t uri_map_get_uri_type_from_scheme(const char *scheme);

#ifdef __cplusplus
}
#endif

#endif
