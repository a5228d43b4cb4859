/* wex-motd: a minimal feature in C. It opens its queue on the transport,
 * registers its grammar (motd.par, compiled from motd.tree) with wexd, serves
 * "banner motd TEXT" and "no banner motd ..." from the shell, and gives the
 * line back in the running configuration, until SIGTERM or SIGINT.
 *
 *   wex-motd [--queue N]      (default queue 3300)
 */
#include <wex-feature/wex_feature.h>
#include <wex/wex.h>

#include <ipcq.h>

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MOTD_MODULE "motd"
#define MOTD_DEFAULT_QUEUE 3300u
#define MOTD_COMMAND_ID 400u   /* "banner motd <TEXT>", as motd.tree numbers it */
#define MOTD_PRIORITY 30u      /* shown after the features it depends on */
#define MOTD_MAX_TEXT 256

/* The feature's whole state: the message, empty when none is set. */
struct motd_state {
    char text[MOTD_MAX_TEXT];
};

/* The text of argument index of a command, or NULL. */
static const char *text_argument(const pinfo *command, int index)
{
    if (index >= command->param_count || !command->args[index] || !command->args[index]->value)
        return NULL;
    return (const char *)command->args[index]->value;
}

/* Sets or, with "no", clears the message. */
static int32_t motd_apply(void *context, const pinfo *command, char *output, size_t capacity,
                          int32_t *changed)
{
    struct motd_state *state = context;
    const char *text = text_argument(command, 0);

    if (command->command_id != MOTD_COMMAND_ID) {
        snprintf(output, capacity, "%% motd: command %u is not a motd command\n", command->command_id);
        return 1;
    }
    if (command->no_flag) {
        *changed = state->text[0] != '\0';
        state->text[0] = '\0';
        return 0;
    }
    if (!text || strlen(text) >= sizeof state->text) {
        snprintf(output, capacity, "%% motd: a message holds 1 to %d bytes\n", MOTD_MAX_TEXT - 1);
        return 1;
    }
    *changed = strcmp(state->text, text) != 0;
    snprintf(state->text, sizeof state->text, "%s", text);
    return 0;
}

/* One line, when a message is set. */
static void motd_running_config(void *context, wex_feature_sink *sink)
{
    const struct motd_state *state = context;
    char line[MOTD_MAX_TEXT + 16];

    if (state->text[0] == '\0')
        return;
    snprintf(line, sizeof line, "banner motd %s\n", state->text);
    wex_feature_add_block(sink, MOTD_PRIORITY, line);
}

/* The queue of "--queue N", or the default; 0 for a bad argument. */
static uint32_t queue_of(int argc, char **argv)
{
    char *end = NULL;
    unsigned long queue;

    if (argc == 1)
        return MOTD_DEFAULT_QUEUE;
    if (argc != 3 || strcmp(argv[1], "--queue") != 0)
        return 0;
    errno = 0;
    queue = strtoul(argv[2], &end, 10);
    return errno == 0 && *end == '\0' && queue >= 1 && queue <= 65535 ? (uint32_t)queue : 0;
}

/* Registers the grammar, then asks wexd for a main tree holding it. */
static int register_grammar(int q)
{
    int32_t tree;

    if (wex_register_parse_tree(q, MOTD_MODULE) != 0) {
        fprintf(stderr, "motd: wexd refused the parse tree\n");
        return -1;
    }
    tree = wexd_generate_main_tree(q);
    if (tree < 0) {
        fprintf(stderr, "motd: wexd made no main tree with these commands\n");
        return -1;
    }
    fprintf(stderr, "motd: commands in main tree %d\n", tree);
    return 0;
}

int main(int argc, char **argv)
{
    static struct motd_state state;
    const wex_feature_ops ops = {MOTD_MODULE, motd_apply, motd_running_config};
    const uint32_t queue = queue_of(argc, argv);
    int status = 1;
    int q;

    if (queue == 0) {
        fprintf(stderr, "usage: wex-motd [--queue N]\n");
        return 2;
    }
    q = ipcq_open(WEX_DEST_ADDRESS, queue);
    if (q < 0) {
        fprintf(stderr, "motd: cannot open queue %u: %s\n", queue, strerror(errno));
        return 1;
    }
    if (register_grammar(q) == 0) {
        status = wex_feature_serve(q, &ops, &state);
        wex_deregister_parse_tree(q, MOTD_MODULE);
    }
    ipcq_close(q);
    fprintf(stderr, "motd: stopped\n");
    return status;
}
