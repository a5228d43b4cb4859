// How a feature makes its interface types, parse trees and command files
// known to the shell.
#include <wex/wexd_client.h>

#include "common/alloc.h"
#include "wex_process_api.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace frame = wex::daemon;

namespace
{

// The standby registration: the raw request/response header, then the entry.
constexpr std::size_t kStandbyMessageSize = frame::kRawHeaderSize + sizeof(tree_table_entry);
static_assert(kStandbyMessageSize == 200);

int32_t send_interface_entry(int32_t q, const intf_table_entry &entry)
{
    const int result = frame::send_one_way(q, WEXD_QUEUE, WEX_OPC_INTF_REGISTER, frame::bytes_of(entry),
                                           frame::SendOptions::plain);
    if (result < 0)
        std::puts("Not able to send interface registration to wexd");
    return result;
}

tree_table_entry tree_entry(const char *module_id, const char *par_file_name)
{
    tree_table_entry entry{};
    set_tree_table_entry(&entry, module_id, par_file_name);
    return entry;
}

int32_t register_tree_entry(int32_t q, const frame::BcpCall &call, const tree_table_entry &entry)
{
    uint32_t len = sizeof entry;
    const int result = frame::request_response(q, call, &entry, &len);
    return call.opcode == WEX_OPC_PARSE_TREE_REGISTER ? frame::registration_status(result)
                                                      : frame::write_status(result);
}

int32_t send_standby_registration(int32_t q, uint32_t opcode, const char *module_id)
{
    const tree_table_entry entry = tree_entry(module_id, nullptr);
    wex::MallocPtr<std::byte> message(static_cast<std::byte *>(wex::mem_alloc(kStandbyMessageSize)));
    if (!message)
        return 1;
    const std::span<std::byte, kStandbyMessageSize> bytes(message.get(), kStandbyMessageSize);
    frame::build_raw_header(bytes.first<frame::kRawHeaderSize>(), WEX_MSG_TYPE_WRITE, sizeof entry);
    std::memcpy(&bytes[frame::kRawHeaderSize], &entry, sizeof entry);
    return frame::send_and_drop(q, WEX_NOTIFY_QUEUE, opcode, bytes, frame::SendOptions::standby);
}

} // namespace

extern "C" {

WEX_API int32_t wex_set_intf_reg_info(wex_intf_reg_info *info, const char *name, uint32_t min_match_len,
                                      uint32_t format, const char *verify_func_name,
                                      const char *list_func_name, const char *lib_name,
                                      const intf_help_info *help_info) noexcept
{
    if (!info)
        return -1;
    info->name = name;
    info->min_match_len = min_match_len;
    info->format = format;
    info->verify_func_name = verify_func_name;
    info->list_func_name = list_func_name;
    info->lib_name = lib_name;
    info->help_info = help_info;
    return 0;
}

WEX_API int32_t wex_register_interface(int32_t q, uint64_t mask, const wex_intf_reg_info *info) noexcept
{
    // Without a record there is nothing to describe the type with.
    if (!info)
        return -1;
    intf_table_entry entry{};
    set_interface_table_entry(&entry, mask, info->name, static_cast<int32_t>(info->min_match_len),
                              static_cast<int32_t>(info->format), info->verify_func_name,
                              info->list_func_name, info->lib_name, info->help_info,
                              info->ascii_gen_priority);
    return send_interface_entry(q, entry);
}

WEX_API int32_t wex_register_interface2(int32_t q, uint64_t mask, const char *name, uint32_t min_match_len,
                                        uint32_t format, const char *verify_func_name,
                                        const char *list_func_name, uint32_t /*reserved*/,
                                        const char *lib_name) noexcept
{
    intf_table_entry entry{};
    set_interface_table_entry(&entry, mask, name, static_cast<int32_t>(min_match_len),
                              static_cast<int32_t>(format), verify_func_name, list_func_name, lib_name,
                              nullptr, 0);
    return send_interface_entry(q, entry);
}

WEX_API int32_t wex_deregister_interface(int32_t q, uint64_t mask) noexcept
{
    const uint32_t words[2] = {static_cast<uint32_t>(mask), static_cast<uint32_t>(mask >> 32)};
    const int result = frame::send_one_way(q, WEXD_QUEUE, WEX_OPC_INTF_DEREGISTER, frame::bytes_of(words),
                                           frame::SendOptions::plain);
    if (result < 0)
        std::puts("Not able to send interface deregistration to wexd");
    return result;
}

WEX_API int32_t wex_register_parse_tree(int32_t q, const char *module_id) noexcept
{
    return register_tree_entry(q, frame::kParseTreeRegister, tree_entry(module_id, nullptr));
}

WEX_API int32_t wex_deregister_parse_tree(int32_t q, const char *module_id) noexcept
{
    return register_tree_entry(q, frame::kParseTreeDeregister, tree_entry(module_id, nullptr));
}

WEX_API int32_t wex_add_cmd_file(int32_t q, const char *cmd_file) noexcept
{
    return register_tree_entry(q, frame::kParseTreeRegister, tree_entry(nullptr, cmd_file));
}

WEX_API int32_t wex_rem_cmd_file(int32_t q, const char *cmd_file) noexcept
{
    return register_tree_entry(q, frame::kParseTreeDeregister, tree_entry(nullptr, cmd_file));
}

WEX_API int32_t wex_register_parse_tree_standby(int32_t q, const char *module_id) noexcept
{
    return send_standby_registration(q, WEX_OPC_PARSE_TREE_REGISTER, module_id);
}

WEX_API int32_t wex_deregister_parse_tree_standby(int32_t q, const char *module_id) noexcept
{
    return send_standby_registration(q, WEX_OPC_PARSE_TREE_DEREGISTER, module_id);
}

} // extern "C"
