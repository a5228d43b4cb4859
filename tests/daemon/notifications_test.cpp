// Configuration-change notifications, announcements and the event-history
// printer.
#include <wex/wexd_client.h>

#include "daemon/wire_bytes.h"
#include "fakes/transport_fake.h"
#include "fakes/transport_test.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

using wex_fake::Bytes;
using wex_fake::fails;
using wex_fake::transport;
using wex_test::capture_output;
using wex_test::capture_stdout;

namespace
{

using NotificationsTest = wex_fake::TransportTest;

TEST_F(NotificationsTest, ConfigurationChangesGoOutWithoutReply)
{
    EXPECT_EQ(wex_notify_cfg_update(3, 1, 2, 3), 0);
    auto info = std::make_unique<pinfo>();
    std::memset(info.get(), 0, sizeof *info);
    info->ipcq_q = 12;
    EXPECT_EQ(wex_api_notify_cfg_change(info.get()), 0);
    info->info_flags = 1; // per-VSAN generation: nothing changed
    EXPECT_EQ(wex_api_notify_cfg_change(info.get()), 0);
    info->info_flags = 2;
    transport().script("ipcq_send", wex_fake::Answer{});
    transport().script("ipcq_send", fails(EPIPE));
    EXPECT_EQ(wex_api_notify_cfg_change(info.get()), 0);
    EXPECT_EQ(wex_api_notify_cfg_change(info.get()), 0); // the failure is hidden
    EXPECT_EQ(wex_api_notify_cfg_change(nullptr), 0);
    EXPECT_EQ(wex_config_change_notify(3), 0);
    transport().script("ipcq_send", fails(ENOENT));
    EXPECT_EQ(wex_config_change_notify(3), static_cast<int32_t>(0x80540002));
    transport().script("ipcq_send", fails(EAGAIN, -7));
    EXPECT_EQ(wex_notify_cfg_update(3, 1, 2, 3), -7);

    const auto sends = transport().calls_of("ipcq_send");
    ASSERT_EQ(sends.size(), 7u);
    EXPECT_EQ(sends[0].payload, wex_test::words_then_zeros({1, 2, 3}, 40));
    const int queues[] = {3, 12, 12, 12, 3, 3, 3};
    for (std::size_t i = 0; i < sends.size(); ++i) {
        EXPECT_EQ(sends[i].opcode, 943u);
        EXPECT_EQ(sends[i].dest_queue, 0u);
        EXPECT_EQ(sends[i].q, queues[i]);
        EXPECT_FALSE(sends[i].options.has_value());
        EXPECT_FALSE(sends[i].handle_given);
        if (i > 0 && i < 6) {
            EXPECT_EQ(sends[i].length, 0u);
        }
    }
    EXPECT_EQ(wait_for_chassis_box_online(), 0);
}

TEST_F(NotificationsTest, AnnouncementsReportFailuresWithPerror)
{
    EXPECT_EQ(wex_announce_logout_warning(4, 0x01020304), 0);
    EXPECT_EQ(wex_announce_abs_timeout(4, 60), 0);
    transport().script("ipcq_send", fails(ETIME));
    transport().script("ipcq_send", fails(EPIPE, 1));
    const auto output = capture_output([] {
        EXPECT_EQ(wex_announce_logout_warning(4, 5), static_cast<int32_t>(0x805F003E));
        EXPECT_EQ(wex_announce_abs_timeout(4, 5), static_cast<int32_t>(0x805F0020));
    });
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "Error: Logout warning notify failed: Timer expired\n"
                          "Error: Absolute timeout notify failed: Broken pipe\n");
    const auto sends = transport().calls_of("ipcq_send");
    ASSERT_EQ(sends.size(), 4u);
    EXPECT_EQ(sends[0].opcode, 7699u);
    EXPECT_EQ(sends[0].payload, (Bytes{4, 3, 2, 1}));
    EXPECT_EQ(sends[1].opcode, 7698u);
    EXPECT_EQ(sends[1].payload, (Bytes{60, 0, 0, 0}));
    EXPECT_EQ(sends[1].dest_queue, 0u);
    EXPECT_FALSE(sends[1].options.has_value());
}

TEST_F(NotificationsTest, EventHistoryPrintsHeaderThenTextOrUnknown)
{
    // 2026-11-22 22:30:05 UTC
    const uint32_t time_s = 1795386605;
    EXPECT_EQ(capture_stdout(
                  [&] { EXPECT_EQ(wexd_hist_print_event("lock taken", 2, 0x80280005, 4, 5, time_s), 0); }),
              "2026-11-22 22:30:05 E_WEXD_LOCK 2 4 5\n    lock taken\n");
    EXPECT_EQ(capture_stdout([&] { wexd_hist_print_event("beat", 0, 0x280000, 0, 0, 0); }),
              "1970-01-01 00:00:00 E_WEXD_HEARTBEAT 0 0 0\n    beat\n");
    EXPECT_EQ(capture_stdout([&] { wexd_hist_print_event("x", 1, 0x280006, 2, 3, time_s); }),
              "2026-11-22 22:30:05 E_WEXD_UNKNOWN 1 2 3\nUnknown Event\n");
    EXPECT_EQ(capture_stdout([&] { wexd_hist_print_event("x", 1, 0x27FFFF, 2, 3, time_s); }),
              "2026-11-22 22:30:05 E_WEXD_UNKNOWN 1 2 3\nUnknown Event\n");
    EXPECT_EQ(capture_stdout([] { EXPECT_EQ(wexd_hist_print_event(nullptr, 1, 0x280001, 2, 3, 4), 1); }),
              "NULL buffer pointer\n");
}

} // namespace
