/** @file
 * Serving the shell from a feature written in C: the commands the shell
 * sends, in batches, and the feature's part of the running configuration,
 * in pages. The feature opens its queue and registers its grammar with
 * libwex itself, then hands the queue to wex_feature_serve. */
#ifndef WEX_FEATURE_H
#define WEX_FEATURE_H

#include <wex/wex.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Where a feature's running configuration is gathered, one block at a time. */
typedef struct wex_feature_sink wex_feature_sink;

/** What a feature does with the shell's requests. */
typedef struct wex_feature_ops {
    /** The module its grammar registered as; it names the feature in messages. */
    const char *module;
    /** Applies one command. Writes what the user is shown, terminated, in at
     * most capacity bytes of output (nothing: an empty text), and sets
     * *changed to 1 when the running configuration changed, which is then
     * announced to wexd. Returns 0 when applied; anything else refuses the
     * command, with the state as it was. */
    int32_t (*apply)(void *context, const pinfo *command, char *output, size_t capacity, int32_t *changed);
    /** Gives the running configuration with wex_feature_add_block, block by
     * block, in the order they are shown. */
    void (*running_config)(void *context, wex_feature_sink *sink);
} wex_feature_ops;

/** Adds one block: its first line a top-level command, the lines after it,
 * each ended by a line end, commands of that command's submode. Blocks are
 * shown by priority, lowest first. Returns 0, or -1 for a NULL sink or text
 * or when memory runs out (the block is then left out). */
int32_t wex_feature_add_block(wex_feature_sink *sink, uint32_t priority, const char *text);

/** Serves the shell's requests on the open queue q with ops and context,
 * until SIGTERM or SIGINT. Returns 0 when it stopped so, 1 when the queue
 * failed or ops is incomplete. */
int32_t wex_feature_serve(int q, const wex_feature_ops *ops, void *context);

#ifdef __cplusplus
}
#endif

#endif /* WEX_FEATURE_H */
