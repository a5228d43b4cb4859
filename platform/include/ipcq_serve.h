/* A service's receive loop on the transport: receive a request, hand it to
 * the handler of its opcode, send the handler's reply, go on. */
#ifndef WEX_PLATFORM_IPCQ_SERVE_H
#define WEX_PLATFORM_IPCQ_SERVE_H

#include <signal.h>
#include <stddef.h>
#include <stdint.h>

#include "ipcq.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How a route's requests are framed. */
#define IPCQ_ROUTE_RAW 0 /* the payload as sent; the reply payload as given */
#define IPCQ_ROUTE_BCP 1 /* a request/response header in front (see bcp.h) */

typedef struct ipcq_request_info {
    const ipcq_msg_handle_t *msg; /* the received message */
    uint32_t opcode;
    uint32_t sender_address;
    uint32_t sender_queue;
    uint32_t msg_type;   /* IPCQ_ROUTE_BCP: the request's message type; else 0 */
    const void *payload; /* IPCQ_ROUTE_BCP: the part after the header */
    uint32_t len;
} ipcq_request_info_t;

/* What a handler answers. The loop frees payload (malloc'd, may be NULL)
 * after sending it. With no_reply set, nothing is sent: for a one-way
 * message, or a request left for the sender to see go unanswered. */
typedef struct ipcq_response {
    int32_t status; /* IPCQ_ROUTE_BCP: the reply's status, 0 or positive */
    void *payload;
    uint32_t len;
    int no_reply;
} ipcq_response_t;

typedef void (*ipcq_handler_t)(void *context, const ipcq_request_info_t *request, ipcq_response_t *response);

typedef struct ipcq_route {
    uint32_t opcode;
    int framing; /* IPCQ_ROUTE_RAW or IPCQ_ROUTE_BCP */
    ipcq_handler_t handler;
} ipcq_route_t;

/* Serves queue q until *stop is non-zero (checked at least once a second,
 * and at once when a signal interrupts the wait). A request whose opcode no
 * route names goes to unknown, as a raw request, or is dropped unanswered
 * when unknown is NULL; a request/response message without a well-formed
 * header is dropped unanswered. Returns 0 when asked to stop, or -1 with
 * errno when the queue itself fails. */
int ipcq_serve(int q, const ipcq_route_t *routes, size_t route_count, ipcq_handler_t unknown, void *context,
               volatile sig_atomic_t *stop);

#ifdef __cplusplus
}
#endif

#endif /* WEX_PLATFORM_IPCQ_SERVE_H */
