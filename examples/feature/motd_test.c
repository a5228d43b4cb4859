/* The feature's own unit test, against the recording wexd of libwex_testing
 * (no wexd-sim, no shell): its grammar registered, a command applied and
 * its change announced, the CLI lock and a role check. Exit status 0 when
 * everything holds; each thing that does not is named. */
#include "motd.h"

#include <wex-testing/wex_testing.h>

#include <ipcq.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures;

static void expect(int holds, const char *what)
{
    if (!holds) {
        fprintf(stderr, "motd_test: %s\n", what);
        ++failures;
    }
}

/* Whether the daemon received a message of that opcode name (within a
 * second) since the last look; the messages looked at are taken. */
static int received(wex_testing_daemon *daemon, const char *opcode_name)
{
    const int found = wex_testing_wait_for(daemon, opcode_name, 1000);
    free(wex_testing_messages(daemon));
    return found;
}

int main(void)
{
    wex_testing_daemon *daemon = wex_testing_start("role auditor\nrule 1 permit show all\n", NULL);
    struct motd_state state = {""};
    char message[] = "Welcome to the lab";
    param_arg text = {0, TYPE_LINE, 0, message, 0};
    pinfo command;
    char output[128] = "";
    int32_t changed = 0;
    int q;

    if (!daemon)
        return 1;
    q = ipcq_open(WEX_DEST_ADDRESS, 3301);
    expect(q >= 0, "the feature's queue opens");

    expect(wex_register_parse_tree(q, MOTD_MODULE) == 0, "wexd takes the grammar");
    expect(received(daemon, "parse-tree-register"), "the grammar's registration reaches wexd");

    memset(&command, 0, sizeof command);
    command.command_id = MOTD_COMMAND_ID;
    command.param_count = 1;
    command.args[0] = &text;
    command.ipcq_q = q;
    expect(motd_apply(&state, &command, output, sizeof output, &changed) == 0, "the command is applied");
    expect(changed == 1 && strcmp(state.text, message) == 0, "the message is set");
    expect(wex_api_notify_cfg_change(&command) == 0, "the change is announced");
    expect(received(daemon, "cfg-change-notify"), "the announcement reaches wexd");

    expect(wexd_cli_lock(q, 7) == 0, "the CLI lock is granted");
    expect(wexd_cli_lock(q, 8) != 0, "a second requester is refused the lock");
    expect(wexd_cli_unlock(q, 7) == 0, "the lock is given back");

    expect(wexd_perm_group_role_name_verify(q, "auditor") == 0, "a configured role is known");
    expect(wexd_perm_group_role_name_verify(q, "nobody") != 0, "an unknown role is refused");

    ipcq_close(q);
    wex_testing_stop(daemon);
    if (failures == 0)
        puts("motd_test: all held");
    return failures == 0 ? 0 : 1;
}
