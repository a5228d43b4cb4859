/** @file
 * The shell daemon client: how the library addresses wexd, the parse-tree
 * registration queue and the notification listeners, the opcodes it sends
 * and the status codes that come back. */
#ifndef WEX_WEXD_CLIENT_H
#define WEX_WEXD_CLIENT_H

#include <wex/param.h>
#include <wex/parse_tree.h>
#include <wex/wex_api.h>

/** Every message the library sends goes to this address. */
#define WEX_DEST_ADDRESS 0xFE000000u

/** @{ */
/** Destination queues. */
#define WEXD_QUEUE 37u             /**< the shell daemon wexd */
#define PARSE_TREE_QUEUE 296u      /**< parse-tree and command-file registration, dynamic ranges */
#define WEX_NOTIFY_QUEUE 0u        /**< notifications, no particular receiver */
#define ASCII_CFG_SERVER_QUEUE 76u /**< the configuration server */
/** @} */

/** @{ */
/** Message types of the request/response layer. */
#define WEX_MSG_TYPE_READ 1u
#define WEX_MSG_TYPE_READ_NEXT 2u /**< continues an enumeration begun with WEX_MSG_TYPE_READ */
#define WEX_MSG_TYPE_WRITE 3u
#define WEX_MSG_TYPE_ROLE_READ 5u      /**< role operations accept it wherever they accept 1 */
#define WEX_MSG_TYPE_ROLE_READ_NEXT 6u /**< continues an enumeration begun with 5 */
/** @} */

/** @{ */
/** Opcodes. */
#define WEX_OPC_INTF_REGISTER 900u
#define WEX_OPC_INTF_DEREGISTER 901u
#define WEX_OPC_INTF_TABLE_GET 905u
#define WEX_OPC_ROLE_INFO_GET 912u
#define WEX_OPC_ROLE_DESCRIPTION_CHANGED 913u /**< not sent; described by the role display */
#define WEX_OPC_ROLE_NAME_VERIFY 914u
#define WEX_OPC_CONFIG_GET 916u
#define WEX_OPC_SWITCHNAME_SET 917u
#define WEX_OPC_ROLE_CHANGED 919u /**< not sent; described by the role display */
#define WEX_OPC_SESSION_TIMEOUT_SET 935u
#define WEX_OPC_SESSION_TIMEOUT_ALT_SET 936u
#define WEX_OPC_MAIN_TREE_GENERATE 937u
#define WEX_OPC_TREE_TABLE_GET 938u
#define WEX_OPC_CLI_LOCK 940u
#define WEX_OPC_CFG_CHANGE_NOTIFY 943u
#define WEX_OPC_DYNAMIC_RANGE_SET 947u
#define WEX_OPC_PARAM_SUBTYPE_TABLE_GET 948u
#define WEX_OPC_PARSE_TREE_REGISTER 7655u
#define WEX_OPC_PARSE_TREE_DEREGISTER 7656u
#define WEX_OPC_DYNAMIC_PARFILE_NAME_GET 7658u
#define WEX_OPC_MAX_SESSIONS_SET 7661u
#define WEX_OPC_FEATURE_PRIVILEGE_GET 7673u
#define WEX_OPC_TERM_LENGTH_SET 7687u
#define WEX_OPC_TERM_WIDTH_SET 7688u
#define WEX_OPC_DEFAULT_INTF_EXECUTE 7694u
#define WEX_OPC_ABS_TIMEOUT_ANNOUNCE 7698u
#define WEX_OPC_LOGOUT_WARNING_ANNOUNCE 7699u
#define WEX_OPC_LOCALE_NAME_VERIFY 7700u
#define WEX_OPC_LOCALE_INFO_GET 7701u
#define WEX_OPC_PA_STATE_QUERY 175105u
/** @} */

/** @{ */
/** Status codes beside 0 and -1. An exchange that failed carries the low 12
 * bits of errno: WEX_ERRNO_STATUS(ETIME) is 0x8054003E. */
#define WEX_ERRNO_STATUS(err) ((int32_t)(0x80540000u | ((uint32_t)(err)&0xFFFu)))
#define WEX_ANNOUNCE_ERRNO_STATUS(err) ((int32_t)(0x805F0000u | ((uint32_t)(err)&0xFFFu)))
#define WEX_STATUS_ROLE_UNKNOWN 0x40540009
#define WEX_STATUS_INTF_TYPE_UNKNOWN 0x40540027
#define WEX_STATUS_LOCALE_UNKNOWN 0x40540048
#define WEX_STATUS_NO_EXCHANGE 51 /**< a role or locale query could not be exchanged at all */
/** @} */

/* ---- Interface table ---------------------------------------------------- */

/** One interface type the grammar knows. The same 604 bytes in memory, in
 * the registration message and in the table image. Texts longer than their
 * fields are cut and terminated. */
typedef struct intf_table_entry {
    wex_u64_a4 mask;             /**< the interface type; low word first */
    char name[36];               /**< the type's name, as typed before its number */
    int32_t min_match_len;       /**< the fewest characters that name it */
    int32_t format;              /**< how its names are written */
    char verify_func_name[48];   /**< the function that checks a name of the type */
    char list_func_name[48];     /**< the function that lists the type's interfaces */
    char lib_name[24];           /**< the library holding those functions */
    intf_help_info help_info;    /**< the type's help */
    uint16_t ascii_gen_priority; /**< its priority in ascii generation */
    uint8_t reserved[2];         /**< zero */
} intf_table_entry;

#define WEX_INTF_TABLE_CAPACITY 24 /**< entries of the interface table */

/** Entries 0 to last_index in use, without gaps; last_index -1 when empty. */
typedef struct intf_table {
    intf_table_entry entries[WEX_INTF_TABLE_CAPACITY]; /**< the entries, 0 to last_index in use */
    int32_t last_index;                                /**< -1 when empty */
} intf_table;

WEX_ASSERT_SIZE(intf_table_entry, 604);
WEX_ASSERT_OFFSET(intf_table_entry, name, 8);
WEX_ASSERT_OFFSET(intf_table_entry, min_match_len, 44);
WEX_ASSERT_OFFSET(intf_table_entry, format, 48);
WEX_ASSERT_OFFSET(intf_table_entry, verify_func_name, 52);
WEX_ASSERT_OFFSET(intf_table_entry, list_func_name, 100);
WEX_ASSERT_OFFSET(intf_table_entry, lib_name, 148);
WEX_ASSERT_OFFSET(intf_table_entry, help_info, 172);
WEX_ASSERT_OFFSET(intf_table_entry, ascii_gen_priority, 600);
WEX_ASSERT_SIZE(intf_table, 14500);
WEX_ASSERT_OFFSET(intf_table, last_index, 14496);

/* ---- Interface registration -------------------------------------------- */

/** What a feature registers about an interface type; the texts stay the
 * caller's. */
typedef struct wex_intf_reg_info {
    const char *name;                /**< the type's name */
    uint32_t min_match_len;          /**< the fewest characters that name it */
    uint32_t format;                 /**< how its names are written */
    const char *verify_func_name;    /**< the function that checks a name of the type */
    const char *list_func_name;      /**< the function that lists its interfaces */
    const char *lib_name;            /**< the library holding them */
    const intf_help_info *help_info; /**< NULL: no help */
    uint16_t ascii_gen_priority;     /**< set by the caller itself */
} wex_intf_reg_info;

/* ---- Roles and permission groups ---------------------------------------- */

#define WEXD_STATIC_PERM_GROUP_COUNT 4 /**< built-in permission groups */
#define WEXD_ROLE_NAME_SIZE 32         /**< capacity of a role's name */
#define WEXD_ROLE_MAX_RULES 16         /**< numbered rules of a role */

/** @{ */
/** Rule types and command types of a rule. */
#define WEXD_RULE_PERMIT 1
#define WEXD_RULE_DENY 2
#define WEXD_CMD_CLEAR 1
#define WEXD_CMD_CONFIG 2
#define WEXD_CMD_DEBUG 3
#define WEXD_CMD_SHOW 4
#define WEXD_CMD_EXEC 5
/** @} */

/** The query kind that asks wexd for every role, one reply per role. */
#define WEXD_ROLE_QUERY_ALL 8195u
/** The most role data one query for every role gathers. */
#define WEXD_ROLE_GATHER_LIMIT (1024u * 1024u)
/** The role value kind that is copied as 129 raw bytes. */
#define WEXD_ROLE_RULE_VALUE_RAW 21u

/** A built-in permission group. */
typedef struct wexd_static_perm_group_entry {
    char name[32];        /**< the group's name */
    char description[65]; /**< what it is for */
    char details[67];     /**< what it permits */
    uint32_t valid;       /**< 1 for a group in use */
} wexd_static_perm_group_entry;

/** One numbered rule of a role. */
typedef struct wexd_perm_group_conf_entry {
    int32_t rule_type;    /**< WEXD_RULE_PERMIT or WEXD_RULE_DENY */
    int32_t cmd_type;     /**< WEXD_CMD_* */
    char feature[32];     /**< the feature the rule names */
    int32_t all_features; /**< 1: every feature, the name is ignored */
    int32_t absent;       /**< non-zero: the numbered slot holds no rule */
} wexd_perm_group_conf_entry;

/** A configured role. */
typedef struct wexd_perm_group_entry {
    char description[68];                                  /**< what the role is for */
    wexd_perm_group_conf_entry rules[WEXD_ROLE_MAX_RULES]; /**< rules 1 to 16 */
    char name[WEXD_ROLE_NAME_SIZE];                        /**< the role's name */
    int32_t rule_count;                                    /**< rules in use */
    uint32_t valid;                                        /**< the slot holds a role */
} wexd_perm_group_entry;

/** The request record of role reads and verifications. */
typedef struct wexd_perm_group_conf_cli_wrapper {
    uint32_t query_kind;    /**< what the request asks */
    uint32_t no_flag;       /**< 1: the request removes what it names */
    char name[33];          /**< the role's name */
    char description[131];  /**< the role's description */
    vsan_mask first_mask;   /**< the VSANs the role may use */
    uint8_t reserved1[200]; /**< zero */
    vsan_mask second_mask;  /**< the VLANs the role may use */
    uint8_t reserved2[948]; /**< zero */
} wexd_perm_group_conf_cli_wrapper;

/** A rule message: four words of the caller's, the last naming the kind of
 * the value that follows. */
typedef struct wexd_role_rule_entry_msg {
    uint32_t words[3];   /**< the caller's words, passed through */
    uint32_t kind;       /**< the kind of value that follows */
    uint8_t value[129];  /**< 129 raw bytes for WEXD_ROLE_RULE_VALUE_RAW, else a text */
    uint8_t reserved[3]; /**< zero */
} wexd_role_rule_entry_msg;

/** A composite-group request. */
typedef struct wexd_role_comp_group_conf_cli_wrapper {
    uint8_t bytes[76]; /**< the request, passed through */
} wexd_role_comp_group_conf_cli_wrapper;

WEX_ASSERT_SIZE(wexd_static_perm_group_entry, 168);
WEX_ASSERT_OFFSET(wexd_static_perm_group_entry, description, 32);
WEX_ASSERT_OFFSET(wexd_static_perm_group_entry, details, 97);
WEX_ASSERT_OFFSET(wexd_static_perm_group_entry, valid, 164);
WEX_ASSERT_SIZE(wexd_perm_group_conf_entry, 48);
WEX_ASSERT_OFFSET(wexd_perm_group_conf_entry, feature, 8);
WEX_ASSERT_OFFSET(wexd_perm_group_conf_entry, all_features, 40);
WEX_ASSERT_OFFSET(wexd_perm_group_conf_entry, absent, 44);
WEX_ASSERT_SIZE(wexd_perm_group_entry, 876);
WEX_ASSERT_OFFSET(wexd_perm_group_entry, rules, 68);
WEX_ASSERT_OFFSET(wexd_perm_group_entry, name, 836);
WEX_ASSERT_OFFSET(wexd_perm_group_entry, rule_count, 868);
WEX_ASSERT_OFFSET(wexd_perm_group_entry, valid, 872);
WEX_ASSERT_SIZE(wexd_perm_group_conf_cli_wrapper, 2352);
WEX_ASSERT_OFFSET(wexd_perm_group_conf_cli_wrapper, no_flag, 4);
WEX_ASSERT_OFFSET(wexd_perm_group_conf_cli_wrapper, name, 8);
WEX_ASSERT_OFFSET(wexd_perm_group_conf_cli_wrapper, description, 41);
WEX_ASSERT_OFFSET(wexd_perm_group_conf_cli_wrapper, first_mask, 172);
WEX_ASSERT_OFFSET(wexd_perm_group_conf_cli_wrapper, second_mask, 888);
WEX_ASSERT_SIZE(wexd_role_rule_entry_msg, 148);
WEX_ASSERT_OFFSET(wexd_role_rule_entry_msg, kind, 12);
WEX_ASSERT_OFFSET(wexd_role_rule_entry_msg, value, 16);
WEX_ASSERT_SIZE(wexd_role_comp_group_conf_cli_wrapper, 76);

/** @{ */
/** Room a rule's configuration line and a role's change text need. */
#define WEXD_RULE_CLI_STR_SIZE 96
#define WEXD_ROLE_CHANGE_STR_SIZE 256
/** @} */

/* ---- Settings ------------------------------------------------------------ */

/** The shell's settings as wexd keeps them. Writes start from an all-zero
 * record and set one field; wexd knows which by the opcode. */
typedef struct wexd_wex_config {
    char switchname[64];          /**< at most 63 characters */
    uint8_t reserved1[12];        /**< zero */
    uint32_t session_timeout;     /**< opcode 935 */
    uint32_t session_timeout_alt; /**< opcode 936 */
    uint32_t max_sessions;        /**< the most sessions at once */
    uint32_t term_width;          /**< the terminal's width in columns */
    uint32_t term_length;         /**< lines of a page */
    uint8_t reserved2[28];        /**< zero */
} wexd_wex_config;

/** The payload of every settings write. */
typedef struct wexd_wex_config_msg {
    uint32_t lead;          /**< zero */
    wexd_wex_config config; /**< the settings */
} wexd_wex_config_msg;

WEX_ASSERT_SIZE(wexd_wex_config, 124);
WEX_ASSERT_OFFSET(wexd_wex_config, session_timeout, 76);
WEX_ASSERT_OFFSET(wexd_wex_config, session_timeout_alt, 80);
WEX_ASSERT_OFFSET(wexd_wex_config, max_sessions, 84);
WEX_ASSERT_OFFSET(wexd_wex_config, term_width, 88);
WEX_ASSERT_OFFSET(wexd_wex_config, term_length, 92);
WEX_ASSERT_SIZE(wexd_wex_config_msg, 128);
WEX_ASSERT_OFFSET(wexd_wex_config_msg, config, 4);

/* ---- CLI lock --------------------------------------------------------------- */

#define WEXD_CLI_UNLOCK 0u             /**< action: give the lock back */
#define WEXD_CLI_LOCK 1u               /**< action: take the lock */
#define WEXD_CLI_LOCK_MODE_ORDINARY 0u /**< mode of an ordinary request */
#define WEXD_CLI_LOCK_MODE_UPGRADE 1u  /**< with WEXD_CLI_LOCK */
#define WEXD_CLI_LOCK_MODE_FORCED 2u   /**< with WEXD_CLI_UNLOCK */

/** The payload of a CLI lock request. */
typedef struct wexd_cli_lock_req {
    uint32_t action;    /**< WEXD_CLI_LOCK or WEXD_CLI_UNLOCK */
    uint32_t requester; /**< the caller's word, passed through */
    uint32_t mode;      /**< a WEXD_CLI_LOCK_MODE_* */
} wexd_cli_lock_req;

WEX_ASSERT_SIZE(wexd_cli_lock_req, 12);

/* ---- Locales -------------------------------------------------------------- */

#define WEXD_LOCALE_NAME_SIZE 64 /**< capacity of a locale's name */

/** The request record of locale reads and verifications. A name of 64
 * characters fills its field without a terminator. */
typedef struct wexd_perm_locale_conf_cli_wrapper {
    uint32_t query_kind;              /**< what the request asks */
    uint32_t zero;                    /**< zero */
    char name[WEXD_LOCALE_NAME_SIZE]; /**< the locale's name */
    uint8_t reserved[132];            /**< zero */
} wexd_perm_locale_conf_cli_wrapper;

WEX_ASSERT_SIZE(wexd_perm_locale_conf_cli_wrapper, 204);
WEX_ASSERT_OFFSET(wexd_perm_locale_conf_cli_wrapper, name, 8);

/* ---- Parameter subtypes and dynamic ranges ------------------------------- */

/** @{ */
/** Subtype codes: 0 and -1 to -8, one or two placeholder names each. */
#define WEXD_PARAM_SUBTYPE_MIN (-8)
#define WEXD_PARAM_SUBTYPE_MAX 0
#define WEXD_PLACEHOLDER_SIZE 100
/** @} */

/** The bounds of one placeholder, sent to the parse-tree registration queue. */
typedef struct wexd_dynamic_range_msg {
    char name[WEXD_PLACEHOLDER_SIZE]; /**< at most 99 characters, NUL-padded */
    int32_t lower;                    /**< the lowest value */
    int32_t upper;                    /**< the highest value */
} wexd_dynamic_range_msg;

WEX_ASSERT_SIZE(wexd_dynamic_range_msg, 108);
WEX_ASSERT_OFFSET(wexd_dynamic_range_msg, lower, 100);

/* ---- Notifications ------------------------------------------------------ */

/** The payload of a configuration-change announcement. */
typedef struct wex_cfg_update_msg {
    uint32_t values[3];   /**< what changed, as the announcement gives it */
    uint8_t reserved[28]; /**< zero */
} wex_cfg_update_msg;

WEX_ASSERT_SIZE(wex_cfg_update_msg, 40);

/** wexd's event codes: WEXD_EVENT_BASE plus the event's index (0 to 5) in
 * the low 16 bits; bit 31 is not part of the event. */
#define WEXD_EVENT_BASE 0x280000u

WEX_BEGIN_DECLS

/** The transport's send-options record (68 bytes), defined by the platform. */
struct ipcq_send_options;

/** Zeroes bytes 4 to 27 of a send-options record, leaving word 0 and bytes
 * 28 onward as they are, and returns the record. For callers that send
 * messages of their own. */
WEX_API struct ipcq_send_options *populate_ipcq_send_options(struct ipcq_send_options *options) WEX_NOEXCEPT;

/* ---- Interface table ---------------------------------------------------- */

/** Fills every field of e (NULL texts: empty; NULL help: an empty help
 * block). 0; -1 for a NULL entry. */
WEX_API int32_t set_interface_table_entry(intf_table_entry *e, uint64_t mask, const char *name,
                                          int32_t min_match_len, int32_t format, const char *verify_func_name,
                                          const char *list_func_name, const char *lib_name,
                                          const intf_help_info *help_info,
                                          uint16_t ascii_gen_priority) WEX_NOEXCEPT;
/** Copies src into dst through set_interface_table_entry. */
WEX_API int32_t copy_interface_table_entry(const intf_table_entry *src, intf_table_entry *dst) WEX_NOEXCEPT;
/** Prints the mask line, the fields that are set and the help block on
 * standard output, without a final newline; NULL prints nothing. */
WEX_API void show_interface_table_entry(const intf_table_entry *e) WEX_NOEXCEPT;
/** Prints count entries from first between the table's rules. */
WEX_API void show_interface_table(const intf_table_entry *first, int32_t count) WEX_NOEXCEPT;
/** The slot of the first entry with exactly this mask; -1 when none. */
WEX_API int32_t search_entry_in_interface_table(const intf_table *t, uint64_t mask) WEX_NOEXCEPT;
/** Appends a copy of e. 0; -1, with the table unchanged, when it is full. */
WEX_API int32_t insert_entry_in_interface_table(intf_table *t, const intf_table_entry *e) WEX_NOEXCEPT;
/** Removes the entry of the slot, closing the gap. 0; -1, with the table
 * unchanged, for a slot not in use. */
WEX_API int32_t delete_entry_from_interface_table(intf_table *t, int32_t slot) WEX_NOEXCEPT;
/** Searches entries 0 to last_index from first. 0 with *slot set when found;
 * WEX_STATUS_INTF_TYPE_UNKNOWN, *slot untouched, otherwise. */
WEX_API int32_t wexd_interface_table_search(const intf_table_entry *first, int32_t last_index, uint64_t mask,
                                            int32_t *slot) WEX_NOEXCEPT;
/** Reads wexd's interface table: the number of entries, with *entries a
 * malloc'd array of them (NULL for none) for the caller to free; -1, with
 * *entries untouched, when wexd could not be reached, its reply is not a
 * table, or memory runs out. */
WEX_API int32_t wexd_interface_table_get(int32_t q, intf_table_entry **entries) WEX_NOEXCEPT;
/** 1 when a user with this VSAN mask may configure the interface, else 0. */
WEX_API int32_t wex_is_interface_config_allowed(void *unused, const vsan_mask *mask,
                                                uint32_t if_index) WEX_NOEXCEPT;
/** Always 1; the argument is not used. */
WEX_API int32_t wex_intf_type_perm_check(void *unused) WEX_NOEXCEPT;
/** Always 1; the argument is not used. */
WEX_API int32_t wex_is_interface_display_allowed(void *unused) WEX_NOEXCEPT;
/** Always 1. */
WEX_API int32_t wex_fc_intf_perm_check(vsan_mask **mask) WEX_NOEXCEPT;
/** Sends the port-adapter state query notification. The ipcq_send result. */
WEX_API int32_t omx_pa_state_query(int32_t q) WEX_NOEXCEPT;

/* ---- Registration -------------------------------------------------------- */

/** Fills everything of info but the priority. 0; -1 for a NULL record. */
WEX_API int32_t wex_set_intf_reg_info(wex_intf_reg_info *info, const char *name, uint32_t min_match_len,
                                      uint32_t format, const char *verify_func_name,
                                      const char *list_func_name, const char *lib_name,
                                      const intf_help_info *help_info) WEX_NOEXCEPT;
/** Registers an interface type with wexd. The ipcq_send result; -1 with
 * nothing sent for a NULL record. */
WEX_API int32_t wex_register_interface(int32_t q, uint64_t mask, const wex_intf_reg_info *info) WEX_NOEXCEPT;
/** The same from the fields, with no help and priority 0; reserved is not
 * used. */
WEX_API int32_t wex_register_interface2(int32_t q, uint64_t mask, const char *name, uint32_t min_match_len,
                                        uint32_t format, const char *verify_func_name,
                                        const char *list_func_name, uint32_t reserved,
                                        const char *lib_name) WEX_NOEXCEPT;
/** Withdraws an interface type. The ipcq_send result. */
WEX_API int32_t wex_deregister_interface(int32_t q, uint64_t mask) WEX_NOEXCEPT;
/** @{ */
/** Register and withdraw a parse tree or a command file with the parse-tree
 * registration queue. 0, the queue's status, or WEX_ERRNO_STATUS of a
 * failed exchange (a registration that timed out counts as done). */
WEX_API int32_t wex_register_parse_tree(int32_t q, const char *module_id) WEX_NOEXCEPT;
WEX_API int32_t wex_deregister_parse_tree(int32_t q, const char *module_id) WEX_NOEXCEPT;
WEX_API int32_t wex_add_cmd_file(int32_t q, const char *cmd_file) WEX_NOEXCEPT;
WEX_API int32_t wex_rem_cmd_file(int32_t q, const char *cmd_file) WEX_NOEXCEPT;
/** @} */
/** @{ */
/** The same parse-tree registrations, flagged for the standby supervisor and
 * not awaited. The send result; 1 when memory runs out. */
WEX_API int32_t wex_register_parse_tree_standby(int32_t q, const char *module_id) WEX_NOEXCEPT;
WEX_API int32_t wex_deregister_parse_tree_standby(int32_t q, const char *module_id) WEX_NOEXCEPT;
/** @} */

/* ---- Roles and permission groups ---------------------------------------- */

/** @{ */
/** The built-in permission groups and their number (4). */
WEX_API extern const wexd_static_perm_group_entry wexd_static_perm_group_table[WEXD_STATIC_PERM_GROUP_COUNT];
WEX_API extern const uint32_t wexd_static_perm_group_table_size;
/** @} */

/** 1 when name is one of the five static role names (case-sensitive). */
WEX_API int32_t wex_lib_is_static_role(const char *name) WEX_NOEXCEPT;
/** 1-based position of the first valid group named name; -1 when none. */
WEX_API int32_t wexd_static_perm_group_locate_entry_by_name(const wexd_static_perm_group_entry *table,
                                                            int32_t count, const char *name) WEX_NOEXCEPT;
/** @{ */
/** 1-based position of the first valid role named name, ignoring case or
 * not; -1 when none. */
WEX_API int32_t wexd_perm_group_locate_entry_by_name(const wexd_perm_group_entry *table, int32_t count,
                                                     const char *name) WEX_NOEXCEPT;
WEX_API int32_t wexd_perm_group_locate_case_sensitive_entry_by_name(const wexd_perm_group_entry *table,
                                                                    int32_t count,
                                                                    const char *name) WEX_NOEXCEPT;
/** @} */
/** The number of the first role after current (0: before the first) whose
 * valid flag is 1; -1 when none. */
WEX_API int32_t wexd_perm_group_next_role_num_get(const wexd_perm_group_entry *table, int32_t current,
                                                  int32_t count) WEX_NOEXCEPT;
/** The highest rule number whose slot holds a rule; 0 when none. */
WEX_API int32_t wexd_perm_group_max_rule_id_get(const wexd_perm_group_entry *role) WEX_NOEXCEPT;
/** Always -1. */
WEX_API int32_t wexd_perm_group_next_rule_id_get(void) WEX_NOEXCEPT;
/** Always NULL: the library holds no table of configured roles. */
WEX_API wexd_perm_group_entry *wexd_perm_group_table_get(void) WEX_NOEXCEPT;

/** Fills a rule's first four fields (NULL feature: empty). 0; -1 for NULL. */
WEX_API int32_t wexd_perm_group_conf_entry_populate(wexd_perm_group_conf_entry *rule, int32_t rule_type,
                                                    int32_t cmd_type, const char *feature,
                                                    int32_t all_features) WEX_NOEXCEPT;
/** Copies all but the absent flag (note the order). 0; -1 for NULL. */
WEX_API int32_t wexd_perm_group_conf_entry_copy(wexd_perm_group_conf_entry *dst,
                                                const wexd_perm_group_conf_entry *src) WEX_NOEXCEPT;
/** Zeroes the request and gives both masks their length word (512). */
WEX_API void wexd_perm_group_conf_cli_wrapper_init(wexd_perm_group_conf_cli_wrapper *request) WEX_NOEXCEPT;
/** Zeroes the record. */
WEX_API void
wexd_role_comp_group_conf_cli_wrapper_init(wexd_role_comp_group_conf_cli_wrapper *request) WEX_NOEXCEPT;
/** Fills the message: the words, then value (129 raw bytes for kind
 * WEXD_ROLE_RULE_VALUE_RAW, else a text cut to 128 characters; NULL:
 * empty). 0; -1 for a NULL message. */
WEX_API int32_t wexd_role_rule_entry_msg_populate(wexd_role_rule_entry_msg *msg, uint32_t word0,
                                                  uint32_t word1, uint32_t word2, uint32_t kind,
                                                  const void *value) WEX_NOEXCEPT;

/** @{ */
/** 0 when name names a role usable in this context, else -1. msg_type is
 * WEX_MSG_TYPE_READ or WEX_MSG_TYPE_ROLE_READ. */
WEX_API int32_t wexd_perm_group_role_name_verify2(int32_t q, const char *name,
                                                  uint32_t msg_type) WEX_NOEXCEPT;
WEX_API int32_t wexd_perm_group_role_name_verify(int32_t q, const char *name) WEX_NOEXCEPT;
/** @} */
/** Reads one role (name given) or, for WEXD_ROLE_QUERY_ALL without a name,
 * every role. 0 with *buf (malloc'd, the caller frees it) and *len; else
 * WEX_STATUS_NO_EXCHANGE or wexd's status, *buf untouched. */
WEX_API int32_t wexd_role_info_get(int32_t q, uint32_t msg_type, uint32_t query_kind, const char *name,
                                   void **buf, uint32_t *len) WEX_NOEXCEPT;

/* ---- Role display ----------------------------------------------------------- */

/** @{ */
/** Write "permit"/"deny", or "clear" ... "exec", into buf (7 bytes or more);
 * other codes write nothing. 0; -1 for a NULL buffer. */
WEX_API int32_t wexd_perm_group_rule_type_str_get(char *buf, int32_t rule_type) WEX_NOEXCEPT;
WEX_API int32_t wexd_perm_group_command_type_str_get(char *buf, int32_t cmd_type) WEX_NOEXCEPT;
/** @} */
/** Writes the rule's configuration line, "rule N type command [feature F]",
 * into dst (WEXD_RULE_CLI_STR_SIZE bytes). 0; -1 for NULL. */
WEX_API int32_t wexd_perm_group_conf_entry_cli_str_get(char *dst, const wexd_perm_group_conf_entry *rule,
                                                       int32_t rule_no) WEX_NOEXCEPT;
/** One line of the rule table, through wex_buf_printf. 0; -1 for NULL. */
WEX_API int32_t wexd_perm_group_conf_entry_cli_show(const wexd_perm_group_conf_entry *rule,
                                                    int32_t rule_no) WEX_NOEXCEPT;
/** The role's show output through wex_buf_printf; mask is the user's. */
WEX_API void wexd_perm_group_entry_cli_show(const wexd_perm_group_entry *role,
                                            const vsan_mask *mask) WEX_NOEXCEPT;
/** A built-in group's show output on standard output. */
WEX_API void wexd_static_perm_group_entry_cli_show(const wexd_static_perm_group_entry *group) WEX_NOEXCEPT;
/** @{ */
/** Debugging dumps on standard output. */
WEX_API void
wexd_perm_group_conf_cli_wrapper_show(const wexd_perm_group_conf_cli_wrapper *request) WEX_NOEXCEPT;
WEX_API void wexd_perm_group_conf_entry_show(const wexd_perm_group_conf_entry *rule) WEX_NOEXCEPT;
WEX_API void wexd_perm_group_entry_show(const wexd_perm_group_entry *role) WEX_NOEXCEPT;
/** @} */
/** Writes the text describing a role change of opcode 913 or 919 into dst
 * (WEXD_ROLE_CHANGE_STR_SIZE bytes) and returns its length; for any other
 * opcode writes nothing and returns the opcode. */
WEX_API int32_t wexd_perm_group_wrapper_cli_str_get(
    char *dst, uint32_t opcode, const wexd_perm_group_conf_cli_wrapper *request) WEX_NOEXCEPT;

/* ---- Settings ------------------------------------------------------------ */

/** Sends the record behind lead as a settings write of this opcode, with the
 * two texts (NULL: empty). The bcp_req_resp result; -1 with nothing sent
 * for a NULL record. */
WEX_API int32_t wexd_wex_configuration_set(int32_t q, const wexd_wex_config *config, uint32_t opcode,
                                           uint32_t lead, const char *text1, const char *text2) WEX_NOEXCEPT;
/** @{ */
/** One setting each. 0 when wexd took it; -1 otherwise, and at once (nothing
 * sent) for a length or width of 0 or a NULL name. A name is cut to 63
 * characters. */
WEX_API int32_t wexd_max_wex_sessions_set(int32_t q, uint32_t max_sessions, uint32_t lead) WEX_NOEXCEPT;
WEX_API int32_t wexd_session_timeout_set(int32_t q, uint32_t timeout, uint32_t flag) WEX_NOEXCEPT;
WEX_API int32_t wexd_term_set_length(int32_t q, uint32_t length) WEX_NOEXCEPT;
WEX_API int32_t wexd_term_set_width(int32_t q, uint32_t width) WEX_NOEXCEPT;
WEX_API int32_t wexd_switchname_set(int32_t q, const char *name) WEX_NOEXCEPT;
/** @} */
/** Reads the settings: 0 with *reply a malloc'd record for the caller to
 * free; -1 with *reply NULL when the exchange failed or the reply is not a
 * whole record. */
WEX_API int32_t wexd_wex_configuration_get(int32_t q, wexd_wex_config **reply) WEX_NOEXCEPT;
/** Reads the settings over the transport into *config. 0; -1, *config
 * untouched, when the exchange failed or the reply is not a whole record. */
WEX_API int32_t wexd_wex_config_info_get(int32_t q, wexd_wex_config *config) WEX_NOEXCEPT;
/** Copies the current dynamic par file's name into name (WEX_FILE_NAME_SIZE
 * bytes). 0; -1, name untouched, when the exchange failed or the reply is
 * not a name that fits. */
WEX_API int32_t wexd_wex_dynamic_parfile_name_get(int32_t q, char *name) WEX_NOEXCEPT;

/* ---- CLI lock --------------------------------------------------------------- */

/** @{ */
/** Take or give back the command-line lock. 0, wexd's status, or
 * WEX_ERRNO_STATUS of a failed exchange. */
WEX_API int32_t wexd_cli_lock(int32_t q, uint32_t requester) WEX_NOEXCEPT;
WEX_API int32_t wexd_cli_lock_for_upgrade(int32_t q, uint32_t requester) WEX_NOEXCEPT;
WEX_API int32_t wexd_cli_unlock(int32_t q, uint32_t requester) WEX_NOEXCEPT;
WEX_API int32_t wexd_cli_unlock_forced(int32_t q, uint32_t requester) WEX_NOEXCEPT;
WEX_API int32_t wexd_send_lock_unlock_notification(int32_t q, uint32_t action, uint32_t requester,
                                                   uint32_t mode) WEX_NOEXCEPT;
/** @} */

/* ---- Locales -------------------------------------------------------------- */

/** Zeroes the record; NULL is ignored. */
WEX_API void wexd_perm_locale_conf_cli_wrapper_init(wexd_perm_locale_conf_cli_wrapper *request) WEX_NOEXCEPT;
/** 0 when wexd knows the locale, else -1. */
WEX_API int32_t wexd_perm_locale_name_verify(int32_t q, const char *name) WEX_NOEXCEPT;
/** Reads locale data: 0 with *buf (malloc'd, the caller frees it) and *len;
 * else WEX_STATUS_NO_EXCHANGE or wexd's status, *buf untouched. */
WEX_API int32_t wexd_locale_info_get(int32_t q, uint32_t msg_type, uint32_t query_kind, const char *name,
                                     void **buf, uint32_t *len) WEX_NOEXCEPT;

/* ---- Parameter subtypes, dynamic ranges, trees -------------------------- */

/** Sends range[0] and range[1] as the bounds of the subtype's placeholder
 * names. 0, or WEX_STATUS_FAILURE for an unknown code or a failed send. */
WEX_API int32_t wexd_param_subtype_register(int32_t q, int32_t subtype, const int32_t *range) WEX_NOEXCEPT;
/** Sends the bounds of one placeholder, logging through syslog. 0, or
 * WEX_STATUS_FAILURE for a NULL argument, lower > upper or a failed send. */
WEX_API int32_t wexd_set_dynamic_integer_range(int32_t q, const char *name, const int32_t *lower,
                                               const int32_t *upper) WEX_NOEXCEPT;
/** @{ */
/** Read wexd's subtype table and tree table: the bcp_req_resp result, with
 * *reply malloc'd for the caller to free (NULL on failure). A tree-table
 * reply shorter than a tree_table is refused with -1. */
WEX_API int32_t wexd_param_subtype_table_get(int32_t q, void **reply) WEX_NOEXCEPT;
WEX_API int32_t wexd_tree_table_get(int32_t q, tree_table **reply) WEX_NOEXCEPT;
/** @} */
/** Asks wexd to generate the main parse tree: the first word of its reply,
 * or -1 when the request failed or the reply holds no word. */
WEX_API int32_t wexd_generate_main_tree(int32_t q) WEX_NOEXCEPT;

/* ---- Notifications and event history ----------------------------------- */

/** Configuration changed: the three values for the listeners. The
 * ipcq_send result. */
WEX_API int32_t wex_notify_cfg_update(int32_t q, uint32_t value1, uint32_t value2,
                                      uint32_t value3) WEX_NOEXCEPT;
/** Configuration changed, from the record's queue; nothing is sent while
 * the record generates per-VSAN configuration. Always 0. */
WEX_API int32_t wex_api_notify_cfg_change(const pinfo *info) WEX_NOEXCEPT;
/** Configuration changed. 0, or WEX_ERRNO_STATUS of the failed send. */
WEX_API int32_t wex_config_change_notify(int32_t q) WEX_NOEXCEPT;
/** @{ */
/** A coming logout and an absolute time-out. 0, or
 * WEX_ANNOUNCE_ERRNO_STATUS of the failed send (with a perror line). */
WEX_API int32_t wex_announce_logout_warning(int32_t q, uint32_t value) WEX_NOEXCEPT;
WEX_API int32_t wex_announce_abs_timeout(int32_t q, uint32_t value) WEX_NOEXCEPT;
/** @} */
/** Always 0, at once. */
WEX_API int32_t wait_for_chassis_box_online(void) WEX_NOEXCEPT;
/** Prints one event of wexd's history: the header (time_s, the event's
 * name, value2, value4, value5) through the platform's printer, then the
 * text, or "Unknown Event". 0; 1 for a NULL text. */
WEX_API int32_t wexd_hist_print_event(const char *text, uint32_t value2, uint32_t event_code, uint32_t value4,
                                      uint32_t value5, uint32_t time_s) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_WEXD_CLIENT_H */
