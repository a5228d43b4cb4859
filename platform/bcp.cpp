#include "bcp.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

static_assert(sizeof(bcp_header_t) == 112);
static_assert(offsetof(bcp_header_t, text1) == 12);
static_assert(offsetof(bcp_header_t, text2) == 62);

namespace
{

struct FreeDeleter {
    void operator()(void *block) const { std::free(block); }
};
using Block = std::unique_ptr<std::byte, FreeDeleter>;

void copy_text(char (&field)[BCP_TEXT_SIZE], const char *text)
{
    if (text)
        std::strncpy(field, text, sizeof field - 1);
}

// The header and the payload in one block, as the transport sends them.
Block frame(uint32_t msg_type, int32_t status, const void *payload, uint32_t len, const char *text1,
            const char *text2)
{
    if (len > IPCQ_MAX_PAYLOAD - sizeof(bcp_header_t) || (len > 0 && !payload)) {
        errno = len > 0 && !payload ? EINVAL : EMSGSIZE;
        return nullptr;
    }
    Block block(static_cast<std::byte *>(std::calloc(1, sizeof(bcp_header_t) + len)));
    if (!block) {
        errno = ENOMEM;
        return nullptr;
    }
    bcp_header_t header{};
    header.msg_type = htonl(msg_type);
    header.length = htonl(len);
    header.status = static_cast<int32_t>(htonl(static_cast<uint32_t>(status)));
    copy_text(header.text1, text1);
    copy_text(header.text2, text2);
    std::memcpy(block.get(), &header, sizeof header);
    if (len > 0)
        std::memcpy(block.get() + sizeof header, payload, len);
    return block;
}

// The header of a received message whose length field matches its size;
// false with errno EBADMSG otherwise.
bool read_header(const ipcq_msg_handle_t *msg, bcp_header_t &header)
{
    const uint32_t size = ipcq_payload_size(msg);
    const void *bytes = ipcq_payload_get(msg);
    if (!bytes || size < sizeof header) {
        errno = EBADMSG;
        return false;
    }
    std::memcpy(&header, bytes, sizeof header);
    header.msg_type = ntohl(header.msg_type);
    header.length = ntohl(header.length);
    header.status = static_cast<int32_t>(ntohl(static_cast<uint32_t>(header.status)));
    if (header.length != size - sizeof header) {
        errno = EBADMSG;
        return false;
    }
    return true;
}

const std::byte *body_of(const ipcq_msg_handle_t *msg)
{
    return static_cast<const std::byte *>(ipcq_payload_get(msg)) + sizeof(bcp_header_t);
}

// Releases a transport message when it goes out of scope.
class MessageGuard
{
  public:
    explicit MessageGuard(int q) : q_(q) {}
    ~MessageGuard() { ipcq_drop(q_, &msg_); }
    ipcq_msg_handle_t *get() { return &msg_; }

  private:
    int q_;
    ipcq_msg_handle_t msg_ = nullptr;
};

} // namespace

extern "C" int bcp_send_request(uint32_t opcode, uint32_t msg_type, const void *req, uint32_t len,
                                const char *text1, const char *text2, uint32_t dest_address,
                                uint32_t dest_queue, int q, ipcq_msg_handle_t *msg)
{
    const Block block = frame(msg_type, 0, req, len, text1, text2);
    if (!block)
        return -1;
    return ipcq_send(q, dest_address, dest_queue, opcode, block.get(),
                     static_cast<uint32_t>(sizeof(bcp_header_t) + len), msg, 0, nullptr);
}

extern "C" int bcp_parse_response(const ipcq_msg_handle_t *msg, void **payload, uint32_t *len)
{
    bcp_header_t header;
    if (!payload || !len) {
        errno = EINVAL;
        return -1;
    }
    if (!read_header(msg, header))
        return -1;
    if (header.status < 0) { // a status is 0 or positive; -1 is kept for a failed exchange
        errno = EBADMSG;
        return -1;
    }
    void *copy = nullptr;
    if (header.length > 0) {
        copy = std::malloc(header.length);
        if (!copy) {
            errno = ENOMEM;
            return -1;
        }
        std::memcpy(copy, body_of(msg), header.length);
    }
    *payload = copy;
    *len = header.length;
    return header.status;
}

extern "C" int bcp_req_resp(uint32_t opcode, uint32_t msg_type, const void *req, void **reply, uint32_t *len,
                            const char *text1, const char *text2, uint32_t dest_queue, int q,
                            uint32_t timeout_s)
{
    if (!len) {
        errno = EINVAL;
        return -1;
    }
    MessageGuard message(q);
    if (bcp_send_request(opcode, msg_type, req, *len, text1, text2, BCP_DEST_ADDRESS, dest_queue, q,
                         message.get()) < 0)
        return -1;
    ipcq_recv_options_t options{};
    options.version = 1;
    options.timeout_s = timeout_s;
    options.rr_token = ipcq_rr_token_get(message.get());
    if (ipcq_recv(q, message.get(), &options) < 0)
        return -1;
    void *payload = nullptr;
    uint32_t payload_len = 0;
    const int status = bcp_parse_response(message.get(), &payload, &payload_len);
    if (status < 0)
        return -1;
    *len = payload_len;
    if (reply)
        *reply = payload;
    else
        std::free(payload);
    return status;
}

extern "C" int bcp_parse_request(const ipcq_msg_handle_t *msg, uint32_t *msg_type, const void **payload,
                                 uint32_t *len)
{
    bcp_header_t header;
    if (!msg_type || !payload || !len) {
        errno = EINVAL;
        return -1;
    }
    if (!read_header(msg, header))
        return -1;
    *msg_type = header.msg_type;
    *payload = body_of(msg);
    *len = header.length;
    return 0;
}

extern "C" int bcp_reply(int q, const ipcq_msg_handle_t *request, int32_t status, const void *payload,
                         uint32_t len)
{
    const Block block = frame(0, status, payload, len, nullptr, nullptr);
    if (!block)
        return -1;
    return ipcq_reply(q, request, block.get(), static_cast<uint32_t>(sizeof(bcp_header_t) + len));
}
