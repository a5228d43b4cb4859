#include "daemon_commands.h"

#include "daemon_queries.h"
#include "input_file.h"
#include "program.h"
#include "sim_replies.h"
#include "status_names.h"

#include <wex/wex.h>

#include "bcp.h"
#include "ipcq.h"

#include <algorithm>
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
using wex_tools::status_text;

using wex_tools::holder_text;
using wex_tools::lock_holder;
using wex_tools::open_client_queue;
using wex_tools::SimLockHolder;

// A request that failed: its status by name; an exchange that never took
// place also gets the library's own words for it.
int failed(const char *what, int32_t status)
{
    std::fprintf(stderr, "wexctl: %s: %s\n", what, status_text(status).c_str());
    if (wex_tools::is_exchange_failure(status))
        wex_tools::on_standard_error(wex_print_communication_failure_message);
    return 2;
}

int iftable(int q, const Args &)
{
    intf_table_entry *entries = nullptr;
    int32_t count = 0;
    int error = 0;
    // The request prints its own failure; it belongs with the others.
    wex_tools::on_standard_error([&] {
        count = wexd_interface_table_get(q, &entries);
        error = errno;
    });
    if (count < 0)
        return failed("iftable", WEX_ERRNO_STATUS(error));
    show_interface_table(entries, count);
    std::free(entries);
    return 0;
}

int trees(int q, const Args &)
{
    tree_table *table = nullptr;
    const int32_t status = wexd_tree_table_get(q, &table);
    if (status != 0 || !table)
        return failed("trees", status ? status : WEX_STATUS_FAILURE);
    // The reply is wexd's word: an index past the table is not followed.
    const int32_t last = std::clamp<int32_t>(table->last_index, -1, WEX_TREE_TABLE_CAPACITY - 1);
    show_tree_table(table->entries, static_cast<uint32_t>(last + 1));
    std::free(table);
    return 0;
}

int show_lock(int q)
{
    const std::optional<SimLockHolder> holder = lock_holder(q);
    if (!holder)
        return failed("lock --show", WEX_STATUS_FAILURE);
    std::printf("%s\n", holder_text(holder).c_str());
    return 0;
}

// REQUESTER, and for an unlock REQUESTER --force: a number of 32 bits.
std::optional<uint32_t> requester_of(const Args &args, bool force_allowed, const char *command)
{
    const bool forced = force_allowed && args.size() == 2 && args[1] == "--force";
    const std::optional<uint64_t> requester =
        args.size() == 1u + forced ? wex_tools::parse_number(args[0], UINT32_MAX) : std::nullopt;
    if (requester)
        return static_cast<uint32_t>(*requester);
    std::fprintf(stderr, "wexctl: %s needs a REQUESTER: a number from 0 to %u\n", command, UINT32_MAX);
    return std::nullopt;
}

int lock_result(int q, const char *what, int32_t status)
{
    if (status == 0) {
        std::printf("%sed\n", what);
        return 0;
    }
    if (wex_tools::is_exchange_failure(status))
        return failed(what, status);
    std::fprintf(stderr, "wexctl: %s refused: %s; %s\n", what, status_text(status).c_str(),
                 holder_text(lock_holder(q)).c_str());
    return 1;
}

int lock(int q, const Args &args)
{
    if (args.size() == 1 && args[0] == "--show")
        return show_lock(q);
    const std::optional<uint32_t> requester = requester_of(args, false, "lock");
    if (!requester)
        return 2;
    return lock_result(q, "lock", wexd_cli_lock(q, *requester));
}

int unlock(int q, const Args &args)
{
    const std::optional<uint32_t> requester = requester_of(args, true, "unlock");
    if (!requester)
        return 2;
    const bool force = args.back() == "--force";
    return lock_result(q, "unlock",
                       force ? wexd_cli_unlock_forced(q, *requester) : wexd_cli_unlock(q, *requester));
}

void show_roles(const uint8_t *bytes, uint32_t len)
{
    vsan_mask everything;
    everything.len = WEX_VSAN_MASK_BYTES;
    std::memset(everything.bits, 0xFF, sizeof everything.bits);
    for (std::size_t at = 0; at + sizeof(wex_tools::SimRoleReply) <= len;
         at += sizeof(wex_tools::SimRoleReply)) {
        wexd_perm_group_entry entry;
        std::memcpy(&entry, bytes + at + offsetof(wex_tools::SimRoleReply, role), sizeof entry);
        wexd_perm_group_entry_cli_show(&entry, &everything);
    }
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
    if (status == WEX_STATUS_ROLE_UNKNOWN) {
        std::fprintf(stderr, "wexctl: role %s: %s\n", name ? name : "show", status_text(status).c_str());
        return 1;
    }
    if (status != 0)
        return failed("role show", status);
    show_roles(static_cast<const uint8_t *>(buf), len);
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
    if (wexd_wex_configuration_get(q, &settings) != 0)
        return failed("config show", WEX_ERRNO_STATUS(errno));
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
    {"lock",
     "usage: wexctl lock REQUESTER | lock --show\nTakes the CLI lock for REQUESTER (a number), or shows who "
     "holds it.\n",
     lock},
    {"unlock",
     "usage: wexctl unlock REQUESTER [--force]\nGives the CLI lock back; --force takes it from whoever "
     "holds it.\n",
     unlock},
    {"role",
     "usage: wexctl role show [NAME]\nPrints one role, or every role (role replies in wexd-sim's layout).\n",
     role},
    {"config",
     "usage: wexctl config show\n"
     "       wexctl config diff RUNNING WANTED [--json]\n"
     "       wexctl config remediate RUNNING WANTED --tree MAIN.par [--skip-problems]\n"
     "show prints wexd's settings; 'wexctl config diff --help' and 'config remediate --help' say more.\n",
     config},
};

// Takes "--timeout SECONDS" out of the arguments; false when it is malformed.
bool take_timeout(Args &args, unsigned &seconds)
{
    const auto option = std::find(args.begin(), args.end(), "--timeout");
    if (option == args.end())
        return true;
    const std::optional<uint64_t> value =
        option + 1 == args.end() ? std::nullopt : wex_tools::parse_number(*(option + 1), 3600);
    if (!value || *value == 0) {
        std::fputs("wexctl: --timeout needs SECONDS, from 1 to 3600\n", stderr);
        return false;
    }
    seconds = static_cast<unsigned>(*value);
    args.erase(option, option + 2);
    return true;
}

int run_on_queue(const Command &command, const Args &args, unsigned seconds)
{
    const int q = open_client_queue();
    if (q < 0) {
        std::fprintf(stderr, "wexctl: cannot open a queue on the transport: %s\n", std::strerror(errno));
        return 2;
    }
    const int status = wex_tools::run_within(
        seconds, [&] { return command.run(q, args); },
        [&] {
            std::fprintf(stderr, "wexctl: %s: no answer from wexd within %u s\n", command.name, seconds);
            wex_tools::on_standard_error([] { wex_print_timeout_message(1); });
        });
    ipcq_close(q);
    return status;
}

} // namespace

std::optional<int> run_daemon_command(const std::string &name, const std::vector<std::string> &given)
{
    const auto command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                      [&](const Command &c) { return name == c.name; });
    if (command == std::end(kCommands))
        return std::nullopt;
    Args args = given;
    if (wex_tools::wants_help(args)) {
        std::fputs(command->help, stdout);
        return 0;
    }
    unsigned seconds = kDefaultTimeout;
    if (!take_timeout(args, seconds))
        return 2;
    return run_on_queue(*command, args, seconds);
}

} // namespace wexctl
