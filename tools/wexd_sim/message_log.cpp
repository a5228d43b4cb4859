#include "message_log.h"
#include "sim_replies.h"

#include <wex/wexd_client.h>

#include <atomic>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <sys/time.h>

namespace wexd_sim
{
namespace
{

struct OpcodeName {
    uint32_t opcode;
    const char *name;
};

constexpr OpcodeName kNames[] = {
    {WEX_OPC_INTF_REGISTER, "intf-register"},
    {WEX_OPC_INTF_DEREGISTER, "intf-deregister"},
    {WEX_OPC_INTF_TABLE_GET, "intf-table-get"},
    {WEX_OPC_ROLE_INFO_GET, "role-info-get"},
    {WEX_OPC_ROLE_NAME_VERIFY, "role-name-verify"},
    {WEX_OPC_CONFIG_GET, "config-get"},
    {WEX_OPC_SWITCHNAME_SET, "switchname-set"},
    {WEX_OPC_SESSION_TIMEOUT_SET, "session-timeout-set"},
    {WEX_OPC_SESSION_TIMEOUT_ALT_SET, "session-timeout-alt-set"},
    {WEX_OPC_MAIN_TREE_GENERATE, "main-tree-generate"},
    {WEX_OPC_TREE_TABLE_GET, "tree-table-get"},
    {WEX_OPC_CLI_LOCK, "cli-lock"},
    {WEX_OPC_CFG_CHANGE_NOTIFY, "cfg-change-notify"},
    {WEX_OPC_DYNAMIC_RANGE_SET, "dynamic-range-set"},
    {WEX_OPC_PARAM_SUBTYPE_TABLE_GET, "param-subtype-table-get"},
    {WEX_OPC_PARSE_TREE_REGISTER, "parse-tree-register"},
    {WEX_OPC_PARSE_TREE_DEREGISTER, "parse-tree-deregister"},
    {WEX_OPC_DYNAMIC_PARFILE_NAME_GET, "dynamic-parfile-name-get"},
    {WEX_OPC_MAX_SESSIONS_SET, "max-sessions-set"},
    {WEX_OPC_FEATURE_PRIVILEGE_GET, "feature-privilege-get"},
    {WEX_OPC_TERM_LENGTH_SET, "term-length-set"},
    {WEX_OPC_TERM_WIDTH_SET, "term-width-set"},
    {WEX_OPC_DEFAULT_INTF_EXECUTE, "default-intf-execute"},
    {WEX_OPC_ABS_TIMEOUT_ANNOUNCE, "abs-timeout-announce"},
    {WEX_OPC_LOGOUT_WARNING_ANNOUNCE, "logout-warning-announce"},
    {WEX_OPC_LOCALE_NAME_VERIFY, "locale-name-verify"},
    {WEX_OPC_LOCALE_INFO_GET, "locale-info-get"},
    {WEX_OPC_PA_STATE_QUERY, "pa-state-query"},
    {wex_tools::kOpcFeatureTableGet, "feature-table-get"},
    {wex_tools::kOpcUserRolesGet, "user-roles-get"},
    {wex_tools::kOpcSessionOpen, "session-open"},
    {wex_tools::kOpcSessionClose, "session-close"},
    {wex_tools::kOpcSessionList, "session-list"},
};

// Unwritten lines past this are written by the thread that logs.
constexpr std::size_t kMaxUnwritten = 64 * 1024;

std::mutex g_output;
std::string g_unwritten;
std::atomic<LogLevel> g_level{LogLevel::messages};

LogSink g_sink = nullptr;
void *g_sink_context = nullptr;

void write_out_locked()
{
    if (g_unwritten.empty())
        return;
    if (g_sink) {
        g_sink(g_sink_context, g_unwritten);
    } else {
        std::fwrite(g_unwritten.data(), 1, g_unwritten.size(), stdout);
        std::fflush(stdout);
    }
    g_unwritten.clear();
}

void append_line(const std::string &line)
{
    const std::lock_guard guard(g_output);
    g_unwritten += line;
    g_unwritten += '\n';
    if (g_unwritten.size() > kMaxUnwritten)
        write_out_locked();
}

} // namespace

const char *opcode_name(uint32_t opcode)
{
    for (const OpcodeName &known : kNames) {
        if (known.opcode == opcode)
            return known.name;
    }
    return "unknown";
}

void set_log_sink(LogSink sink, void *context)
{
    const std::lock_guard guard(g_output);
    g_sink = sink;
    g_sink_context = context;
}

void set_log_level(LogLevel level)
{
    g_level = level;
}

void log_request(uint32_t queue, const ipcq_request_info_t &request, const std::string &what)
{
    if (g_level.load() != LogLevel::messages)
        return;
    timeval now{};
    gettimeofday(&now, nullptr);
    std::tm local{};
    localtime_r(&now.tv_sec, &local);
    char stamp[16];
    std::strftime(stamp, sizeof stamp, "%H:%M:%S", &local);
    char head[96];
    std::snprintf(head, sizeof head, "%s.%03ld q%-3u <- %08x.%-5u %6u %-24s ", stamp,
                  static_cast<long>(now.tv_usec / 1000), queue, request.sender_address, request.sender_queue,
                  request.opcode, opcode_name(request.opcode));
    append_line(head + what);
}

void log_event(const std::string &line)
{
    append_line(line);
}

void flush_log()
{
    const std::lock_guard guard(g_output);
    write_out_locked();
}

} // namespace wexd_sim
