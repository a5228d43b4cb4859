/* The message-of-the-day feature: its state, the command it serves, its
 * line of the running configuration, and its registration with wexd. */
#ifndef MOTD_H
#define MOTD_H

#include <wex-feature/wex_feature.h>

#define MOTD_MODULE "motd"
#define MOTD_COMMAND_ID 400u /* "banner motd <TEXT>", as motd.tree numbers it */
#define MOTD_PRIORITY 30u    /* shown after the features it depends on */
#define MOTD_MAX_TEXT 256

/* The feature's whole state: the message, empty when none is set. */
struct motd_state {
    char text[MOTD_MAX_TEXT];
};

/* Sets or, with "no", clears the message (wex_feature_ops.apply). */
int32_t motd_apply(void *context, const pinfo *command, char *output, size_t capacity, int32_t *changed);

/* One line, when a message is set (wex_feature_ops.running_config). */
void motd_running_config(void *context, wex_feature_sink *sink);

/* Registers the grammar on queue q, then asks wexd for a main tree holding
 * it: 0, or -1 after a line on standard error. */
int motd_register(int q);

#endif
