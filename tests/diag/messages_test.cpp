// Standard messages, the log file, the time within the hour, lower-casing
// and messages written to terminals (stand-in devices in the sandbox).
#include <wex/diag.h>

#include "support/capture.h"
#include "support/child_process.h"
#include "support/sandbox.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/time.h>
#include <unistd.h>

using wex_test::capture_output;
using wex_test::capture_stdout;
using wex_test::file_content;
using wex_test::sandbox_path;
using wex_test::write_sandbox_file;

namespace
{

const std::string kRetry = "Process did not respond within the expected timeframe, please try again.\n";
const std::string kNoResponse = "Process did not respond within the expected timeframe\n";
const std::string kCheck = "Please check if command was successful using appropriate show commands\n";

TEST(Messages, TimeoutAndTransportErrorTexts)
{
    const std::string by_kind[] = {"", kRetry, kCheck, kNoResponse + kCheck, kCheck, kCheck, kCheck, "", ""};
    for (unsigned kind = 0; kind < std::size(by_kind); ++kind)
        EXPECT_EQ(capture_stdout([kind] { wex_print_timeout_message(kind); }), by_kind[kind]) << kind;

    EXPECT_EQ(capture_stdout([] { EXPECT_EQ(wex_print_ipcq_error_message(1, 62), 0); }), kRetry);
    EXPECT_EQ(capture_stdout([] { wex_print_ipcq_error_message(1, 32); }),
              "Communication could not be established with the process\n");
    const auto other = capture_output([] {
        errno = ENOENT; // the text is errno's, not the argument's
        wex_print_ipcq_error_message(3, EIO);
    });
    EXPECT_EQ(other.out, "");
    EXPECT_EQ(other.err, "Internal CLI error: No such file or directory\n");
}

TEST(Messages, LogFileTimeAndLowerCase)
{
    const std::string log = sandbox_path("/var/log/wex_test.log");
    std::filesystem::create_directories(sandbox_path("/var/log"));
    std::filesystem::remove(log);
    EXPECT_EQ(wex_log_mesg_to_file(log.c_str(), "first"), 0);
    EXPECT_EQ(wex_log_mesg_to_file(log.c_str(), " second\n"), 0);
    EXPECT_EQ(wex_log_mesg_to_file(log.c_str(), nullptr), 0); // nothing to write, nothing written
    EXPECT_EQ(wex_log_mesg_to_file(nullptr, "lost"), 0);
    EXPECT_EQ(file_content(log), "first second\n");
    EXPECT_EQ(wex_log_file_clear(log.c_str()), 0);
    EXPECT_EQ(file_content(log), "<absent>");
    errno = 0;
    EXPECT_EQ(wex_log_file_clear(log.c_str()), -1);
    EXPECT_EQ(errno, ENOENT);

    timeval before{}, after{};
    gettimeofday(&before, nullptr);
    const int64_t now = wex_time();
    gettimeofday(&after, nullptr);
    const auto within_hour = [](const timeval &t) { return (t.tv_sec % 3600) * 1000000LL + t.tv_usec; };
    if (within_hour(after) >= within_hour(before)) { // not across the turn of the hour
        EXPECT_GE(now, within_hour(before));
        EXPECT_LE(now, within_hour(after));
    }
    EXPECT_LT(now, 3600000000LL);

    char text[] = "Show RUNNING-Config 12";
    wex_convert_str_to_lower_case(text);
    EXPECT_STREQ(text, "show running-config 12");
}

TEST(Messages, SessionsAreTheConsoleAndThirtyTwoPseudoTerminals)
{
    write_sandbox_file("/dev/ttyS0", "");
    for (int n = 0; n < 32; ++n)
        write_sandbox_file("/dev/pts/" + std::to_string(n), "");
    EXPECT_EQ(wex_notify_cli_sessions("System going down"), 0);
    EXPECT_EQ(file_content(sandbox_path("/dev/ttyS0")) + file_content(sandbox_path("/dev/pts/31")),
              "System going downSystem going down");

    std::filesystem::remove(sandbox_path("/dev/pts/31"));
    std::filesystem::remove(sandbox_path("/dev/pts/5"));
    EXPECT_EQ(wex_notify_cli_sessions("again"), -1); // only the last terminal's result
    EXPECT_EQ(file_content(sandbox_path("/dev/pts/6")), "againm going down");
    EXPECT_EQ(file_content(sandbox_path("/dev/pts/31")), "<absent>"); // no entry created
    EXPECT_EQ(notify_session("pts/31", "x"), -1);
    EXPECT_EQ(notify_session("ttyS0", "X"), 0);
    EXPECT_EQ(file_content(sandbox_path("/dev/ttyS0")), "Xgainm going down");
}

TEST(Messages, DisplayTerminalWritesTheTextAndItsNulToTheCallersTerminal)
{
    const auto child = wex_test::run_in_child([] {
        const int master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
            _exit(3);
        const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
        if (terminal < 0 || dup2(terminal, STDIN_FILENO) < 0)
            _exit(4);
        const std::string device = ttyname(STDIN_FILENO);
        write_sandbox_file(device, "");
        EXPECT_EQ(display_terminal("hello"), 0);
        const std::string written = file_content(sandbox_path(device));
        std::printf("%s|", device.c_str());
        std::fwrite(written.data(), 1, written.size(), stdout);
        _exit(0); // no flush: only an unbuffered stdout has printed by now
    });
    EXPECT_EQ(child.exit_status, 0);
    EXPECT_EQ(child.out.substr(0, 9), "/dev/pts/");
    EXPECT_EQ(child.out.substr(child.out.find('|') + 1), std::string("hello\0", 6));
}

} // namespace
