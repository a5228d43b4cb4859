// Help of an interface type: filling, copying, showing, and texts that do
// not fit their fields.
#include <wex/param.h>

#include "support/capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

using wex_test::capture_stdout;

namespace
{

bool all_zero(const void *record, std::size_t size)
{
    const auto *bytes = static_cast<const unsigned char *>(record);
    return std::all_of(bytes, bytes + size, [](unsigned char b) { return b == 0; });
}

TEST(IntfHelp, ShowPrintsTheHeadingTheTextAndOneLinePerField)
{
    intf_help_info info;
    std::memset(&info, 0xAB, sizeof info);
    ASSERT_EQ(wex_intf_help_info_reset(&info, "abc"), 0);
    EXPECT_EQ(std::string(info.help_str), "abc");
    EXPECT_TRUE(all_zero(info.fields, sizeof info.fields));
    EXPECT_EQ(info.num_fields, 0);
    ASSERT_EQ(wex_intf_help_info_add(&info, "x", 1, 13), 0);
    ASSERT_EQ(wex_intf_help_info_add(&info, "y", 1, 48), 0);
    EXPECT_EQ(capture_stdout([&] { EXPECT_EQ(wex_intf_help_info_show(&info), 0); }),
              "\n Interface help information:\nIntf help str:abc \t x <1-13>\n\t y <1-48>\n");

    ASSERT_EQ(wex_intf_help_info_reset(&info, nullptr), 0);
    EXPECT_TRUE(all_zero(&info, sizeof info));
    EXPECT_EQ(capture_stdout([&] { wex_intf_help_info_show(&info); }), "\n Interface help information:\n");
    EXPECT_EQ(capture_stdout([&] {
                  EXPECT_EQ(wex_intf_help_info_show(nullptr), -1);
                  EXPECT_EQ(wex_intf_field_help_info_show(nullptr), -1);
              }),
              "");
}

TEST(IntfHelp, AddStopsAtFiveFieldsAndCopyKeepsTheOrder)
{
    intf_help_info source;
    wex_intf_help_info_reset(&source, "Port");
    for (int i = 0; i < WEX_INTF_HELP_MAX_FIELDS; ++i)
        ASSERT_EQ(
            wex_intf_help_info_add(&source, std::string(1, static_cast<char>('a' + i)).c_str(), i, 10 * i),
            0);
    const intf_help_info full = source;
    EXPECT_EQ(wex_intf_help_info_add(&source, "f", 0, 1), -1);
    EXPECT_EQ(std::memcmp(&source, &full, sizeof source), 0);

    intf_help_info copy;
    std::memset(&copy, 0xCD, sizeof copy);
    ASSERT_EQ(wex_intf_help_info_copy(&source, &copy), 0);
    EXPECT_EQ(std::memcmp(&copy, &source, sizeof copy), 0);
    ASSERT_EQ(wex_intf_help_info_copy(&copy, &copy), 0); // onto itself
    EXPECT_EQ(std::memcmp(&copy, &source, sizeof copy), 0);

    ASSERT_EQ(wex_intf_help_info_copy(nullptr, &copy), 0);
    EXPECT_TRUE(all_zero(&copy, sizeof copy));
    EXPECT_EQ(wex_intf_help_info_copy(&source, nullptr), -1);
    EXPECT_EQ(wex_intf_help_info_add(nullptr, "x", 0, 0), -1);
    EXPECT_EQ(wex_intf_help_info_reset(nullptr, "x"), -1);
}

TEST(IntfHelp, TextsThatDoNotFitAreCutInsideTheirFields)
{
    intf_help_info info;
    wex_intf_help_info_reset(&info, std::string(70, 'h').c_str());
    EXPECT_EQ(std::string(info.help_str), std::string(63, 'h'));
    wex_intf_help_info_add(&info, std::string(64, 'n').c_str(), 1, 2);
    EXPECT_EQ(std::string(info.fields[0].name), std::string(63, 'n'));
    EXPECT_EQ(info.fields[0].min, 1); // the neighbour field is intact

    // A record from another process: texts without terminators and a
    // count beyond the array are read within the record.
    intf_help_info damaged;
    std::memset(&damaged, 'z', sizeof damaged);
    damaged.num_fields = 9;
    EXPECT_EQ(wex_intf_help_info_add(&damaged, "x", 0, 0), -1);
    intf_help_info copy;
    ASSERT_EQ(wex_intf_help_info_copy(&damaged, &copy), 0);
    EXPECT_EQ(copy.num_fields, WEX_INTF_HELP_MAX_FIELDS);
    EXPECT_EQ(std::string(copy.fields[4].name), std::string(63, 'z'));
    damaged.num_fields = -3;
    EXPECT_EQ(capture_stdout([&] { wex_intf_help_info_show(&damaged); }),
              "\n Interface help information:\nIntf help str:" + std::string(64, 'z') + " ");
}

} // namespace
