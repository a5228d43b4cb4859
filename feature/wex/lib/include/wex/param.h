/** @file
 * Command parameters: the record a parsed command is handed over in, its
 * argument records and value layouts, the formatters of the values, and the
 * printers and tests of ranges, interface lists and VSAN masks. */
#ifndef WEX_PARAM_H
#define WEX_PARAM_H

#include <wex/wex_api.h>

WEX_BEGIN_DECLS

/* ---- Value layouts ---------------------------------------------------- */

/** TYPE_LEN_VALUE: a number when length is 8 or less, else the text. */
typedef struct len_value {
    int32_t number;  /**< the value when length is at most 8 */
    uint32_t length; /**< the value's length in bytes */
    char text[];     /**< terminated text, from byte 8 */
} len_value;

/** TYPE_IPV4, TYPE_IPV6, TYPE_IPV4_OR_IPV6. The struct tag is inet_addr; the
 * typedef is wex_inet_addr_t because inet_addr is a C library function. */
typedef struct inet_addr {
    uint32_t family;     /**< 1: IPv4 (the first 4 address bytes); else IPv6 */
    uint8_t address[16]; /**< network byte order */
    int32_t prefix_len;  /**< prefix length, or -1 for none */
} wex_inet_addr_t;

/** TYPE_INT_RANGE, TYPE_VSAN_RANGE, TYPE_HEX_RANGE, and the entries of the
 * multi-ranges. */
typedef struct integer_range {
    uint32_t low;  /**< first value */
    uint32_t high; /**< last value, at least low */
} integer_range;

/** TYPE_INT_MULTI_RANGE, TYPE_VSAN_MULTI_RANGE. */
typedef struct integer_multi_range {
    uint32_t reserved;      /**< not interpreted by the library */
    uint32_t count;         /**< entries in ranges */
    integer_range ranges[]; /**< the ranges, in the order given */
} integer_multi_range;

/** TYPE_HEX_MULTI_RANGE: unlike the integer multi-range, the count comes first. */
typedef struct hex_multi_range {
    uint32_t count;         /**< entries in ranges */
    integer_range ranges[]; /**< the ranges, in the order given */
} hex_multi_range;

/** One run of interfaces, by interface index. */
typedef struct intf_range {
    uint32_t first; /**< interface index of the first interface */
    uint32_t last;  /**< interface index of the last one */
} intf_range;

#define WEX_INTF_RANGE_MAX_INDEX 64 /**< ranges of a list: this many and one more */

/** TYPE_INTERFACE_RANGE, and the interface list of the default-interface
 * execution (passed by value). */
typedef struct intf_range_list {
    uint32_t reserved1;                              /**< not interpreted by the library */
    uint32_t count;                                  /**< entries in use */
    uint8_t reserved2[8];                            /**< not interpreted by the library */
    intf_range ranges[WEX_INTF_RANGE_MAX_INDEX + 1]; /**< the runs, the first count in use */
} intf_range_list;

/** TYPE_COMMUNITY: printed "first:second". */
typedef struct community {
    int32_t first;  /**< printed before the colon */
    int32_t second; /**< printed after it */
} community;

/** TYPE_GUID. */
typedef struct guid {
    uint32_t data1;   /**< first group, printed as 8 hexadecimal digits */
    uint16_t data2;   /**< second group, 4 digits */
    uint16_t data3;   /**< third group, 4 digits */
    uint8_t data4[8]; /**< the last 8 bytes, 2 digits each */
} guid;

/** A network address of 20 bytes, printed with byte 13 last. */
typedef struct type_net {
    uint8_t head;      /**< printed first */
    uint8_t pairs[12]; /**< printed in pairs */
    uint8_t tail;      /**< byte 13, printed last */
    uint16_t words[3]; /**< carried, not printed */
} type_net;

/** A local identifier of 8 bytes. */
typedef struct type_lid {
    uint16_t words[3]; /**< the identifier's three 16-bit words */
    uint8_t bytes[2];  /**< its last two bytes */
} type_lid;

/** A list of interface indexes. */
typedef struct if_index_list {
    int32_t count;        /**< entries in if_indexes */
    uint32_t *if_indexes; /**< the interface indexes; the caller's memory */
} if_index_list;

#define WEX_VSAN_MASK_BYTES 512 /**< bytes of bits of a VSAN or VLAN mask */
#define WEX_VSAN_MAX_ID 4095    /**< the highest id a mask holds */

/** Permitted VSAN ids 0 to 4095: the bit of id n is 0x80 >> (n % 8) of
 * bits[n / 8]; a set bit permits the id. len holds 512. */
typedef struct vsan_mask {
    uint32_t len;                      /**< number of bytes of bits: 512 */
    uint8_t bits[WEX_VSAN_MASK_BYTES]; /**< one bit per id, most significant bit first */
} vsan_mask;

/** Permitted VLAN ids, in the layout of vsan_mask. */
typedef vsan_mask vlan_mask;

WEX_ASSERT_SIZE(len_value, 8);
WEX_ASSERT_SIZE(wex_inet_addr_t, 24);
WEX_ASSERT_OFFSET(wex_inet_addr_t, address, 4);
WEX_ASSERT_OFFSET(wex_inet_addr_t, prefix_len, 20);
WEX_ASSERT_SIZE(integer_range, 8);
WEX_ASSERT_OFFSET(integer_multi_range, count, 4);
WEX_ASSERT_OFFSET(integer_multi_range, ranges, 8);
WEX_ASSERT_OFFSET(hex_multi_range, ranges, 4);
WEX_ASSERT_SIZE(intf_range, 8);
WEX_ASSERT_SIZE(intf_range_list, 536);
WEX_ASSERT_OFFSET(intf_range_list, count, 4);
WEX_ASSERT_OFFSET(intf_range_list, ranges, 16);
WEX_ASSERT_SIZE(community, 8);
WEX_ASSERT_SIZE(guid, 16);
WEX_ASSERT_OFFSET(guid, data4, 8);
WEX_ASSERT_SIZE(type_net, 20);
WEX_ASSERT_OFFSET(type_net, tail, 13);
WEX_ASSERT_OFFSET(type_net, words, 14);
WEX_ASSERT_SIZE(type_lid, 8);
WEX_ASSERT_OFFSET(type_lid, bytes, 6);
WEX_ASSERT_SIZE(vsan_mask, 516);

/* ---- The command-parameter record -------------------------------------- */

/** One argument of a parsed command. 64-bit size: 32 bytes. */
typedef struct param_arg {
    int32_t token_id;   /**< the token id of the argument's node */
    uint32_t type;      /**< a TYPE_* code */
    uint64_t intf_mask; /**< interface-type mask of TYPE_INTERFACE(_RANGE) */
    void *value;        /**< the typed value, or NULL */
    uint32_t addr_type; /**< TYPE_IPV4_OR_IPV6: TYPE_IPV4, else read as IPv6 */
} param_arg;

#define WEX_PINFO_SIZE 6452   /**< bytes of a pinfo on 32-bit targets; 6712 on 64-bit ones */
#define WEX_PINFO_MAX_ARGS 64 /**< argument slots of a pinfo */

/** A parsed command with its session context and arguments. The record does
 * not own the arguments. The operations below do not check their limits
 * (at most WEX_PINFO_MAX_ARGS arguments, argument numbers within the count):
 * the caller keeps them. 64-bit size: 6712 bytes. */
typedef struct pinfo {
    uint8_t param_count;                 /**< arguments in use in args */
    uint8_t ascii_cmd_index;             /**< printed as "Ascii cmd index" */
    uint8_t reserved1[10];               /**< not interpreted */
    int32_t no_flag;                     /**< non-zero: the command began with "no" */
    int32_t debug_flag;                  /**< non-zero: the command asks for debug output */
    int32_t submode_context;             /**< the submode the command was typed in */
    int32_t bcp_msg_type;                /**< the backend message type of the command's node */
    int32_t shell_type;                  /**< the shell image: main or boot */
    int32_t asciigen_level;              /**< the level of ascii generation */
    int32_t ascii_gen;                   /**< non-zero: the command comes from ascii generation */
    int32_t ipcq_q;                      /**< the feature's transport queue */
    uint32_t command_id;                 /**< the command id of the node that completes the command */
    char ascii_cmd[528];                 /**< the command in full words, terminated */
    char vty_id[200];                    /**< the terminal of the session */
    char username[64];                   /**< the user who typed the command */
    char session_id[64];                 /**< the shell session that sent the command */
    param_arg *args[WEX_PINFO_MAX_ARGS]; /**< the arguments in the order typed, the first param_count in use;
                                            not owned */
    int32_t sup_state;                   /**< the supervisor's state */
    int32_t user_mode_state;             /**< the user mode's state */
    int32_t is_admin;                    /**< non-zero: the user is an administrator */
    uint8_t reserved2[36];               /**< not interpreted */
    int32_t exec_filter_mode;            /**< the output filter of an exec command */
    uint8_t reserved3[1032];             /**< not interpreted */
    int32_t script_mode;                 /**< non-zero: the command comes from a script */
    uint8_t reserved4[8];                /**< not interpreted */
    int32_t prc_mode;                    /**< the process mode */
    uint32_t info_flags;                 /**< bit 0: per-VSAN ascii generation */
    uint32_t user_perms_mask;            /**< the user's permission bits */
    uint8_t reserved5[4];                /**< not interpreted */
    uint32_t filter;                     /**< the output filter's kind */
    uint8_t reserved6[4176];             /**< not interpreted */
} pinfo;

#define WEX_PINFO_PER_VSAN_ASCII_GEN 0x1u /**< info_flags bit: per-VSAN ascii generation */

#if UINTPTR_MAX == 0xFFFFFFFFu
WEX_ASSERT_SIZE(param_arg, 24);
WEX_ASSERT_OFFSET(param_arg, intf_mask, 8);
WEX_ASSERT_OFFSET(param_arg, value, 16);
WEX_ASSERT_OFFSET(param_arg, addr_type, 20);
WEX_ASSERT_SIZE(pinfo, WEX_PINFO_SIZE);
WEX_ASSERT_OFFSET(pinfo, ascii_cmd_index, 1);
WEX_ASSERT_OFFSET(pinfo, no_flag, 12);
WEX_ASSERT_OFFSET(pinfo, debug_flag, 16);
WEX_ASSERT_OFFSET(pinfo, submode_context, 20);
WEX_ASSERT_OFFSET(pinfo, bcp_msg_type, 24);
WEX_ASSERT_OFFSET(pinfo, shell_type, 28);
WEX_ASSERT_OFFSET(pinfo, asciigen_level, 32);
WEX_ASSERT_OFFSET(pinfo, ascii_gen, 36);
WEX_ASSERT_OFFSET(pinfo, ipcq_q, 40);
WEX_ASSERT_OFFSET(pinfo, command_id, 44);
WEX_ASSERT_OFFSET(pinfo, ascii_cmd, 48);
WEX_ASSERT_OFFSET(pinfo, vty_id, 576);
WEX_ASSERT_OFFSET(pinfo, username, 776);
WEX_ASSERT_OFFSET(pinfo, session_id, 840);
WEX_ASSERT_OFFSET(pinfo, args, 904);
WEX_ASSERT_OFFSET(pinfo, sup_state, 1160);
WEX_ASSERT_OFFSET(pinfo, user_mode_state, 1164);
WEX_ASSERT_OFFSET(pinfo, is_admin, 1168);
WEX_ASSERT_OFFSET(pinfo, exec_filter_mode, 1208);
WEX_ASSERT_OFFSET(pinfo, script_mode, 2244);
WEX_ASSERT_OFFSET(pinfo, prc_mode, 2256);
WEX_ASSERT_OFFSET(pinfo, info_flags, 2260);
WEX_ASSERT_OFFSET(pinfo, user_perms_mask, 2264);
WEX_ASSERT_OFFSET(pinfo, filter, 2272);
WEX_ASSERT_OFFSET(pinfo, reserved6, 2276);
#else
WEX_ASSERT_SIZE(param_arg, 32);
WEX_ASSERT_SIZE(pinfo, 6712);
#endif

/** Sets the argument count to 0; the argument records are not touched. 0. */
WEX_API int pinfo_delete_all_arg(pinfo *info) WEX_NOEXCEPT;
/** Appends an argument. 0. */
WEX_API int pinfo_insert_arg(pinfo *info, param_arg *arg) WEX_NOEXCEPT;
/** Inserts an argument at the 0-based index (0 to the count), moving the
 * later ones up. 0. */
WEX_API int pinfo_insert_arg_at_index(pinfo *info, param_arg *arg, int index) WEX_NOEXCEPT;
/** Replaces argument n (1-based). 0. */
WEX_API int pinfo_set_arg(pinfo *info, param_arg *arg, int n) WEX_NOEXCEPT;
/** Removes argument n (1-based), moving the later ones down. 0. */
WEX_API int pinfo_delete_arg(pinfo *info, int n) WEX_NOEXCEPT;
/** Fills an argument's token id, type, interface mask and value; the fourth
 * parameter is not stored and addr_type is left alone. 0. */
WEX_API int populate_param_arg(param_arg *arg, int32_t token_id, uint32_t type, uint32_t unused,
                               uint64_t intf_mask, void *value) WEX_NOEXCEPT;
/** Sets entry index (0 to 64) of a range list; a larger index is ignored.
 * The count is the caller's to set. 0. */
WEX_API int populate_intf_range(intf_range_list *list, uint32_t index, uint32_t first,
                                uint32_t last) WEX_NOEXCEPT;
/** Fills one range. 0. */
WEX_API int populate_mono_intf_range(intf_range *range, uint32_t first, uint32_t last) WEX_NOEXCEPT;
/** Stores an interface index as a TYPE_INTERFACE value. 0. */
WEX_API int populate_intf(uint32_t *value, uint32_t if_index) WEX_NOEXCEPT;
/** The interface-type mask of the last interface argument: 0 when one is
 * found with a non-zero mask; -1 otherwise (and *mask is then 0). */
WEX_API int pinfo_get_latest_intf_mask(const pinfo *info, uint64_t *mask) WEX_NOEXCEPT;
/** Copies the source's context without its arguments (count 0), or zeroes
 * the destination when source is NULL. 0. */
WEX_API int pinfo_basic_copy(pinfo *dest, const pinfo *source) WEX_NOEXCEPT;

/* ---- Value formatters ------------------------------------------------ */

/* Each print_X_to_str returns a new text that the caller frees, or NULL
 * when memory runs out; print_X prints that text on standard output (and
 * nothing when it could not be made). */

/** A copy of text, or NULL when memory runs out. */
WEX_API char *create_str(const char *text) WEX_NOEXCEPT;
/** @{ */
/** Prints text with "%s" and flushes standard output; NULL prints nothing. */
WEX_API void print_string(const char *text) WEX_NOEXCEPT;
WEX_API void print_user_at_host(const char *text) WEX_NOEXCEPT;
WEX_API void print_dns_name(const char *text) WEX_NOEXCEPT;
WEX_API void print_inet_name(const char *text) WEX_NOEXCEPT;
/** @} */

WEX_API char *print_integer_to_str(int32_t value) WEX_NOEXCEPT;      /**< "%d" */
WEX_API void print_integer(int32_t value) WEX_NOEXCEPT;              /**< the same text on standard output */
WEX_API char *print_intx_to_str(uint32_t value) WEX_NOEXCEPT;        /**< "0x%0x" */
WEX_API void print_intx(uint32_t value) WEX_NOEXCEPT;                /**< the same text on standard output */
WEX_API char *print_u_long_long_to_str(uint64_t value) WEX_NOEXCEPT; /**< signed decimal */
WEX_API void print_u_long_long(uint64_t value) WEX_NOEXCEPT;         /**< the same text on standard output */
WEX_API char *print_integer_range_to_str(const integer_range *range) WEX_NOEXCEPT; /**< "low - high" */
WEX_API void
print_integer_range(const integer_range *range) WEX_NOEXCEPT; /**< the same text on standard output */
WEX_API char *print_community_to_str(const community *value) WEX_NOEXCEPT; /**< "first:second" */
WEX_API void print_community(const community *value) WEX_NOEXCEPT; /**< the same text on standard output */
/** @{ */
/** "0x" and two hexadecimal digits per byte, in memory order; count <= 0
 * gives "0x". The whole text, however many bytes. */
WEX_API char *print_hex_to_str(const void *bytes, int32_t count) WEX_NOEXCEPT;
WEX_API void print_hex(const void *bytes, int32_t count) WEX_NOEXCEPT;
WEX_API char *print_ip_to_str(const uint32_t *address) WEX_NOEXCEPT; /**< dotted IPv4, network order */
WEX_API void print_ip(const uint32_t *address) WEX_NOEXCEPT;
WEX_API char *print_ipv4_to_str(const wex_inet_addr_t *address) WEX_NOEXCEPT;
WEX_API void print_ipv4(const wex_inet_addr_t *address) WEX_NOEXCEPT;
WEX_API char *print_ipv6_to_str(const wex_inet_addr_t *address) WEX_NOEXCEPT;
WEX_API void print_ipv6(const wex_inet_addr_t *address) WEX_NOEXCEPT;
/** @} */
/** @{ */
/** Family 1 as IPv4, any other as IPv6. */
WEX_API char *print_inet_addr_to_str(const wex_inet_addr_t *address) WEX_NOEXCEPT;
WEX_API void print_inet_addr(const wex_inet_addr_t *address) WEX_NOEXCEPT;
WEX_API char *print_ipv4_prefix_to_str(const wex_inet_addr_t *address) WEX_NOEXCEPT; /**< "a.b.c.d/len" */
WEX_API void print_ipv4_prefix(const wex_inet_addr_t *address) WEX_NOEXCEPT;
WEX_API char *print_ipv6_prefix_to_str(const wex_inet_addr_t *address) WEX_NOEXCEPT;
WEX_API void print_ipv6_prefix(const wex_inet_addr_t *address) WEX_NOEXCEPT;
/** @} */
/** @{ */
/** The interface's name as the platform writes it. */
WEX_API char *print_interface_to_str(const uint32_t *if_index) WEX_NOEXCEPT;
WEX_API void print_interface(const uint32_t *if_index) WEX_NOEXCEPT;
/** @} */
/** @{ */
/** The entries' texts joined with " , ", at most 4095 characters. */
WEX_API char *print_interface_range_to_str(const intf_range_list *list) WEX_NOEXCEPT;
WEX_API void print_interface_range(const intf_range_list *list) WEX_NOEXCEPT;
WEX_API char *print_type_net_to_str(const type_net *net) WEX_NOEXCEPT;
WEX_API void print_type_net(const type_net *net) WEX_NOEXCEPT;
WEX_API char *print_type_lid_to_str(const type_lid *lid) WEX_NOEXCEPT;
WEX_API void print_type_lid(const type_lid *lid) WEX_NOEXCEPT;
/** @} */
/** The GUID in braces: data1, data2, data3 and data4 in hexadecimal groups of 8-4-4-4-12 digits. */
WEX_API void print_guid(const guid *value) WEX_NOEXCEPT;
/** "0xlow - 0xhigh" and a newline. */
WEX_API void print_hex_range(const integer_range *range) WEX_NOEXCEPT;

/* ---- Ranges, interface lists, VSAN masks, user restrictions ------------ */

/** "Ifindex list length: N", then each index in hexadecimal. */
WEX_API void print_if_index_list(const if_index_list *list) WEX_NOEXCEPT;
/** " 0xlow - 0xhigh" per entry, comma-separated; no newline. */
WEX_API void print_hex_multi_range(const hex_multi_range *ranges) WEX_NOEXCEPT;
/** " low - high" per entry, comma-separated; no newline. */
WEX_API void print_integer_multi_range(const integer_multi_range *ranges) WEX_NOEXCEPT;
/** "Permitted vsans: 1-5,7,10-11" (or "none") and a newline, through
 * wex_buf_printf so that capture takes it. */
WEX_API void wex_print_vsan_mask(const vsan_mask *mask) WEX_NOEXCEPT;
/** 1 when the id (0 to 4095) is permitted, else 0. */
WEX_API int wex_is_vsan_allowed(const vsan_mask *mask, int vsan_id) WEX_NOEXCEPT;
/** 1 when every id from low to high (0 to 4095) is permitted, or low > high. */
WEX_API int wex_is_vsan_range_allowed(const vsan_mask *mask, const integer_range *range) WEX_NOEXCEPT;
/** @{ */
/** 0 when all 4096 ids are permitted, else 1. */
WEX_API int wex_is_user_vsan_restricted(const vsan_mask *mask) WEX_NOEXCEPT;
WEX_API int wex_is_user_vlan_restricted(const vlan_mask *mask) WEX_NOEXCEPT;
/** @} */
/** 1 when the mask is exactly one of the interface types configured per VSAN. */
WEX_API int wex_is_interface_type_per_vsan(uint64_t intf_type_mask) WEX_NOEXCEPT;
/** 1 when the interface's type is restricted, or the index cannot be resolved. */
WEX_API int wex_is_interface_type_restricted(uint32_t if_index) WEX_NOEXCEPT;
/** 0 for -1 (no time-out), any other value unchanged. */
WEX_API int wex_get_timeout_user_value(int value) WEX_NOEXCEPT;

/** @{ */
/** The process's submode command-history setting. */
WEX_API extern int32_t wex_submode_cmd_history;
WEX_API void wex_submode_cmd_history_init(int value) WEX_NOEXCEPT;
WEX_API int wex_get_submode_cmd_history(void) WEX_NOEXCEPT;
/** @} */

/* ---- Interface help --------------------------------------------------- */

/** @{ */
/** Help of a registered interface type: a text and up to five named numeric
 * fields with their ranges. Texts longer than a 64-byte field are cut to 63
 * characters and terminated. */
#define WEX_INTF_HELP_MAX_FIELDS 5
#define WEX_INTF_HELP_TEXT_SIZE 64
/** @} */

/** One named numeric field of an interface type and its range. */
typedef struct intf_field_help_info {
    char name[WEX_INTF_HELP_TEXT_SIZE]; /**< the field's name */
    int32_t min;                        /**< its lowest value */
    int32_t max;                        /**< its highest value */
} intf_field_help_info;

/** The help of an interface type: its text and its fields. */
typedef struct intf_help_info {
    intf_field_help_info fields[WEX_INTF_HELP_MAX_FIELDS]; /**< the fields, the first num_fields in use */
    char help_str[WEX_INTF_HELP_TEXT_SIZE];                /**< the type's help text */
    int32_t num_fields; /**< entries in use, 0 to WEX_INTF_HELP_MAX_FIELDS */
} intf_help_info;

WEX_ASSERT_SIZE(intf_field_help_info, 72);
WEX_ASSERT_OFFSET(intf_field_help_info, min, 64);
WEX_ASSERT_OFFSET(intf_field_help_info, max, 68);
WEX_ASSERT_SIZE(intf_help_info, 428);
WEX_ASSERT_OFFSET(intf_help_info, help_str, 360);
WEX_ASSERT_OFFSET(intf_help_info, num_fields, 424);

/** Clears the record and stores the help text (NULL: empty). 0; -1 for a
 * NULL record. */
WEX_API int32_t wex_intf_help_info_reset(intf_help_info *info, const char *help_str) WEX_NOEXCEPT;
/** Appends a field (NULL name: empty). 0; -1, with the record unchanged,
 * when all five fields are in use or the record is NULL. */
WEX_API int32_t wex_intf_help_info_add(intf_help_info *info, const char *name, int32_t min,
                                       int32_t max) WEX_NOEXCEPT;
/** Copies src into dst (note the order); a NULL src resets dst. 0; -1 for a
 * NULL dst. */
WEX_API int32_t wex_intf_help_info_copy(const intf_help_info *src, intf_help_info *dst) WEX_NOEXCEPT;
/** Prints the heading, the help text and one line per field on standard
 * output. 0; -1 for NULL. */
WEX_API int32_t wex_intf_help_info_show(const intf_help_info *info) WEX_NOEXCEPT;
/** Prints "\t name <min-max>" without a newline. 0; -1 for NULL. */
WEX_API int32_t wex_intf_field_help_info_show(const intf_field_help_info *field) WEX_NOEXCEPT;

/* ---- URI info ------------------------------------------------------------ */

/** A TYPE_URI value: the URI split into its components. Every text field
 * holds terminated text; components longer than a field are cut. */
typedef struct uri_info {
    uint32_t type;        /**< from the platform's scheme map; 0 without a scheme */
    char scheme[32];      /**< the scheme, as "ftp" */
    char user[32];        /**< the user part */
    char password[32];    /**< the password part */
    char server[64];      /**< the host */
    char host_prefix[64]; /**< put in front of the host by wex_uri_info_populate */
    int32_t port;         /**< 0 when absent */
    char path[256];       /**< the path */
    char vrf[32];         /**< cleared by wex_xml_parse_uri2, else the record's users' */
} uri_info;

WEX_ASSERT_SIZE(uri_info, 520);
WEX_ASSERT_OFFSET(uri_info, scheme, 4);
WEX_ASSERT_OFFSET(uri_info, user, 36);
WEX_ASSERT_OFFSET(uri_info, password, 68);
WEX_ASSERT_OFFSET(uri_info, server, 100);
WEX_ASSERT_OFFSET(uri_info, host_prefix, 164);
WEX_ASSERT_OFFSET(uri_info, port, 228);
WEX_ASSERT_OFFSET(uri_info, path, 232);
WEX_ASSERT_OFFSET(uri_info, vrf, 488);

/** @{ */
/** Parses text into info; without a scheme in the text, the type comes from
 * default_scheme (NULL: type 0). 0, or the parser's non-zero result with
 * info untouched. */
WEX_API int32_t wex_xml_parse_uri2(uri_info *info, const char *text, const char *default_scheme) WEX_NOEXCEPT;
WEX_API int32_t wex_xml_parse_uri(uri_info *info, const char *text) WEX_NOEXCEPT;
/** @} */
/** Fills info from components (NULL texts: empty): server is host_prefix
 * followed by host, a relative path gains a leading "/". The vrf is not
 * written. 0; -1 for a NULL record. */
WEX_API int32_t wex_uri_info_populate(uri_info *info, const char *scheme, const char *user,
                                      const char *password, const char *host_prefix, const char *host,
                                      int32_t port, const char *path) WEX_NOEXCEPT;
/** Refills dst from src's components (empty host prefix). 0; -1 for NULL. */
WEX_API int32_t wex_uri_info_copy(uri_info *dst, const uri_info *src) WEX_NOEXCEPT;
/** Prints type, scheme, user, server, port, path and vrf, those that are
 * set, on one line without a newline. 0; -1 for NULL. */
WEX_API int32_t wex_uri_info_print(const uri_info *info) WEX_NOEXCEPT;

/* ---- Parameter dump ----------------------------------------------------- */

/** Prints the whole record, then its arguments, on standard output. */
WEX_API void print_pinfo(const pinfo *info) WEX_NOEXCEPT;
/** Prints one argument: its token id, a label naming its type and its value. */
WEX_API void print_pinfo_arg(const param_arg *arg) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_PARAM_H */
