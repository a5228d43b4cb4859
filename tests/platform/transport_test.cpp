// The transport stand-in between real processes: a forked service and the
// test process talk over the runtime directory's sockets.
#include "bcp.h"
#include "ipcq.h"
#include "ipcq_serve.h"
#include "support/raw_peer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

constexpr uint32_t kAddress = 0xFE000000, kServiceQueue = 37, kClientQueue = 1001;

std::string text_of(const ipcq_msg_handle_t *msg)
{
    return std::string(static_cast<const char *>(ipcq_payload_get(msg)), ipcq_payload_size(msg));
}

ipcq_recv_options_t reply_to(uint32_t token, uint32_t timeout_s = 5)
{
    ipcq_recv_options_t options{};
    options.version = 1;
    options.timeout_s = timeout_s;
    options.rr_token = token;
    return options;
}

// Both routes answer "<type>:<texts>:<payload>", the raw one without texts;
// opcode 914 also reports the status of an unknown name.
void describe(void *, const ipcq_request_info_t *request, ipcq_response_t *response)
{
    std::string text(static_cast<const char *>(request->payload), request->len);
    if (request->opcode != 905) {
        bcp_header_t header;
        std::memcpy(&header, ipcq_payload_get(request->msg), sizeof header);
        text = std::to_string(request->msg_type) + ":" + header.text1 + "," + header.text2 + ":" + text;
    }
    response->payload = std::malloc(text.size() + 1);
    std::memcpy(response->payload, text.data(), text.size());
    response->len = static_cast<uint32_t>(text.size());
    response->status = request->opcode == 914 ? 0x40540009 : 0;
}

volatile sig_atomic_t stop_serving = 0;

int serve_routes(int q)
{
    std::signal(SIGTERM, [](int) { stop_serving = 1; });
    const ipcq_route_t routes[] = {
        {905, IPCQ_ROUTE_RAW, describe}, {914, IPCQ_ROUTE_BCP, describe}, {916, IPCQ_ROUTE_BCP, describe}};
    return ipcq_serve(q, routes, 3, nullptr, nullptr, &stop_serving) == 0 ? 0 : 1;
}

// A service in a child process, its queue open before the constructor returns;
// its exit status is 0 when it saw everything it expected.
class Service
{
  public:
    explicit Service(const std::function<int(int q)> &body)
    {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        if ((pid_ = fork()) == 0) {
            const int q = ipcq_open(kAddress, kServiceQueue);
            (void)!write(ready[1], q > 0 ? "y" : "n", 1);
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
        if (status_ < 0) { // not reaped: the test ended early
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    int wait_exit(int signal = 0)
    {
        if (signal)
            kill(pid_, signal);
        waitpid(pid_, &status_, 0);
        return WIFEXITED(status_) ? WEXITSTATUS(status_) : 100 + WTERMSIG(status_);
    }

  private:
    pid_t pid_ = -1;
    int status_ = -1;
};

class TransportTest : public ::testing::Test
{
  protected:
    static void SetUpTestSuite()
    {
        ASSERT_NE(mkdtemp(dir_), nullptr);
        setenv("IPCQ_RUNTIME_DIR", dir_, 1);
    }
    // Every queue is closed by now; the directory goes with its sockets.
    static void TearDownTestSuite() { std::filesystem::remove_all(dir_); }
    void SetUp() override { ASSERT_GT(q_ = ipcq_open(kAddress, kClientQueue), 0); }
    void TearDown() override { ipcq_close(q_); }

    // A request/response exchange: the reply as text, or "<failed errno>".
    std::string exchange(uint32_t opcode, const std::string &request, int *status = nullptr)
    {
        void *reply = nullptr;
        uint32_t len = static_cast<uint32_t>(request.size());
        const int result =
            bcp_req_resp(opcode, 1, request.data(), &reply, &len, "alpha", "beta", kServiceQueue, q_, 5);
        if (status)
            *status = result;
        std::string text = result < 0 ? "<failed " + std::to_string(errno) + ">"
                                      : std::string(static_cast<const char *>(reply), len);
        std::free(reply);
        return text;
    }
    // The synchronous pattern: send, token, drop, receive by token.
    std::string send_and_take(const std::string &payload)
    {
        ipcq_msg_handle_t msg = nullptr;
        EXPECT_EQ(ipcq_send(q_, kAddress, kServiceQueue, 905, payload.data(),
                            static_cast<uint32_t>(payload.size()), &msg, 0, nullptr),
                  0);
        const ipcq_recv_options_t options = reply_to(ipcq_rr_token_get(&msg), 10);
        ipcq_drop(q_, &msg);
        EXPECT_EQ(msg, nullptr);
        EXPECT_EQ(ipcq_recv(q_, &msg, &options), 0);
        EXPECT_EQ(ipcq_sender_queue_get(&msg), kServiceQueue);
        std::string text = text_of(&msg);
        ipcq_drop(q_, &msg);
        return text;
    }

    static inline char dir_[] = "/tmp/ipcq-test-XXXXXX";
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
    EXPECT_EQ(send_and_take("raw"), "raw");
    // A token with no request behind it, or whose reply was taken.
    ipcq_msg_handle_t msg = nullptr;
    const ipcq_recv_options_t unknown = reply_to(12345);
    EXPECT_EQ(ipcq_recv(q_, &msg, &unknown), -1);
    EXPECT_EQ(errno, ENOMSG);
    std::string mebibyte(1u << 20, '\0');
    for (size_t i = 0; i < mebibyte.size(); ++i)
        mebibyte[i] = static_cast<char>(i * 7 + i / 251);
    EXPECT_TRUE(send_and_take(mebibyte) == mebibyte);

    // Threads sharing the queue each get the reply to their own request.
    std::vector<std::thread> threads;
    std::vector<int> mismatches(4, 0);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 40; ++i) {
                const std::string request = std::to_string(t) + "/" + std::to_string(i);
                mismatches[t] += exchange(916, request) != "1:alpha,beta:" + request;
            }
        });
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(mismatches, std::vector<int>(4, 0));
    EXPECT_EQ(service.wait_exit(SIGTERM), 0);

    // The same queue in a new process: the link kept to the old one is
    // found closed by the send, which goes out once more on a new link.
    Service restarted(serve_routes);
    EXPECT_EQ(exchange(916, "again"), "1:alpha,beta:again");
    EXPECT_EQ(restarted.wait_exit(SIGTERM), 0);
}

TEST_F(TransportTest, WaitsEndWithTimeOrWithTheServicesEnd)
{
    // Holds the first request unanswered for 3 s, drops the second without
    // a reply, then dies holding the third.
    Service service([](int q) {
        ipcq_msg_handle_t request = nullptr;
        const ipcq_recv_options_t any = reply_to(0);
        if (ipcq_recv(q, &request, &any))
            return 1;
        sleep(3);
        if (ipcq_recv(q, &request, &any) || ipcq_drop(q, &request))
            return 1;
        return ipcq_recv(q, &request, &any) ? 1 : 0;
    });
    void *reply = reinterpret_cast<void *>(1);
    uint32_t len = 0;
    EXPECT_EQ(bcp_req_resp(916, 1, nullptr, &reply, &len, "", "", kServiceQueue, q_, 1), -1);
    EXPECT_EQ(errno, ETIME);
    EXPECT_EQ(reply, reinterpret_cast<void *>(1));
    for (int held_or_dying = 0; held_or_dying < 2; ++held_or_dying) {
        EXPECT_EQ(bcp_req_resp(916, 1, nullptr, &reply, &len, "", "", kServiceQueue, q_, 30), -1);
        EXPECT_EQ(errno, ECONNRESET);
    }
    EXPECT_EQ(service.wait_exit(), 0);
}

TEST_F(TransportTest, FramesSentTogetherAreServedInTurnUpToTheFirstBadOne)
{
    Service service(serve_routes);
    const wex_test::RawPeer peer(dir_, kServiceQueue);
    const uint32_t magic = 0x49504351, request = 2;
    const auto reply = [](uint32_t token, const char *payload) {
        const uint32_t header[8] = {0x49504351, 3, 905, kAddress, kServiceQueue, token, 4, 0};
        return std::string(reinterpret_cast<const char *>(header), sizeof header) + payload;
    };
    // Words in host order: "one!" is 0x21656e6f on this little-endian machine.
    peer.send_words({magic, request, 905, kAddress, 7, 1, 4, 0, 0x21656e6f,   // "one!"
                     magic, request, 905, kAddress, 7, 2, 4, 0, 0x216f7774}); // "two!"
    EXPECT_EQ(peer.receive(2 * 36), reply(1, "one!") + reply(2, "two!"));
    peer.send_words({magic, request, 905, kAddress, 7, 3, 4, 0, 0x21656e6f, 0xDEADBEEF, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_EQ(peer.receive(36), reply(3, "one!"));
    EXPECT_TRUE(peer.hung_up());
    EXPECT_EQ(exchange(916, "still"), "1:alpha,beta:still");
    EXPECT_EQ(service.wait_exit(SIGTERM), 0);
}

TEST_F(TransportTest, SendsToAbsentDeadOrBadQueuesFailAtOnce)
{
    const auto send_errno = [&](int from, uint32_t to, uint32_t len) {
        errno = 0;
        return ipcq_send(from, kAddress, to, 7, "x", len, nullptr, 0, nullptr) == -1 ? errno : 0;
    };
    EXPECT_EQ(send_errno(q_, 4242, 1), ENOENT);
    EXPECT_EQ(ipcq_errno_get(q_), ENOENT);
    EXPECT_EQ(send_errno(q_, kClientQueue, IPCQ_MAX_PAYLOAD + 1), EMSGSIZE);
    EXPECT_EQ(send_errno(q_ + 1000, kClientQueue, 1), EBADF);
    EXPECT_EQ(bcp_req_resp(916, 1, nullptr, nullptr, nullptr, "", "", kServiceQueue, q_, 1), -1); // no length
    EXPECT_EQ(errno, EINVAL);

    // A queue whose process died without closing it refuses, and can be
    // opened again; a live queue cannot be opened twice.
    Service dead([](int) { return 0; });
    EXPECT_EQ(dead.wait_exit(), 0);
    EXPECT_EQ(send_errno(q_, kServiceQueue, 1), ECONNREFUSED);
    const int taken_over = ipcq_open(kAddress, kServiceQueue);
    EXPECT_GT(taken_over, 0);
    EXPECT_EQ(ipcq_open(kAddress, kServiceQueue), -1);
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_EQ(ipcq_close(taken_over), 0);
}

} // namespace
