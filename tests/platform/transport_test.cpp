// The transport stand-in between real processes: a forked service and the
// test process talk over the runtime directory's sockets.
#include "bcp.h"
#include "ipcq.h"
#include "ipcq_serve.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

constexpr uint32_t kAddress = 0xFE000000;
constexpr uint32_t kServiceQueue = 37;
constexpr uint32_t kClientQueue = 1001;

std::string text_of(const void *bytes, uint32_t len)
{
    return std::string(static_cast<const char *>(bytes), len);
}

void *copy_to_malloc(const std::string &text)
{
    void *block = std::malloc(text.size() + 1);
    std::memcpy(block, text.data(), text.size());
    return block;
}

// bcp route: answers "<type>:<texts>:<payload>" and, for opcode 914, the
// status of an unknown name.
void describe_request(void *, const ipcq_request_info_t *request, ipcq_response_t *response)
{
    bcp_header_t header;
    std::memcpy(&header, ipcq_payload_get(request->msg), sizeof header);
    const std::string text = std::to_string(request->msg_type) + ":" + header.text1 + "," + header.text2 +
                             ":" + text_of(request->payload, request->len);
    response->payload = copy_to_malloc(text);
    response->len = static_cast<uint32_t>(text.size());
    response->status = request->opcode == 914 ? 0x40540009 : 0;
}

// Raw route: sends the payload back as it came.
void echo(void *, const ipcq_request_info_t *request, ipcq_response_t *response)
{
    response->payload = std::malloc(request->len ? request->len : 1);
    std::memcpy(response->payload, request->payload, request->len);
    response->len = request->len;
}

volatile sig_atomic_t stop_serving = 0;
void on_sigterm(int)
{
    stop_serving = 1;
}

// A service in a child process, opened before the constructor returns.
class Service
{
  public:
    explicit Service(const std::function<int(int q)> &body)
    {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        pid_ = fork();
        if (pid_ == 0) {
            close(ready[0]);
            const int q = ipcq_open(kAddress, kServiceQueue);
            const char state = q > 0 ? 'y' : 'n';
            (void)!write(ready[1], &state, 1);
            _exit(q > 0 ? body(q) : 90);
        }
        close(ready[1]);
        char state = 0;
        EXPECT_EQ(read(ready[0], &state, 1), 1);
        EXPECT_EQ(state, 'y');
        close(ready[0]);
    }
    ~Service()
    {
        if (pid_ > 0 && !reaped_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    // The child's exit status; 0 means it saw everything it expected.
    int wait_exit()
    {
        int status = 0;
        waitpid(pid_, &status, 0);
        reaped_ = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 100 + WTERMSIG(status);
    }
    pid_t pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
    bool reaped_ = false;
};

int serve_routes(int q)
{
    std::signal(SIGTERM, on_sigterm);
    const ipcq_route_t routes[] = {{905, IPCQ_ROUTE_RAW, echo},
                                   {914, IPCQ_ROUTE_BCP, describe_request},
                                   {916, IPCQ_ROUTE_BCP, describe_request}};
    return ipcq_serve(q, routes, 3, nullptr, nullptr, &stop_serving) == 0 ? 0 : 1;
}

ipcq_recv_options_t reply_options(uint32_t token, uint32_t timeout_s)
{
    ipcq_recv_options_t options{};
    options.version = 1;
    options.timeout_s = timeout_s;
    options.rr_token = token;
    return options;
}

class TransportTest : public ::testing::Test
{
  protected:
    static void SetUpTestSuite()
    {
        static char dir[] = "/tmp/ipcq-test-XXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        setenv("IPCQ_RUNTIME_DIR", dir, 1);
    }
    void SetUp() override { ASSERT_GT(q_ = ipcq_open(kAddress, kClientQueue), 0); }
    void TearDown() override { ipcq_close(q_); }

    // A request/response exchange; the reply as text, or "<status N>".
    std::string exchange(uint32_t opcode, const std::string &request, int *status = nullptr)
    {
        void *reply = nullptr;
        uint32_t len = static_cast<uint32_t>(request.size());
        const int result =
            bcp_req_resp(opcode, 1, request.data(), &reply, &len, "alpha", "beta", kServiceQueue, q_, 5);
        if (status)
            *status = result;
        std::string text = result < 0 ? "<failed " + std::to_string(errno) + ">" : text_of(reply, len);
        std::free(reply);
        return text;
    }

    int q_ = -1;
};

TEST_F(TransportTest, RequestsAndRepliesPassBetweenProcessesAndThreads)
{
    Service service(serve_routes);
    int status = -1;
    EXPECT_EQ(exchange(916, "hello", &status), "1:alpha,beta:hello");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(exchange(914, "", &status), "1:alpha,beta:");
    EXPECT_EQ(status, 0x40540009);

    // The synchronous pattern: send, token, drop, receive by token.
    ipcq_msg_handle_t msg = nullptr;
    ASSERT_EQ(ipcq_send(q_, kAddress, kServiceQueue, 905, "raw", 3, &msg, 0, nullptr), 0);
    const uint32_t token = ipcq_rr_token_get(&msg);
    EXPECT_NE(token, 0u);
    ipcq_drop(q_, &msg);
    EXPECT_EQ(msg, nullptr);
    const ipcq_recv_options_t options = reply_options(token, 5);
    ASSERT_EQ(ipcq_recv(q_, &msg, &options), 0);
    EXPECT_EQ(text_of(ipcq_payload_get(&msg), ipcq_payload_size(&msg)), "raw");
    EXPECT_EQ(ipcq_sender_queue_get(&msg), kServiceQueue);
    ipcq_drop(q_, &msg);

    // Threads sharing the queue each get the reply to their own request.
    std::vector<std::thread> threads;
    std::vector<int> mismatches(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 40; ++i) {
                const std::string request = std::to_string(t) + "/" + std::to_string(i);
                mismatches[t] += exchange(916, request) != "1:alpha,beta:" + request;
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(mismatches, std::vector<int>(4, 0));

    kill(service.pid(), SIGTERM);
    EXPECT_EQ(service.wait_exit(), 0);
}

TEST_F(TransportTest, ARequestTakesOnlyItsOwnReply)
{
    // The service answers the second request before the first.
    Service service([](int q) {
        ipcq_msg_handle_t first = nullptr, second = nullptr;
        const ipcq_recv_options_t any = reply_options(0, 5);
        if (ipcq_recv(q, &first, &any) || ipcq_recv(q, &second, &any))
            return 1;
        const int failed = ipcq_reply(q, &second, "second", 6) | ipcq_reply(q, &first, "first", 5);
        const bool refused_twice = ipcq_reply(q, &first, "again", 5) == -1 && errno == EINVAL;
        ipcq_drop(q, &first);
        ipcq_drop(q, &second);
        return failed == 0 && refused_twice ? 0 : 2;
    });
    ipcq_msg_handle_t a = nullptr, b = nullptr;
    ASSERT_EQ(ipcq_send(q_, kAddress, kServiceQueue, 1, "a", 1, &a, 0, nullptr), 0);
    ASSERT_EQ(ipcq_send(q_, kAddress, kServiceQueue, 2, "b", 1, &b, 0, nullptr), 0);
    const uint32_t token_a = ipcq_rr_token_get(&a), token_b = ipcq_rr_token_get(&b);
    EXPECT_NE(token_a, token_b);

    // A token with no request behind it, while both requests wait.
    const ipcq_recv_options_t unknown = reply_options(token_b + 100, 5);
    EXPECT_EQ(ipcq_recv(q_, &a, &unknown), -1);
    EXPECT_EQ(errno, ENOMSG);

    // Taken in the order opposite to sending.
    const ipcq_recv_options_t for_a = reply_options(token_a, 5), for_b = reply_options(token_b, 5);
    ASSERT_EQ(ipcq_recv(q_, &b, &for_b), 0);
    EXPECT_EQ(text_of(ipcq_payload_get(&b), ipcq_payload_size(&b)), "second");
    EXPECT_EQ(ipcq_rr_token_get(&b), token_b);
    ASSERT_EQ(ipcq_recv(q_, &a, &for_a), 0);
    EXPECT_EQ(text_of(ipcq_payload_get(&a), ipcq_payload_size(&a)), "first");

    // A reply is taken once.
    EXPECT_EQ(ipcq_recv(q_, &b, &for_b), -1);
    EXPECT_EQ(errno, ENOMSG);
    ipcq_drop(q_, &a);
    ipcq_drop(q_, &b);
    EXPECT_EQ(service.wait_exit(), 0);
}

TEST_F(TransportTest, WaitsEndWithTimeOrWithTheServicesEnd)
{
    // Holds the first request unanswered for 3 s, then dies holding the second.
    Service service([](int q) {
        ipcq_msg_handle_t request = nullptr;
        const ipcq_recv_options_t any = reply_options(0, 5);
        if (ipcq_recv(q, &request, &any))
            return 1;
        sleep(3);
        if (ipcq_recv(q, &request, &any))
            return 1;
        _exit(0);
    });
    void *reply = reinterpret_cast<void *>(1);
    uint32_t len = 0;
    errno = 0;
    EXPECT_EQ(bcp_req_resp(916, 1, nullptr, &reply, &len, "", "", kServiceQueue, q_, 1), -1);
    EXPECT_EQ(errno, ETIME);
    EXPECT_EQ(reply, reinterpret_cast<void *>(1));

    EXPECT_EQ(bcp_req_resp(916, 1, nullptr, &reply, &len, "", "", kServiceQueue, q_, 30), -1);
    EXPECT_EQ(errno, ECONNRESET);
    EXPECT_EQ(service.wait_exit(), 0);
}

TEST_F(TransportTest, SendsToAbsentOrDeadQueuesFailAtOnce)
{
    EXPECT_EQ(ipcq_send(q_, kAddress, 4242, 7, "x", 1, nullptr, 0, nullptr), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(ipcq_errno_get(q_), ENOENT);

    // A queue whose process died without closing it.
    Service dead([](int) { return 0; });
    EXPECT_EQ(dead.wait_exit(), 0);
    EXPECT_EQ(ipcq_send(q_, kAddress, kServiceQueue, 7, "x", 1, nullptr, 0, nullptr), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
    // ... can be opened again, but a live queue cannot be opened twice.
    const int taken_over = ipcq_open(kAddress, kServiceQueue);
    EXPECT_GT(taken_over, 0);
    EXPECT_EQ(ipcq_open(kAddress, kServiceQueue), -1);
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_EQ(ipcq_close(taken_over), 0);

    EXPECT_EQ(ipcq_send(q_, kAddress, kClientQueue, 7, "x", IPCQ_MAX_PAYLOAD + 1, nullptr, 0, nullptr), -1);
    EXPECT_EQ(errno, EMSGSIZE);
    EXPECT_EQ(ipcq_send(q_ + 1000, kAddress, kClientQueue, 7, "x", 1, nullptr, 0, nullptr), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(TransportTest, OneMebibyteTravelsIntactBothWays)
{
    Service service(serve_routes);
    std::string payload(1u << 20, '\0');
    for (size_t i = 0; i < payload.size(); ++i)
        payload[i] = static_cast<char>(i * 7 + i / 251);
    ipcq_msg_handle_t msg = nullptr;
    ASSERT_EQ(ipcq_send(q_, kAddress, kServiceQueue, 905, payload.data(),
                        static_cast<uint32_t>(payload.size()), &msg, 0, nullptr),
              0);
    const ipcq_recv_options_t options = reply_options(ipcq_rr_token_get(&msg), 10);
    ASSERT_EQ(ipcq_recv(q_, &msg, &options), 0);
    ASSERT_EQ(ipcq_payload_size(&msg), payload.size());
    EXPECT_TRUE(std::memcmp(ipcq_payload_get(&msg), payload.data(), payload.size()) == 0);
    ipcq_drop(q_, &msg);
    kill(service.pid(), SIGTERM);
    EXPECT_EQ(service.wait_exit(), 0);
}

TEST_F(TransportTest, BcpHeaderIsBigEndianWithTerminatedTexts)
{
    // A service that keeps the request's bytes: the reply is the request.
    ipcq_msg_handle_t msg = nullptr;
    const std::string long_text(60, 't');
    Service service([](int q) {
        ipcq_msg_handle_t request = nullptr;
        const ipcq_recv_options_t any = reply_options(0, 5);
        if (ipcq_recv(q, &request, &any))
            return 1;
        return ipcq_reply(q, &request, ipcq_payload_get(&request), ipcq_payload_size(&request)) ? 2 : 0;
    });
    const int q = q_;
    ASSERT_EQ(bcp_send_request(7673, 1, "\x06\0\0\0\0\0\0\0", 8, "clis", long_text.c_str(), kAddress,
                               kServiceQueue, q, &msg),
              0);
    const ipcq_recv_options_t options = reply_options(ipcq_rr_token_get(&msg), 5);
    ASSERT_EQ(ipcq_recv(q, &msg, &options), 0);
    ASSERT_EQ(ipcq_payload_size(&msg), 120u);
    const auto *bytes = static_cast<const unsigned char *>(ipcq_payload_get(&msg));
    const unsigned char head[17] = {0, 0, 0, 1, 0, 0, 0, 8, 0, 0, 0, 0, 'c', 'l', 'i', 's', 0};
    EXPECT_EQ(std::memcmp(bytes, head, sizeof head), 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(bytes + 62)), std::string(49, 't'));
    EXPECT_EQ(bytes[112], 6);

    // Taken apart as a response: status 0 and the eight payload bytes.
    void *payload = nullptr;
    uint32_t len = 0;
    EXPECT_EQ(bcp_parse_response(&msg, &payload, &len), 0);
    EXPECT_EQ(len, 8u);
    std::free(payload);
    ipcq_drop(q, &msg);
    // Too short for a header: no payload handed out.
    EXPECT_EQ(bcp_parse_response(&msg, &payload, &len), -1);
    EXPECT_EQ(errno, EBADMSG);
    EXPECT_EQ(service.wait_exit(), 0);
}

} // namespace
