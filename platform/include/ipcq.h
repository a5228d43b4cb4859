/* The switch's message transport: queues named by (address, queue number)
 * that exchange messages and match replies to requests by token.
 *
 * This stand-in carries messages over AF_UNIX stream sockets. Every open
 * queue listens on "<runtime directory>/<address as 8 hex digits>.<queue>";
 * the runtime directory is $IPCQ_RUNTIME_DIR, or "/tmp/ipcq-<uid>" when that
 * is unset. A queue keeps one connection to each queue it sends to, for as
 * long as both are open, and writes each message on it in one piece; the
 * replies come back on the same connection, so a sender learns at once when
 * the other side has gone away. When the receiver restarts, the next message
 * opens a new connection. */
#ifndef WEX_PLATFORM_IPCQ_H
#define WEX_PLATFORM_IPCQ_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The largest payload of one message, in bytes (4 MiB). */
#define IPCQ_MAX_PAYLOAD (4u * 1024u * 1024u)

/* The wait of a receive whose options give a time-out of 0, in seconds. */
#define IPCQ_DEFAULT_TIMEOUT_S 30u

/* The longest a send waits for the receiver to take its bytes, in seconds;
 * a send that waits longer fails with ETIME. */
#define IPCQ_SEND_TIMEOUT_S 10u

/* Options of ipcq_send, 68 bytes. Word 0 is 1; byte 35 marks a message for
 * the standby supervisor; the other bytes are zero. */
typedef struct ipcq_send_options {
    uint32_t version;
    uint8_t reserved1[31];
    uint8_t standby;
    uint8_t reserved2[32];
} ipcq_send_options_t;

/* Options of ipcq_recv, 40 bytes. timeout_s is the wait in seconds (0 for
 * IPCQ_DEFAULT_TIMEOUT_S); rr_token names the reply to wait for, or is 0 to
 * take the next request that arrives on the queue. */
typedef struct ipcq_recv_options {
    uint32_t version;
    uint32_t flags;
    uint32_t timeout_s;
    uint32_t rr_token;
    uint8_t reserved[24];
} ipcq_recv_options_t;

/* A message: the one just sent, or one received. Keep it in a variable
 * initialised to NULL; every call takes the variable's address. */
typedef struct ipcq_msg *ipcq_msg_handle_t;

/* Opens the calling process's queue (address, queue). Returns a positive
 * handle, or -1 with errno: EADDRINUSE when a live process holds the queue,
 * ENAMETOOLONG when the runtime directory's path is too long. */
int ipcq_open(uint32_t address, uint32_t queue);

/* Closes a queue that ipcq_open returned, with its pending exchanges. */
int ipcq_close(int q);

/* Sends a message of len payload bytes from queue q to (dest_address,
 * dest_queue). With msg, the sent message is kept there and its reply can be
 * received by its token; without, nobody waits for a reply. flags must be 0;
 * options may be NULL. Returns 0, or -1 with errno (and the queue's error
 * number, see ipcq_errno_get): ENOENT or ECONNREFUSED when nobody has the
 * destination open, EMSGSIZE above IPCQ_MAX_PAYLOAD, ETIME when the
 * receiver does not take the message in IPCQ_SEND_TIMEOUT_S seconds. */
int ipcq_send(int q, uint32_t dest_address, uint32_t dest_queue, uint32_t opcode, const void *payload,
              uint32_t len, ipcq_msg_handle_t *msg, uint32_t flags, const ipcq_send_options_t *options);

/* Waits for the message the options name (see ipcq_recv_options_t) and puts
 * it into *msg, releasing what *msg held. Returns 0, or -1 with errno: ETIME
 * when the wait ran out, ECONNRESET when the other side went away without a
 * reply, ENOMSG when no request of this queue carries the token, EBADMSG for
 * a message that is not well formed. */
int ipcq_recv(int q, ipcq_msg_handle_t *msg, const ipcq_recv_options_t *options);

/* Releases the message that *msg holds and sets *msg to NULL. Dropping a
 * sent message keeps its reply receivable; dropping a received request
 * without answering it tells the sender that no reply will come. */
int ipcq_drop(int q, ipcq_msg_handle_t *msg);

/* The request-reply token of the message: for a sent message, the token its
 * reply will carry. 0 for no message. */
uint32_t ipcq_rr_token_get(const ipcq_msg_handle_t *msg);

/* The message's payload (valid until the message is dropped), and its size
 * in bytes; NULL and 0 for no message. */
void *ipcq_payload_get(const ipcq_msg_handle_t *msg);
uint32_t ipcq_payload_size(const ipcq_msg_handle_t *msg);

/* The error number of the queue's last failed send or receive, 0 if none. */
int ipcq_errno_get(int q);

/* Of a received message: its opcode, and the address and queue it came from
 * (0 for no message). */
uint32_t ipcq_opcode_get(const ipcq_msg_handle_t *msg);
uint32_t ipcq_sender_address_get(const ipcq_msg_handle_t *msg);
uint32_t ipcq_sender_queue_get(const ipcq_msg_handle_t *msg);

/* Answers a received request with len payload bytes; the reply carries the
 * request's token. Returns 0, or -1 with errno (EPIPE when the sender no
 * longer waits, EINVAL when the message is not a request that can be
 * answered or was answered already). */
int ipcq_reply(int q, const ipcq_msg_handle_t *request, const void *payload, uint32_t len);

#ifdef __cplusplus
}
#endif

#endif /* WEX_PLATFORM_IPCQ_H */
