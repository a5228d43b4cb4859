/* The switch's request/response layer on the message transport: a request
 * carries a message type and two texts in a 112-byte header in front of its
 * payload, and its reply carries a status and a payload the same way. */
#ifndef WEX_PLATFORM_BCP_H
#define WEX_PLATFORM_BCP_H

#include <stdint.h>

#include "ipcq.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Every request/response message goes to this address. */
#define BCP_DEST_ADDRESS 0xFE000000u

#define BCP_TEXT_SIZE 50

/* The header in front of every request and reply payload, 112 bytes. The
 * three numbers are big-endian; the texts are cut to 49 characters and
 * terminated. */
typedef struct bcp_header {
    uint32_t msg_type;
    uint32_t length;
    int32_t status;
    char text1[BCP_TEXT_SIZE];
    char text2[BCP_TEXT_SIZE];
} bcp_header_t;

/* Sends a request of *len payload bytes (req may be NULL when *len is 0) to
 * (BCP_DEST_ADDRESS, dest_queue) from queue q, and waits up to timeout_s
 * seconds (0 for the transport's default) for the reply. On a reply, *len
 * becomes the reply's payload length and, when reply is not NULL, *reply a
 * malloc'd copy of the payload (NULL for an empty one) that the caller
 * frees. Returns the reply's status (0, or the service's positive code), or
 * -1 with errno when the exchange failed (ETIME when the time-out ran out);
 * on -1 nothing is stored in *reply. */
int bcp_req_resp(uint32_t opcode, uint32_t msg_type, const void *req, void **reply, uint32_t *len,
                 const char *text1, const char *text2, uint32_t dest_queue, int q, uint32_t timeout_s);

/* The first half of bcp_req_resp: sends the request and keeps the sent
 * message in *msg for its token. Returns the ipcq_send result. */
int bcp_send_request(uint32_t opcode, uint32_t msg_type, const void *req, uint32_t len, const char *text1,
                     const char *text2, uint32_t dest_address, uint32_t dest_queue, int q,
                     ipcq_msg_handle_t *msg);

/* The second half: takes a received reply apart. Stores a malloc'd copy of
 * its payload (NULL for an empty one) and the payload's length; returns the
 * reply's status, or -1 with errno EBADMSG (nothing stored) when the
 * message is not a well-formed reply. */
int bcp_parse_response(const ipcq_msg_handle_t *msg, void **payload, uint32_t *len);

/* For services: the message type and payload of a received request (the
 * payload points into the message). Returns 0, or -1 with errno EBADMSG
 * when the message is not a well-formed request. */
int bcp_parse_request(const ipcq_msg_handle_t *msg, uint32_t *msg_type, const void **payload, uint32_t *len);

/* For services: answers a received request with a status and a payload.
 * Returns the ipcq_reply result. */
int bcp_reply(int q, const ipcq_msg_handle_t *request, int32_t status, const void *payload, uint32_t len);

#ifdef __cplusplus
}
#endif

#endif /* WEX_PLATFORM_BCP_H */
