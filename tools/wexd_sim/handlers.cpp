#include "handlers.h"

#include "main_tree.h"
#include "message_log.h"
#include "sim_replies.h"

#include "bcp.h"
#include "if_index.h"

#include "ipcq.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace wexd_sim
{
namespace
{

constexpr int32_t kFailure = static_cast<int32_t>(WEX_STATUS_FAILURE);

std::string hex(uint64_t value)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

std::string text_of(const char *field, std::size_t width)
{
    return std::string(field, strnlen(field, width));
}

template <typename Record> bool read_record(const ipcq_request_info_t &request, Record &record)
{
    if (request.len < sizeof record || !request.payload)
        return false;
    std::memcpy(&record, request.payload, sizeof record);
    return true;
}

// The most a reply may carry: the transport's limit less the framing a
// request/response reply puts in front.
constexpr std::size_t kMaxReply = IPCQ_MAX_PAYLOAD - sizeof(bcp_header_t);
// Placeholder bounds kept at most; their table reply stays far below kMaxReply.
constexpr std::size_t kMaxSubtypes = 1024;

void reply_bytes(ipcq_response_t &response, const void *bytes, std::size_t len, int32_t status = 0)
{
    if (len > kMaxReply) {
        response.status = kFailure;
        return;
    }
    response.status = status;
    response.len = static_cast<uint32_t>(len);
    response.payload = len ? std::malloc(len) : nullptr;
    if (response.payload)
        std::memcpy(response.payload, bytes, len);
    else
        response.len = 0;
}

void fail(const ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response,
          const std::string &why)
{
    log_request(queue.number, request, "refused: " + why);
    response.status = kFailure;
}

// ---- interfaces ----

void on_intf_register(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    response.no_reply = 1;
    intf_table_entry entry;
    if (!read_record(request, entry))
        return log_request(queue.number, request, "short payload, ignored");
    intf_table &table = queue.state->interfaces;
    const int32_t slot = search_entry_in_interface_table(&table, entry.mask);
    const bool stored = slot >= 0 ? copy_interface_table_entry(&entry, &table.entries[slot]) == 0
                                  : insert_entry_in_interface_table(&table, &entry) == 0;
    log_request(queue.number, request,
                "mask " + hex(entry.mask) + " name " + text_of(entry.name, sizeof entry.name) +
                    (stored ? "" : " (table full, not stored)"));
}

void on_intf_deregister(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    response.no_reply = 1;
    uint32_t words[2];
    if (!read_record(request, words))
        return log_request(queue.number, request, "short payload, ignored");
    const uint64_t mask = words[0] | uint64_t{words[1]} << 32;
    const int32_t slot = search_entry_in_interface_table(&queue.state->interfaces, mask);
    delete_entry_from_interface_table(&queue.state->interfaces, slot);
    log_request(queue.number, request, "mask " + hex(mask) + (slot < 0 ? " (not registered)" : ""));
}

void on_intf_table_get(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    const intf_table &table = queue.state->interfaces;
    log_request(queue.number, request, std::to_string(table.last_index + 1) + " entries");
    reply_bytes(response, &table, sizeof table);
}

// ---- settings ----

void on_config_get(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    const wexd_wex_config &config = queue.state->config;
    log_request(queue.number, request, "switch " + text_of(config.switchname, sizeof config.switchname));
    // The same opcode comes as a bare transport request or with a
    // request/response header: answer each in its own framing.
    if (request.len >= sizeof(bcp_header_t)) {
        bcp_reply(queue.q, request.msg, 0, &config, sizeof config);
        response.no_reply = 1;
        return;
    }
    reply_bytes(response, &config, sizeof config);
}

void on_config_set(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    wexd_wex_config_msg msg;
    if (!read_record(request, msg))
        return fail(queue, request, response, "short payload");
    wexd_wex_config &config = queue.state->config;
    std::string what;
    switch (request.opcode) {
    case WEX_OPC_SWITCHNAME_SET:
        robust_strncpy(config.switchname, text_of(msg.config.switchname, 63).c_str(),
                       sizeof config.switchname);
        what = "switch name " + std::string(config.switchname);
        break;
    case WEX_OPC_SESSION_TIMEOUT_SET:
        config.session_timeout = msg.config.session_timeout;
        what = "session time-out " + std::to_string(config.session_timeout);
        break;
    case WEX_OPC_SESSION_TIMEOUT_ALT_SET:
        config.session_timeout_alt = msg.config.session_timeout_alt;
        what = "session time-out (alternate) " + std::to_string(config.session_timeout_alt);
        break;
    case WEX_OPC_MAX_SESSIONS_SET:
        config.max_sessions = msg.config.max_sessions;
        what = "max sessions " + std::to_string(config.max_sessions) + " lead " + std::to_string(msg.lead);
        break;
    case WEX_OPC_TERM_LENGTH_SET:
        config.term_length = msg.config.term_length;
        what = "terminal length " + std::to_string(config.term_length);
        break;
    default:
        config.term_width = msg.config.term_width;
        what = "terminal width " + std::to_string(config.term_width);
        break;
    }
    log_request(queue.number, request, what);
}

void on_dynamic_parfile_name_get(ServedQueue &queue, const ipcq_request_info_t &request,
                                 ipcq_response_t &response)
{
    const std::string &name = queue.state->dynamic_parfile;
    log_request(queue.number, request, name);
    reply_bytes(response, name.c_str(), name.size() + 1);
}

// ---- lock ----

// Forgets the sessions whose process is gone, and frees the lock one held:
// a shell ended by a signal it could not catch leaves nothing behind.
void forget_ended_sessions(ServedQueue &queue)
{
    SimState &state = *queue.state;
    for (auto it = state.sessions.begin(); it != state.sessions.end();) {
        if (kill(static_cast<pid_t>(it->first), 0) == 0 || errno != ESRCH) {
            ++it;
            continue;
        }
        log_event("wexd-sim: session of process " + std::to_string(it->first) + " ended without closing");
        if (state.cli_locked && state.cli_holder == it->first) {
            state.cli_locked = false;
            log_event("wexd-sim: CLI lock of process " + std::to_string(it->first) + " released");
        }
        it = state.sessions.erase(it);
    }
}

void on_cli_lock(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    wexd_cli_lock_req lock;
    if (!read_record(request, lock))
        return fail(queue, request, response, "short payload");
    forget_ended_sessions(queue);
    SimState &state = *queue.state;
    if (request.msg_type == WEX_MSG_TYPE_READ) {
        const wex_tools::SimLockHolder holder{state.cli_locked ? 1u : 0u, state.cli_holder};
        log_request(queue.number, request,
                    state.cli_locked ? "held by requester " + hex(state.cli_holder) : "not held");
        return reply_bytes(response, &holder, sizeof holder);
    }
    const bool held_by_other = state.cli_locked && state.cli_holder != lock.requester;
    const std::string who = "requester " + hex(lock.requester);
    if (lock.action == WEXD_CLI_LOCK) {
        if (held_by_other)
            return fail(queue, request, response,
                        "lock held by requester " + hex(state.cli_holder) + ", " + who);
        state.cli_locked = true;
        state.cli_holder = lock.requester;
        return log_request(queue.number, request,
                           (lock.mode == WEXD_CLI_LOCK_MODE_UPGRADE ? "upgraded lock, " : "locked, ") + who);
    }
    if (lock.action != WEXD_CLI_UNLOCK)
        return fail(queue, request, response, "unknown action " + std::to_string(lock.action));
    if (held_by_other && lock.mode != WEXD_CLI_LOCK_MODE_FORCED)
        return fail(queue, request, response, "lock held by requester " + hex(state.cli_holder) + ", " + who);
    state.cli_locked = false;
    log_request(queue.number, request,
                (lock.mode == WEXD_CLI_LOCK_MODE_FORCED ? "forced unlock, " : "unlocked, ") + who);
}

// ---- roles and locales ----

const wexd_perm_group_entry *find_role(const SimState &state, const std::string &name)
{
    for (const auto &role : state.roles) {
        if (text_of(role.name, sizeof role.name) == name)
            return &role;
    }
    return nullptr;
}

void reply_role(ipcq_response_t &response, const wexd_perm_group_entry &role, uint32_t number)
{
    wex_tools::SimRoleReply reply{};
    reply.number = number;
    std::memcpy(reply.name, role.name, sizeof reply.name);
    reply.role = role;
    reply_bytes(response, &reply, sizeof reply);
}

void on_role_info_get(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    wexd_perm_group_conf_cli_wrapper query;
    if (!read_record(request, query))
        return fail(queue, request, response, "short payload");
    const std::string name = text_of(query.name, WEXD_ROLE_NAME_SIZE);
    const std::vector<wexd_perm_group_entry> &roles = queue.state->roles;
    const bool continuing =
        request.msg_type == WEX_MSG_TYPE_READ_NEXT || request.msg_type == WEX_MSG_TYPE_ROLE_READ_NEXT;
    if (query.query_kind == WEXD_ROLE_QUERY_ALL && (continuing || name.empty())) {
        // The walk: the first role, then the one after the role named.
        std::size_t next = 0;
        if (continuing) {
            const wexd_perm_group_entry *current = find_role(*queue.state, name);
            next = current ? static_cast<std::size_t>(current - roles.data()) + 1 : roles.size();
        }
        log_request(queue.number, request, "walk after '" + name + "'");
        if (next < roles.size())
            reply_role(response, roles[next], static_cast<uint32_t>(next + 1));
        return;
    }
    const wexd_perm_group_entry *role = find_role(*queue.state, name);
    log_request(queue.number, request, "role '" + name + "'" + (role ? "" : " unknown"));
    if (!role)
        response.status = WEX_STATUS_ROLE_UNKNOWN;
    else
        reply_role(response, *role, static_cast<uint32_t>(role - roles.data()) + 1);
}

void on_role_name_verify(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    wexd_perm_group_conf_cli_wrapper query;
    if (!read_record(request, query))
        return fail(queue, request, response, "short payload");
    const std::string name = text_of(query.name, WEXD_ROLE_NAME_SIZE);
    const bool known = find_role(*queue.state, name) != nullptr;
    log_request(queue.number, request, "role '" + name + "'" + (known ? " known" : " unknown"));
    response.status = known ? 0 : WEX_STATUS_ROLE_UNKNOWN;
}

bool locale_known(const SimState &state, const std::string &name)
{
    for (const std::string &locale : state.locales) {
        if (locale == name)
            return true;
    }
    return false;
}

void on_locale(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    wexd_perm_locale_conf_cli_wrapper query;
    if (!read_record(request, query))
        return fail(queue, request, response, "short payload");
    const std::string name = text_of(query.name, sizeof query.name);
    const std::vector<std::string> &locales = queue.state->locales;
    // A query without a name lists every locale, one 64-byte name each.
    if (request.opcode == WEX_OPC_LOCALE_INFO_GET && name.empty()) {
        std::vector<char> names(locales.size() * WEXD_LOCALE_NAME_SIZE, '\0');
        for (std::size_t i = 0; i < locales.size(); ++i)
            std::memcpy(&names[i * WEXD_LOCALE_NAME_SIZE], locales[i].data(), locales[i].size());
        log_request(queue.number, request, std::to_string(locales.size()) + " locales");
        return reply_bytes(response, names.data(), names.size());
    }
    const bool known = locale_known(*queue.state, name);
    log_request(queue.number, request, "locale '" + name + "'" + (known ? " known" : " unknown"));
    if (!known)
        response.status = WEX_STATUS_LOCALE_UNKNOWN;
    else if (request.opcode == WEX_OPC_LOCALE_INFO_GET)
        reply_bytes(response, &query, sizeof query);
}

// ---- trees, subtypes, privilege ----

int32_t find_tree(const tree_table &table, const tree_table_entry &entry)
{
    if (entry.par_file_name[0] != '\0')
        return search_entry_in_tree_table(&table, entry.par_file_name);
    for (int32_t i = 0; i <= table.last_index && i < WEX_TREE_TABLE_CAPACITY; ++i) {
        if (std::strncmp(table.entries[i].module_id, entry.module_id, sizeof entry.module_id) == 0 &&
            table.entries[i].par_file_name[0] == '\0')
            return i;
    }
    return -1;
}

std::string tree_text(const tree_table_entry &entry)
{
    return entry.par_file_name[0] ? "command file " + text_of(entry.par_file_name, sizeof entry.par_file_name)
                                  : "module " + text_of(entry.module_id, sizeof entry.module_id);
}

void on_tree_register(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    tree_table_entry entry;
    if (!read_record(request, entry))
        return fail(queue, request, response, "short payload");
    tree_table &table = queue.state->trees;
    const int32_t slot = find_tree(table, entry);
    const std::string module = text_of(entry.module_id, sizeof entry.module_id);
    const bool whole_module = entry.par_file_name[0] == '\0';
    if (request.opcode == WEX_OPC_PARSE_TREE_DEREGISTER) {
        delete_entry_from_tree_table(&table, slot);
        if (whole_module)
            queue.state->feature_queues.erase(module);
        return log_request(queue.number, request, tree_text(entry) + (slot < 0 ? " (not registered)" : ""));
    }
    if (slot < 0 && insert_entry_in_tree_table(&table, &entry) != 0)
        return fail(queue, request, response, "tree table full");
    // The module's commands go to the queue that registered its tree.
    if (whole_module)
        queue.state->feature_queues[module] = request.sender_queue;
    log_request(queue.number, request, tree_text(entry) + (slot >= 0 ? " (again)" : ""));
}

void on_standby_tree(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    response.no_reply = 1;
    struct {
        uint8_t header[112];
        tree_table_entry entry;
    } message;
    if (!read_record(request, message))
        return log_request(queue.number, request, "short payload, ignored");
    log_request(queue.number, request, "standby " + tree_text(message.entry));
}

void on_tree_table_get(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    const tree_table &table = queue.state->trees;
    log_request(queue.number, request, std::to_string(table.last_index + 1) + " entries");
    reply_bytes(response, &table, sizeof table);
}

// The previous main tree stays current when the new one is refused.
void on_main_tree_generate(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    if (queue.state->par_dir.empty())
        return fail(queue, request, response, "no par directory (--par-dir)");
    const GeneratedTree tree = generate_main_tree(*queue.state);
    if (!tree.number)
        return fail(queue, request, response, tree.report);
    queue.state->dynamic_parfile = queue.state->par_dir + "/" + wexd_get_current_dynamic_parfile_name();
    log_request(queue.number, request, tree.report);
    const int32_t number = static_cast<int32_t>(*tree.number);
    reply_bytes(response, &number, sizeof number);
}

void on_dynamic_range(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    response.no_reply = 1;
    wexd_dynamic_range_msg range;
    if (!read_record(request, range))
        return log_request(queue.number, request, "short payload, ignored");
    const std::string name = text_of(range.name, sizeof range.name);
    auto &subtypes = queue.state->subtypes;
    const bool full = subtypes.size() == kMaxSubtypes && subtypes.count(name) == 0;
    if (!full)
        subtypes[name] = {range.lower, range.upper};
    log_request(queue.number, request,
                name + " " + std::to_string(range.lower) + ".." + std::to_string(range.upper) +
                    (full ? " (table full, not stored)" : ""));
}

void on_subtype_table_get(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    std::vector<wexd_dynamic_range_msg> table;
    for (const auto &[name, bounds] : queue.state->subtypes) {
        wexd_dynamic_range_msg entry{};
        robust_strncpy(entry.name, name.c_str(), sizeof entry.name);
        entry.lower = bounds.lower;
        entry.upper = bounds.upper;
        table.push_back(entry);
    }
    log_request(queue.number, request, std::to_string(table.size()) + " placeholders");
    reply_bytes(response, table.data(), table.size() * sizeof(wexd_dynamic_range_msg));
}

void on_feature_privilege(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    const uint32_t privilege = queue.state->feature_privilege;
    log_request(queue.number, request, "privilege " + std::to_string(privilege));
    reply_bytes(response, &privilege, sizeof privilege);
}

// ---- the project's own requests ----

void on_feature_table_get(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    std::vector<wex_tools::SimFeatureEntry> table;
    for (const auto &[module, number] : queue.state->feature_queues) {
        wex_tools::SimFeatureEntry entry{};
        robust_strncpy(entry.module, module.c_str(), sizeof entry.module);
        entry.queue = number;
        table.push_back(entry);
    }
    log_request(queue.number, request, std::to_string(table.size()) + " features");
    reply_bytes(response, table.data(), table.size() * sizeof(wex_tools::SimFeatureEntry));
}

void on_user_roles_get(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    char user[sizeof(pinfo::username)];
    if (!read_record(request, user))
        return fail(queue, request, response, "short payload");
    const std::string name = text_of(user, sizeof user);
    const auto found = queue.state->users.find(name);
    const std::vector<std::string> roles =
        found != queue.state->users.end() ? found->second : std::vector<std::string>{"network-admin"};
    std::vector<wex_tools::SimRoleName> names(roles.size());
    std::string listed;
    for (std::size_t i = 0; i < roles.size(); ++i) {
        robust_strncpy(names[i].name, roles[i].c_str(), sizeof names[i].name);
        listed += " " + roles[i];
    }
    log_request(queue.number, request, "user '" + name + "':" + listed);
    reply_bytes(response, names.data(), names.size() * sizeof(wex_tools::SimRoleName));
}

// ---- the shell's sessions ----

void on_session_open(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    wex_tools::SimSession session;
    if (!read_record(request, session))
        return fail(queue, request, response, "short payload");
    forget_ended_sessions(queue);
    SimState &state = *queue.state;
    const std::string who = "process " + std::to_string(session.pid) + ", user '" +
                            text_of(session.user, sizeof session.user) + "' on " +
                            text_of(session.terminal, sizeof session.terminal);
    if (state.sessions.size() >= state.config.max_sessions && !state.sessions.count(session.pid))
        return fail(queue, request, response,
                    "all " + std::to_string(state.config.max_sessions) + " sessions in use, " + who);
    state.sessions[session.pid] = session;
    log_request(queue.number, request, who);
}

void on_session_close(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    uint32_t pid = 0;
    if (!read_record(request, pid))
        return fail(queue, request, response, "short payload");
    queue.state->sessions.erase(pid);
    log_request(queue.number, request, "process " + std::to_string(pid));
}

void on_session_list(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    forget_ended_sessions(queue);
    std::vector<wex_tools::SimSession> sessions;
    for (const auto &entry : queue.state->sessions)
        sessions.push_back(entry.second);
    log_request(queue.number, request, std::to_string(sessions.size()) + " sessions");
    reply_bytes(response, sessions.data(), sessions.size() * sizeof(wex_tools::SimSession));
}

// ---- one-way messages ----

void on_default_intf(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    response.no_reply = 1;
    uint32_t head[3];
    if (!read_record(request, head) || request.len != sizeof head + 4ull * head[2])
        return log_request(queue.number, request, "malformed interface list, ignored");
    std::string names;
    const auto *indexes = static_cast<const uint8_t *>(request.payload) + sizeof head;
    for (uint32_t i = 0; i < head[2]; ++i) {
        uint32_t index = 0;
        std::memcpy(&index, indexes + 4 * i, sizeof index);
        char name[64];
        sprintf_if_index(name, index);
        if (i > 0)
            names += ' ';
        names += name[0] ? name : "?";
    }
    log_request(queue.number, request,
                "values " + hex(head[0]) + " " + hex(head[1]) + ", " + std::to_string(head[2]) +
                    " interfaces " + names);
}

void on_notification(ServedQueue &queue, const ipcq_request_info_t &request, ipcq_response_t &response)
{
    response.no_reply = 1;
    std::string what = std::to_string(request.len) + " bytes";
    uint32_t words[3] = {};
    if (request.len >= 4 && request.payload) {
        std::memcpy(words, request.payload, std::min<std::size_t>(request.len, sizeof words));
        what += ", value " + std::to_string(words[0]);
    }
    log_request(queue.number, request, what);
}

// Runs a handler under the state's lock.
template <void (*Handler)(ServedQueue &, const ipcq_request_info_t &, ipcq_response_t &)>
void locked(void *context, const ipcq_request_info_t *request, ipcq_response_t *response)
{
    auto &queue = *static_cast<ServedQueue *>(context);
    const std::lock_guard guard(queue.state->lock);
    Handler(queue, *request, *response);
}

constexpr ipcq_route_t kWexdRoutes[] = {
    {WEX_OPC_INTF_REGISTER, IPCQ_ROUTE_RAW, locked<on_intf_register>},
    {WEX_OPC_INTF_DEREGISTER, IPCQ_ROUTE_RAW, locked<on_intf_deregister>},
    {WEX_OPC_INTF_TABLE_GET, IPCQ_ROUTE_RAW, locked<on_intf_table_get>},
    {WEX_OPC_ROLE_INFO_GET, IPCQ_ROUTE_BCP, locked<on_role_info_get>},
    {WEX_OPC_ROLE_NAME_VERIFY, IPCQ_ROUTE_BCP, locked<on_role_name_verify>},
    {WEX_OPC_CONFIG_GET, IPCQ_ROUTE_RAW, locked<on_config_get>},
    {WEX_OPC_SWITCHNAME_SET, IPCQ_ROUTE_BCP, locked<on_config_set>},
    {WEX_OPC_SESSION_TIMEOUT_SET, IPCQ_ROUTE_BCP, locked<on_config_set>},
    {WEX_OPC_SESSION_TIMEOUT_ALT_SET, IPCQ_ROUTE_BCP, locked<on_config_set>},
    {WEX_OPC_MAX_SESSIONS_SET, IPCQ_ROUTE_BCP, locked<on_config_set>},
    {WEX_OPC_TERM_LENGTH_SET, IPCQ_ROUTE_BCP, locked<on_config_set>},
    {WEX_OPC_TERM_WIDTH_SET, IPCQ_ROUTE_BCP, locked<on_config_set>},
    {WEX_OPC_MAIN_TREE_GENERATE, IPCQ_ROUTE_BCP, locked<on_main_tree_generate>},
    {WEX_OPC_TREE_TABLE_GET, IPCQ_ROUTE_BCP, locked<on_tree_table_get>},
    {WEX_OPC_CLI_LOCK, IPCQ_ROUTE_BCP, locked<on_cli_lock>},
    {WEX_OPC_PARAM_SUBTYPE_TABLE_GET, IPCQ_ROUTE_BCP, locked<on_subtype_table_get>},
    {WEX_OPC_DYNAMIC_PARFILE_NAME_GET, IPCQ_ROUTE_BCP, locked<on_dynamic_parfile_name_get>},
    {WEX_OPC_FEATURE_PRIVILEGE_GET, IPCQ_ROUTE_BCP, locked<on_feature_privilege>},
    {WEX_OPC_LOCALE_NAME_VERIFY, IPCQ_ROUTE_BCP, locked<on_locale>},
    {WEX_OPC_LOCALE_INFO_GET, IPCQ_ROUTE_BCP, locked<on_locale>},
    {wex_tools::kOpcFeatureTableGet, IPCQ_ROUTE_BCP, locked<on_feature_table_get>},
    {wex_tools::kOpcUserRolesGet, IPCQ_ROUTE_BCP, locked<on_user_roles_get>},
    {wex_tools::kOpcSessionOpen, IPCQ_ROUTE_BCP, locked<on_session_open>},
    {wex_tools::kOpcSessionClose, IPCQ_ROUTE_BCP, locked<on_session_close>},
    {wex_tools::kOpcSessionList, IPCQ_ROUTE_BCP, locked<on_session_list>},
};

constexpr ipcq_route_t kParseTreeRoutes[] = {
    {WEX_OPC_PARSE_TREE_REGISTER, IPCQ_ROUTE_BCP, locked<on_tree_register>},
    {WEX_OPC_PARSE_TREE_DEREGISTER, IPCQ_ROUTE_BCP, locked<on_tree_register>},
    {WEX_OPC_DYNAMIC_RANGE_SET, IPCQ_ROUTE_RAW, locked<on_dynamic_range>},
};

constexpr ipcq_route_t kAsciiCfgRoutes[] = {
    {WEX_OPC_DEFAULT_INTF_EXECUTE, IPCQ_ROUTE_RAW, locked<on_default_intf>},
};

constexpr ipcq_route_t kNotifyRoutes[] = {
    {WEX_OPC_CFG_CHANGE_NOTIFY, IPCQ_ROUTE_RAW, locked<on_notification>},
    {WEX_OPC_ABS_TIMEOUT_ANNOUNCE, IPCQ_ROUTE_RAW, locked<on_notification>},
    {WEX_OPC_LOGOUT_WARNING_ANNOUNCE, IPCQ_ROUTE_RAW, locked<on_notification>},
    {WEX_OPC_PA_STATE_QUERY, IPCQ_ROUTE_RAW, locked<on_notification>},
    {WEX_OPC_PARSE_TREE_REGISTER, IPCQ_ROUTE_RAW, locked<on_standby_tree>},
    {WEX_OPC_PARSE_TREE_DEREGISTER, IPCQ_ROUTE_RAW, locked<on_standby_tree>},
};

} // namespace

std::span<const ipcq_route_t> routes_of(uint32_t queue)
{
    switch (queue) {
    case WEXD_QUEUE:
        return kWexdRoutes;
    case PARSE_TREE_QUEUE:
        return kParseTreeRoutes;
    case ASCII_CFG_SERVER_QUEUE:
        return kAsciiCfgRoutes;
    case WEX_NOTIFY_QUEUE:
        return kNotifyRoutes;
    default:
        return {};
    }
}

void on_unknown(void *context, const ipcq_request_info_t *request, ipcq_response_t *response)
{
    auto &queue = *static_cast<ServedQueue *>(context);
    log_request(queue.number, *request, "not served here: answered with a failure");
    // A request/response sender learns the failure from the status; a raw
    // one gets an empty answer rather than waiting out its time-out.
    uint32_t msg_type = 0, len = 0;
    const void *payload = nullptr;
    if (bcp_parse_request(request->msg, &msg_type, &payload, &len) == 0) {
        bcp_reply(queue.q, request->msg, kFailure, nullptr, 0);
        response->no_reply = 1;
    }
}

} // namespace wexd_sim
