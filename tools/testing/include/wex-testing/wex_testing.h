/** @file
 * A recording wexd inside a feature's own unit tests: the daemon's queues
 * (37, parse-tree registration 296, the configuration server 76 and
 * notifications 0) served on threads of the test process, answering
 * registration, notifications, the CLI lock and role checks as wexd-sim
 * does, and keeping one line for every message it received. No other
 * process is started. One daemon at a time in a process. */
#ifndef WEX_TESTING_H
#define WEX_TESTING_H

#ifdef __cplusplus
extern "C" {
#endif

/** A running daemon. */
typedef struct wex_testing_daemon wex_testing_daemon;

/** Starts the daemon on a private runtime folder, to which it points
 * IPCQ_RUNTIME_DIR, so that the library's requests from this process reach
 * it. roles: the text of a roles file (see wexd-sim.conf(5)), NULL for none.
 * par_dir: where the registered .par images are and main trees are made,
 * NULL for no main trees. Returns NULL, after a line on standard error, when
 * it cannot start. */
wex_testing_daemon *wex_testing_start(const char *roles, const char *par_dir);

/** The messages received since the last call, one line each: queue, sender,
 * opcode and its name, and what the message carried. The text becomes the
 * caller's, to release with free; NULL when memory runs out. */
char *wex_testing_messages(wex_testing_daemon *daemon);

/** Waits up to milliseconds for a message whose line holds text, among
 * those not yet taken with wex_testing_messages: a one-way message, such as
 * a notification, may still be on its way when its sender returns. 1 when
 * one came, else 0. */
int wex_testing_wait_for(wex_testing_daemon *daemon, const char *text, unsigned milliseconds);

/** Stops the daemon, removes its folder and releases it. */
void wex_testing_stop(wex_testing_daemon *daemon);

#ifdef __cplusplus
}
#endif

#endif /* WEX_TESTING_H */
