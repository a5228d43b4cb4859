// The debug-filter listing and the configuration generator's counters.
#include <wex/diag.h>

#include "support/capture.h"

#include <gtest/gtest.h>

using wex_test::capture_stdout;

TEST(DebugFilter, ListsTheGroupsThatAreOnInTableOrder)
{
    const std::string all_rows = "Wex:\n"
                                 "wex EOL debug is on\n"
                                 "wex EOL param debug is on\n"
                                 "wex EOL invocation debug is on\n"
                                 "wex PARAM debug is on\n"
                                 "wex PARSE brief debug is on\n"
                                 "wex PARSE full debug is on\n"
                                 "wex SUBMODE debug is on\n"
                                 "wex Interface PARAM debug is on\n"
                                 "wex FUNC TRACE is on\n"
                                 "wex HELP debug is on\n"
                                 "wex CMD debug is on\n"
                                 "wex EXEC debug is on\n"
                                 "wex PARSE TREE debug is on\n"
                                 "wex ASCIIGEN debug is on\n"
                                 "wex ERROR-CODES debug is on\n"
                                 "wex LOGFILE debug is on\n";
    const struct {
        uint32_t filter;
        std::string printed;
    } cases[] = {
        {0, ""},
        {0x7FFFFFFF, "Wex:\nwex ALL debugs are on\n"},
        {0xFFFFFFFF, all_rows},
        {0x4, "Wex:\nwex PARSE brief debug is on\nwex PARSE full debug is on\n"},
        {0x2000, "Wex:\n"},
        {0x10800, "Wex:\nwex EOL invocation debug is on\nwex PARAM debug is on\n"},
        {0x9000, "Wex:\nwex ERROR-CODES debug is on\nwex LOGFILE debug is on\n"},
    };
    for (const auto &c : cases) {
        wex_lib_debug_filter_set(c.filter);
        EXPECT_EQ(wex_lib_debug_filter_get(), c.filter);
        EXPECT_EQ(wex_lib_debug_filter, c.filter);
        EXPECT_EQ(capture_stdout(wex_lib_debug_filter_print), c.printed) << std::hex << c.filter;
    }
    wex_lib_debug_filter_set(0);

    EXPECT_EQ(capture_stdout([] { wex_lib_debug_filter_value_print("X", 0x6, 0x4); }), "wex X is on\n");
    EXPECT_EQ(capture_stdout([] { wex_lib_debug_filter_value_print("X", 0x6, 0x8); }), "");
}

TEST(AsciigenCounters, CountFromEachInit)
{
    EXPECT_EQ(wex_asciigen_internal_start_stop_get(), 0u);
    EXPECT_EQ(wex_asciigen_internal_cmd_init(), 0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(wex_asciigen_internal_cmd_punch(), 0);
    EXPECT_EQ(wex_asciigen_internal_cmd_count_get(), 3u);
    wex_asciigen_internal_cmd_init();
    EXPECT_EQ(wex_asciigen_internal_cmd_count_get(), 0u);
    EXPECT_EQ(wex_asciigen_internal_start_stop_get(), 1u);
}
