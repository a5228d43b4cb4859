/* The shell daemon client: how the library addresses wexd, the parse-tree
 * registration queue and the notification listeners, the opcodes it sends
 * and the status codes that come back. */
#ifndef WEX_WEXD_CLIENT_H
#define WEX_WEXD_CLIENT_H

#include <wex/wex_api.h>

/* Every message the library sends goes to this address. */
#define WEX_DEST_ADDRESS 0xFE000000u

/* Destination queues. */
#define WEXD_QUEUE 37u             /* the shell daemon wexd */
#define PARSE_TREE_QUEUE 296u      /* parse-tree and command-file registration, dynamic ranges */
#define WEX_NOTIFY_QUEUE 0u        /* notifications, no particular receiver */
#define ASCII_CFG_SERVER_QUEUE 76u /* the configuration server */

/* Message types of the request/response layer. */
#define WEX_MSG_TYPE_READ 1u
#define WEX_MSG_TYPE_READ_NEXT 2u /* continues an enumeration begun with WEX_MSG_TYPE_READ */
#define WEX_MSG_TYPE_WRITE 3u
#define WEX_MSG_TYPE_ROLE_READ 5u      /* role operations accept it wherever they accept 1 */
#define WEX_MSG_TYPE_ROLE_READ_NEXT 6u /* continues an enumeration begun with 5 */

/* Opcodes. */
#define WEX_OPC_INTF_REGISTER 900u
#define WEX_OPC_INTF_DEREGISTER 901u
#define WEX_OPC_INTF_TABLE_GET 905u
#define WEX_OPC_ROLE_INFO_GET 912u
#define WEX_OPC_ROLE_DESCRIPTION_CHANGED 913u /* not sent; described by the role display */
#define WEX_OPC_ROLE_NAME_VERIFY 914u
#define WEX_OPC_CONFIG_GET 916u
#define WEX_OPC_SWITCHNAME_SET 917u
#define WEX_OPC_ROLE_CHANGED 919u /* not sent; described by the role display */
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

/* Status codes beside 0 and -1. An exchange that failed carries the low 12
 * bits of errno: WEX_ERRNO_STATUS(ETIME) is 0x8054003E. */
#define WEX_ERRNO_STATUS(err) ((int32_t)(0x80540000u | ((uint32_t)(err)&0xFFFu)))
#define WEX_ANNOUNCE_ERRNO_STATUS(err) ((int32_t)(0x805F0000u | ((uint32_t)(err)&0xFFFu)))
#define WEX_STATUS_ROLE_UNKNOWN 0x40540009
#define WEX_STATUS_INTF_TYPE_UNKNOWN 0x40540027
#define WEX_STATUS_LOCALE_UNKNOWN 0x40540048
#define WEX_STATUS_NO_EXCHANGE 51 /* a role or locale query could not be exchanged at all */

WEX_BEGIN_DECLS

/* The transport's send-options record (68 bytes), defined by the platform. */
struct ipcq_send_options;

/* Zeroes bytes 4 to 27 of a send-options record, leaving word 0 and bytes
 * 28 onward as they are, and returns the record. For callers that send
 * messages of their own. */
WEX_API struct ipcq_send_options *populate_ipcq_send_options(struct ipcq_send_options *options) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_WEXD_CLIENT_H */
