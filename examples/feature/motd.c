/* The message-of-the-day feature's commands, configuration and
 * registration: "banner motd TEXT" sets the message, "no banner motd ..."
 * clears it, and the running configuration shows it. */
#include "motd.h"

#include <stdio.h>
#include <string.h>

/* The text of argument index of a command, or NULL. */
static const char *text_argument(const pinfo *command, int index)
{
    if (index >= command->param_count || !command->args[index] || !command->args[index]->value)
        return NULL;
    return (const char *)command->args[index]->value;
}

int32_t motd_apply(void *context, const pinfo *command, char *output, size_t capacity, int32_t *changed)
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

void motd_running_config(void *context, wex_feature_sink *sink)
{
    const struct motd_state *state = context;
    char line[MOTD_MAX_TEXT + 16];

    if (state->text[0] == '\0')
        return;
    snprintf(line, sizeof line, "banner motd %s\n", state->text);
    wex_feature_add_block(sink, MOTD_PRIORITY, line);
}

int motd_register(int q)
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
