/* wex-motd: a minimal feature in C. It opens its queue on the transport,
 * registers its grammar (motd.par, compiled from motd.tree) with wexd, and
 * serves the shell until SIGTERM or SIGINT.
 *
 *   wex-motd [--queue N]      (default queue 3300)
 */
#include "motd.h"

#include <ipcq.h>

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MOTD_DEFAULT_QUEUE 3300u

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
    if (motd_register(q) == 0) {
        status = wex_feature_serve(q, &ops, &state);
        wex_deregister_parse_tree(q, MOTD_MODULE);
    }
    ipcq_close(q);
    fprintf(stderr, "motd: stopped\n");
    return status;
}
