/** @file
 * Common declarations of the libwex C interface: export and linkage macros,
 * layout assertions and the 4-byte aligned 64-bit type of the wire records. */
#ifndef WEX_WEX_API_H
#define WEX_WEX_API_H

#include <stddef.h>
#include <stdint.h>

/** @def WEX_API
 * Marks a name the library exports; empty outside the library's build. */
/** @def WEX_BEGIN_DECLS
 * Opens the declarations of C linkage (nothing in C). */
/** @def WEX_END_DECLS
 * Closes them. */
/** @def WEX_NOEXCEPT
 * Says in C++ that no exception leaves the library. */
/** @def WEX_STATIC_ASSERT(cond, msg)
 * A check at compile time, in C11 and in C++. */
#if defined(WEX_BUILDING_LIBRARY)
#define WEX_API __attribute__((visibility("default")))
#else
#define WEX_API
#endif

#ifdef __cplusplus
#define WEX_BEGIN_DECLS extern "C" {
#define WEX_END_DECLS }
#define WEX_NOEXCEPT noexcept
#define WEX_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define WEX_BEGIN_DECLS
#define WEX_END_DECLS
#define WEX_NOEXCEPT
#define WEX_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

/** Asserts the size of a fixed-layout record. */
#define WEX_ASSERT_SIZE(type, size) WEX_STATIC_ASSERT(sizeof(type) == (size), #type " has the wrong size")

/** Asserts the byte offset of one field of a fixed-layout record. */
#define WEX_ASSERT_OFFSET(type, field, off)                                                                  \
    WEX_STATIC_ASSERT(offsetof(type, field) == (off), #type "." #field " has the wrong offset")

/** A 64-bit value that may stand at an offset that is a multiple of 4 only:
 * the wire records place some masks at such offsets, and the records must
 * keep their exact size on every target. */
typedef uint64_t wex_u64_a4 __attribute__((aligned(4)));

/** @{ */
/** The shell's status space: 0 for success, or a code whose high half is 0x4054. */
#define WEX_STATUS_SUCCESS 0x00000000u
#define WEX_STATUS_FAILURE 0x40540001u
#define WEX_STATUS_FILE_MISSING 0x40540002u
#define WEX_STATUS_INTERPRETER_ONE 0x40540003u
#define WEX_STATUS_BAD_EXEC_RECORD 0x4054001Eu
/** @} */

#endif /* WEX_WEX_API_H */
