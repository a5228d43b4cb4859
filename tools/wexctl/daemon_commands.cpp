#include "daemon_commands.h"

#include <wex/output.h>
#include <wex/wexd_client.h>

#include "ipcq.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace wexctl
{
namespace
{

using Args = std::vector<std::string>;

// A role reply of wexd-sim: the role's number and name, then the entry.
constexpr std::size_t kRoleReplySize = 912;
constexpr std::size_t kRoleEntryOffset = 36;

// This process's own queue: a number from its process id, the next one
// when a live process holds it.
int open_client_queue()
{
    for (uint32_t attempt = 0; attempt < 16; ++attempt) {
        const int q =
            ipcq_open(WEX_DEST_ADDRESS, 20000 + (static_cast<uint32_t>(getpid()) + attempt) % 40000);
        if (q >= 0 || errno != EADDRINUSE)
            return q;
    }
    return -1;
}

int iftable(int q, const Args &)
{
    intf_table_entry *entries = nullptr;
    const int32_t count = wexd_interface_table_get(q, &entries);
    if (count < 0)
        return 2;
    show_interface_table(entries, count);
    std::free(entries);
    return 0;
}

int trees(int q, const Args &)
{
    tree_table *table = nullptr;
    if (wexd_tree_table_get(q, &table) != 0 || !table) {
        std::fputs("wexctl: wexd did not hand out its tree table\n", stderr);
        return 2;
    }
    show_tree_table(table->entries, static_cast<uint32_t>(table->last_index + 1));
    std::free(table);
    return 0;
}

uint32_t requester_of(const Args &args)
{
    for (const std::string &arg : args) {
        if (arg != "--force")
            return static_cast<uint32_t>(std::strtoul(arg.c_str(), nullptr, 0));
    }
    return static_cast<uint32_t>(getpid());
}

int lock_result(const char *what, int32_t status)
{
    if (status == 0) {
        std::printf("%s\n", what);
        return 0;
    }
    std::fprintf(stderr, "wexctl: %s refused: status 0x%08x\n", what, static_cast<uint32_t>(status));
    return 1;
}

int lock(int q, const Args &args)
{
    return lock_result("locked", wexd_cli_lock(q, requester_of(args)));
}

int unlock(int q, const Args &args)
{
    const bool force = !args.empty() && args.back() == "--force";
    const uint32_t requester = requester_of(args);
    return lock_result("unlocked",
                       force ? wexd_cli_unlock_forced(q, requester) : wexd_cli_unlock(q, requester));
}

int role(int q, const Args &args)
{
    if (args.empty() || args[0] != "show" || args.size() > 2) {
        std::fputs("wexctl: usage: wexctl role show [NAME]\n", stderr);
        return 2;
    }
    const char *name = args.size() == 2 ? args[1].c_str() : nullptr;
    void *buf = nullptr;
    uint32_t len = 0;
    const int32_t status = wexd_role_info_get(q, WEX_MSG_TYPE_READ, WEXD_ROLE_QUERY_ALL, name, &buf, &len);
    if (status != 0) {
        std::fprintf(stderr, "wexctl: role query failed: status 0x%08x\n", static_cast<uint32_t>(status));
        return status == WEX_STATUS_ROLE_UNKNOWN ? 1 : 2;
    }
    vsan_mask everything;
    everything.len = WEX_VSAN_MASK_BYTES;
    std::memset(everything.bits, 0xFF, sizeof everything.bits);
    const auto *bytes = static_cast<const uint8_t *>(buf);
    for (std::size_t at = 0; at + kRoleReplySize <= len; at += kRoleReplySize) {
        wexd_perm_group_entry entry;
        std::memcpy(&entry, bytes + at + kRoleEntryOffset, sizeof entry);
        wexd_perm_group_entry_cli_show(&entry, &everything);
    }
    std::free(buf);
    return 0;
}

int config(int q, const Args &args)
{
    if (args.size() != 1 || args[0] != "show") {
        std::fputs("wexctl: usage: wexctl config show\n", stderr);
        return 2;
    }
    wexd_wex_config *settings = nullptr;
    if (wexd_wex_configuration_get(q, &settings) != 0) {
        std::fputs("wexctl: wexd did not hand out its settings\n", stderr);
        return 2;
    }
    std::printf("switch name:        %.63s\nmax sessions:       %u\nsession time-out:   %u\n"
                "session time-out 2: %u\nterminal length:    %u\nterminal width:     %u\n",
                settings->switchname, settings->max_sessions, settings->session_timeout,
                settings->session_timeout_alt, settings->term_length, settings->term_width);
    std::free(settings);
    return 0;
}

struct Command {
    const char *name;
    const char *help;
    int (*run)(int q, const Args &args);
};

constexpr Command kCommands[] = {
    {"iftable", "usage: wexctl iftable\nPrints wexd's interface table.\n", iftable},
    {"trees", "usage: wexctl trees\nPrints wexd's tree table.\n", trees},
    {"lock", "usage: wexctl lock [REQUESTER]\nTakes the CLI lock for REQUESTER (default: this process id).\n",
     lock},
    {"unlock",
     "usage: wexctl unlock [REQUESTER] [--force]\nGives the CLI lock back; --force takes it from whoever "
     "holds it.\n",
     unlock},
    {"role",
     "usage: wexctl role show [NAME]\nPrints one role, or every role (role replies in wexd-sim's layout).\n",
     role},
    {"config", "usage: wexctl config show\nPrints wexd's settings.\n", config},
};

} // namespace

std::optional<int> run_daemon_command(const std::string &name, const std::vector<std::string> &args)
{
    for (const Command &command : kCommands) {
        if (name != command.name)
            continue;
        for (const std::string &arg : args) {
            if (arg == "--help" || arg == "-h") {
                std::fputs(command.help, stdout);
                return 0;
            }
        }
        const int q = open_client_queue();
        if (q < 0) {
            std::fprintf(stderr, "wexctl: cannot open a queue on the transport: %s\n", std::strerror(errno));
            return 2;
        }
        const int status = command.run(q, args);
        std::fflush(stdout);
        ipcq_close(q);
        return status;
    }
    return std::nullopt;
}

} // namespace wexctl
