// Asking the user: each case runs in a child whose standard input is a pipe
// that the test has filled (and closed, or left open for the time limit).
#include <wex/diag.h>

#include "support/capture.h"
#include "support/child_process.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <unistd.h>

using wex_test::run_in_child;

namespace
{

int only_good(char *line)
{
    return std::strcmp(line, "good") == 0 ? 1 : 0;
}

struct Answer {
    std::string out;  // what the call printed, then "[result|destination]"
    bool exited_well; // the child returned normally
};

// Runs the request with input waiting on standard input. The destination
// starts as "untouched"; eof closes the input after the text.
Answer ask(wex_user_input_t request, const std::string &input, bool eof = true)
{
    const auto child = run_in_child([&] {
        int fds[2];
        if (pipe(fds) != 0 || write(fds[1], input.data(), input.size()) != static_cast<ssize_t>(input.size()))
            _exit(3);
        dup2(fds[0], STDIN_FILENO);
        close(fds[0]);
        if (eof)
            close(fds[1]);
        char dst[300] = "untouched";
        const int32_t result = wex_user_input_get(&request, dst);
        std::printf("[%d|%.*s]", result, static_cast<int>(strnlen(dst, sizeof dst)), dst);
    });
    return {child.out, child.exited && child.exit_status == 0};
}

wex_user_input_t question(int32_t max_len = 10)
{
    wex_user_input_t request{};
    request.prompt = "? ";
    request.default_str = "dflt";
    request.max_len = max_len;
    return request;
}

TEST(UserInput, LinesAreCheckedUntilOneIsTaken)
{
    wex_user_input_t validated = question();
    validated.validate = only_good;
    const wex_user_input_t plain = question();
    wex_user_input_t short_field = question(4);
    short_field.default_str = "abcdef";
    const struct {
        const char *what;
        wex_user_input_t request;
        std::string input, out;
    } cases[] = {
        {"validator refuses, then takes", validated, "bad\ngood\n", "? ? [0|good]"},
        {"ten characters do not fit ten bytes", plain, "0123456789\n012345678\n",
         "? Input string too long\n? [0|012345678]"},
        {"empty line gives the default", plain, "\n", "? [0|dflt]"},
        {"end of input gives the default", plain, "", "? [0|dflt]"},
        {"end of input after a refused line", validated, "bad\n", "? ? [0|dflt]"},
        {"a default longer than the field is cut unterminated", short_field, "\n", "? [0|abcduched]"},
    };
    for (const auto &c : cases) {
        const Answer answer = ask(c.request, c.input);
        EXPECT_TRUE(answer.exited_well) << c.what;
        EXPECT_EQ(answer.out, c.out) << c.what;
    }
}

TEST(UserInput, LimitsBabyModeAndDebugLines)
{
    wex_user_input_t waiting = question();
    waiting.timeout = 1;
    EXPECT_EQ(ask(waiting, "", false).out, "? [0|dflt]"); // the time limit ends the wait
    // Both lines came in one read: the second is taken from the stream's
    // buffer although the descriptor has nothing more to offer.
    waiting.validate = only_good;
    EXPECT_EQ(ask(waiting, "bad\ngood\n", false).out, "? ? [0|good]");

    wex_user_input_t too_long = question(257);
    too_long.debug = 1;
    EXPECT_EQ(ask(too_long, "x\n").out, "Max length too high\n[1079246849|untouched]");
    EXPECT_EQ(ask(question(256), std::string(255, 'a') + "\n").out, "? [0|" + std::string(255, 'a') + "]");
    EXPECT_EQ(ask(question(0), "x\n").out, "[1079246849|untouched]");

    wex_user_input_t traced = question();
    traced.debug = 1;
    EXPECT_EQ(ask(traced, "abc\n").out,
              "? Select returned with status 1\nInput:abc:\ngetline return value = 4\n[0|abc]");

    // The prompt reaches the terminal before the wait for an answer: the
    // answer is given only once the prompt is on the output.
    const auto shown_first = run_in_child([] {
        int fds[2];
        if (pipe(fds) != 0 || dup2(fds[0], STDIN_FILENO) < 0)
            _exit(3);
        std::thread user([answer = fds[1]] {
            for (int i = 0; i < 500 && wex_test::read_whole_fd(STDOUT_FILENO).empty(); ++i)
                usleep(10 * 1000);
            const std::string seen = wex_test::read_whole_fd(STDOUT_FILENO);
            (void)!write(STDERR_FILENO, seen.data(), seen.size());
            (void)!write(answer, "yes\n", 4);
        });
        wex_user_input_t request = question();
        char dst[16];
        wex_user_input_get(&request, dst);
        user.join();
    });
    EXPECT_EQ(shown_first.err, "? ");

    int mode = 0;
    cmd_baby_mode_p = &mode;
    EXPECT_EQ(ask(question(), "abc\n").out, "[0|untouched]");
    cmd_baby_mode_p = nullptr;
}

} // namespace
