// The diagnostic dump of a command parameter record and of its arguments.
#include <wex/param.h>
#include <wex/parse_tree.h>

#include "common/param_types.h"
#include "common/text_field.h"

#include <cstdio>
#include <string_view>

namespace
{

const char *truth(bool value) noexcept
{
    return value ? "TRUE" : "FALSE";
}

// The value after its type's label; a type this build does not know has a
// value of unknown layout, so only its code is shown.
void print_value(const param_arg *arg) noexcept
{
    const wex::ParamType *type = wex::find_param_type(arg->type);
    if (!type) {
        std::printf("\nUnknown arg type:%d", static_cast<int>(arg->type));
        return;
    }
    std::fputs(type->value_label, stdout);
    type->print_value(arg);
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
