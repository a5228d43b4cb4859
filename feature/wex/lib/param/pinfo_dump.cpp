// The diagnostic dump of a command parameter record and of its arguments.
#include <wex/param.h>
#include <wex/parse_tree.h>

#include "common/text_field.h"

#include <cstdio>
#include <cstring>
#include <string_view>

namespace
{

const char *truth(bool value) noexcept
{
    return value ? "TRUE" : "FALSE";
}

// The text of a TYPE_LEN_VALUE is read no further than the length the
// value states, terminated or not.
void print_len_value(const len_value *value) noexcept
{
    if (value->length <= 8) {
        std::printf("len %d val %d\n", static_cast<int>(value->length), value->number);
        return;
    }
    const std::string_view text(value->text, strnlen(value->text, value->length));
    std::printf("len %d str %.*s\n", static_cast<int>(value->length), wex::print_width(text), text.data());
}

void print_interface_mask(uint64_t mask) noexcept
{
    std::printf("Interface mask: ");
    print_u_long_long(mask);
}

void print_either_address(const param_arg *arg) noexcept
{
    const auto *address = static_cast<const wex_inet_addr_t *>(arg->value);
    std::printf("IPv4 OR v6");
    if (arg->addr_type == TYPE_IPV4) {
        std::printf("[IPv4]: ");
        print_ipv4(address);
    } else {
        std::printf("[IPv6]: ");
        print_ipv6(address);
    }
}

// Types whose value is printed by one formatter after a label.
void print_value(const param_arg *arg) noexcept
{
    const void *value = arg->value;
    const auto *text = static_cast<const char *>(value);
    const auto *number = static_cast<const int32_t *>(value);
    const auto *range = static_cast<const integer_range *>(value);
    const auto *multi_range = static_cast<const integer_multi_range *>(value);
    switch (arg->type) {
    case TYPE_NONE:
        std::printf("None :");
        break;
    case TYPE_STRING:
        std::printf("String : %s", text);
        break;
    case TYPE_LINE:
        std::printf("Line : %s", text);
        break;
    case TYPE_URI:
        std::printf("URI: ");
        wex_uri_info_print(static_cast<const uri_info *>(value));
        break;
    case TYPE_DNS_NAME:
        std::printf("DNS name: ");
        print_dns_name(text);
        break;
    case TYPE_USERATHOST:
        std::printf("user@host: ");
        print_user_at_host(text);
        break;
    case TYPE_LEN_VALUE:
        print_len_value(static_cast<const len_value *>(value));
        break;
    case TYPE_IP:
        std::printf("IP : ");
        print_ip(static_cast<const uint32_t *>(value));
        break;
    case TYPE_IPV4:
        std::printf("IPv4 address: ");
        print_ipv4(static_cast<const wex_inet_addr_t *>(value));
        break;
    case TYPE_IPV6:
        std::printf("IPv6 address: ");
        print_ipv6(static_cast<const wex_inet_addr_t *>(value));
        break;
    case TYPE_IPV4_OR_IPV6:
        print_either_address(arg);
        break;
    case TYPE_INET_NAME:
        std::printf("INET name: ");
        print_inet_name(text);
        break;
    case TYPE_INT:
        std::printf("Integer :");
        print_integer(*number);
        break;
    case TYPE_INT_RANGE:
        std::printf("Integer Range :");
        print_integer_range(range);
        break;
    case TYPE_HEX:
        std::printf("Hex :");
        print_intx(*static_cast<const uint32_t *>(value));
        break;
    case TYPE_INT_MULTI_RANGE:
        std::printf("Int Multi Range: ");
        print_integer_multi_range(multi_range);
        break;
    case TYPE_HEX_RANGE:
        std::printf("Hex Range:");
        print_hex_range(range);
        break;
    case TYPE_HEX_MULTI_RANGE:
        std::printf("Hex Range:");
        print_hex_multi_range(static_cast<const hex_multi_range *>(value));
        break;
    case TYPE_INTERFACE:
        std::printf("Ifindex: ");
        print_interface(static_cast<const uint32_t *>(value));
        print_interface_mask(arg->intf_mask);
        break;
    case TYPE_INTERFACE_RANGE:
        std::printf("Ifindex Range : ");
        print_interface_range(static_cast<const intf_range_list *>(value));
        print_interface_mask(arg->intf_mask);
        break;
    case TYPE_MAC:
        std::printf("MAC : ");
        print_hex(value, 6);
        break;
    case TYPE_WWN:
        std::printf("WWN : ");
        print_hex(value, 8);
        break;
    case TYPE_LUN:
        std::printf("Lun : ");
        print_hex(value, 8);
        break;
    case TYPE_VSAN:
        std::printf("Vsan:");
        print_integer(*number);
        break;
    case TYPE_VSAN_RANGE:
        std::printf("Vsan Range: ");
        print_integer_range(range);
        break;
    case TYPE_VSAN_MULTI_RANGE:
        std::printf("Vsan Multi Range: ");
        print_integer_multi_range(multi_range);
        break;
    case TYPE_GUID:
        std::printf("GUID: ");
        print_guid(static_cast<const guid *>(value));
        break;
    case TYPE_FC_ID:
        std::printf("Fcid : ");
        print_hex(value, 4);
        break;
    case TYPE_COMMUNITY:
        std::printf("Community: ");
        print_community(static_cast<const community *>(value));
        break;
    // A type this build does not know: its value's layout is unknown, so
    // only the code is shown.
    default:
        std::printf("\nUnknown arg type:%d", static_cast<int>(arg->type));
        break;
    }
}

void print_context(const pinfo *info) noexcept
{
    const std::string_view session = wex::field_text(info->session_id);
    const std::string_view user = wex::field_text(info->username);
    const std::string_view vty = wex::field_text(info->vty_id);
    std::printf("No flag: %s, BCP mesg type: %d, Shell_type: %d, Submode_context: %d\n", truth(info->no_flag),
                info->bcp_msg_type, info->shell_type, info->submode_context);
    std::printf("Parameter Count: %hhu, Command Id: %u, IPCQ Q: %d\n", info->param_count, info->command_id,
                info->ipcq_q);
    std::printf("Session id: %.*s, Username: %.*s, Debug_flag: %d, filter: %x Prc_mode: %d\n",
                wex::print_width(session), session.data(), wex::print_width(user), user.data(),
                info->debug_flag, info->filter, info->prc_mode);
    std::printf("Sup state: %d, User mode state: %d, Is_admin: %d\n", info->sup_state, info->user_mode_state,
                info->is_admin);
    std::printf("Exec_filter_mode: %d, Script_mode: %d\n", info->exec_filter_mode, info->script_mode);
    std::printf("Vty ID: %.*s User Perms Mask:%x\n", wex::print_width(vty), vty.data(),
                info->user_perms_mask);
}

void print_ascii_gen(const pinfo *info) noexcept
{
    const std::string_view command = wex::field_text(info->ascii_cmd);
    std::printf("\nAscii Gen: %s\n", truth(info->ascii_gen));
    if (info->ascii_gen) {
        std::printf(", Ascii cmd index: %hhu, Asciigen level: %d\nAscii Cmd: %.*s\n", info->ascii_cmd_index,
                    info->asciigen_level, wex::print_width(command), command.data());
        std::printf("Per vsan Ascii Gen : %s Info flags: 0x%x\n",
                    truth(info->info_flags & WEX_PINFO_PER_VSAN_ASCII_GEN), info->info_flags);
    }
    std::printf("Ascii command: %.*s Info flags: 0x%x\n", wex::print_width(command), command.data(),
                info->info_flags);
}

} // namespace

extern "C" {

WEX_API void print_pinfo_arg(const param_arg *arg) noexcept
{
    if (!arg)
        return;
    std::printf("Token id: %d ", arg->token_id);
    if (!arg->value) {
        std::printf("NULL");
        return;
    }
    print_value(arg);
}

WEX_API void print_pinfo(const pinfo *info) noexcept
{
    if (!info)
        return;
    std::printf("\n==== Param info ====\n");
    print_context(info);
    print_ascii_gen(info);
    // The slots hold at most WEX_PINFO_MAX_ARGS arguments whatever the count says.
    const int count = info->param_count < WEX_PINFO_MAX_ARGS ? info->param_count : WEX_PINFO_MAX_ARGS;
    for (int i = 0; i < count; ++i) {
        std::printf("\nParam Arg [%d]. ", i);
        print_pinfo_arg(info->args[i]);
    }
    std::printf("\n");
    std::fflush(stdout);
}

} // extern "C"
