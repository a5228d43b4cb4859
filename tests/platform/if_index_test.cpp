// The interface-index stand-in: names, runs and the walk through a run.
#include "if_index.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

std::string name_of(uint32_t if_index, int *result = nullptr)
{
    char buf[64] = "untouched";
    const int written = sprintf_if_index(buf, if_index);
    if (result)
        *result = written;
    return buf;
}

std::string run_text(uint32_t first, uint32_t last, size_t size = 64)
{
    const uint32_t ends[2] = {first, last};
    std::vector<char> buf(size + 1, '#');
    snprintf_if_index_range(buf.data(), size, reinterpret_cast<const intf_range *>(ends));
    EXPECT_EQ(buf[size], '#'); // nothing written past size
    return buf.data();
}

std::vector<uint32_t> walk(uint32_t first, uint32_t last)
{
    std::vector<uint32_t> seen{first};
    for (uint32_t next = 0; if_index_get_next_if_index_in_range(first, last, seen.back(), &next) == 0;)
        seen.push_back(next);
    return seen;
}

TEST(IfIndex, NamesTypesAndUnresolvableIndexes)
{
    const struct {
        uint32_t if_index;
        std::string name;
        uint8_t type;
    } known[] = {
        {IF_INDEX_MAKE(1, 1, 3), "fc1/3", 1},
        {IF_INDEX_MAKE(1, 16, 64), "fc16/64", 1},
        {IF_INDEX_MAKE(2, 0, 5), "port-channel 5", 2},
        {IF_INDEX_MAKE(3, 0, 0), "mgmt0", 3},
        {IF_INDEX_MAKE(6, 0, 4094), "vsan4094", 6},
        {IF_INDEX_MAKE(8, 1, 2), "fcoe1/2", 8},
        {IF_INDEX_MAKE(22, 0, 20), "vfc20", 22},
        {IF_INDEX_MAKE(11, 0, 9), "san-port-channel 9", 11},
    };
    for (const auto &k : known) {
        int written = 0;
        EXPECT_EQ(name_of(k.if_index, &written), k.name);
        EXPECT_EQ(written, static_cast<int>(k.name.size()));
        uint8_t type = 0;
        EXPECT_EQ(if_index_get_type(k.if_index, &type), 0);
        EXPECT_EQ(type, k.type);
    }
    for (uint32_t bad :
         {IF_INDEX_MAKE(0, 0, 0), IF_INDEX_MAKE(99, 0, 1), IF_INDEX_MAKE(1, 0, 1), IF_INDEX_MAKE(1, 17, 1),
          IF_INDEX_MAKE(1, 1, 65), IF_INDEX_MAKE(2, 1, 5), 0xFFFFFFFFu}) {
        int written = 0;
        EXPECT_EQ(name_of(bad, &written), "");
        EXPECT_EQ(written, -1);
        uint8_t type = 0xAA;
        EXPECT_EQ(if_index_get_type(bad, &type), -1);
        EXPECT_EQ(type, 0xAA);
    }
}

TEST(IfIndex, RunsPrintInTheSwitchStyle)
{
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 4)), "fc1/1-4");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 3), IF_INDEX_MAKE(1, 1, 3)), "fc1/3");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 5), IF_INDEX_MAKE(1, 2, 3)), "fc1/5-fc2/3");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(2, 0, 5), IF_INDEX_MAKE(2, 0, 7)), "port-channel 5-7");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(99, 0, 1)), "");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 4), 5), "fc1/");
}

TEST(IfIndex, WalkGoesPortByPortAndSlotBySlot)
{
    EXPECT_EQ(
        walk(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 3)),
        (std::vector<uint32_t>{IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 2), IF_INDEX_MAKE(1, 1, 3)}));
    EXPECT_EQ(walk(IF_INDEX_MAKE(1, 1, 63), IF_INDEX_MAKE(1, 2, 2)),
              (std::vector<uint32_t>{IF_INDEX_MAKE(1, 1, 63), IF_INDEX_MAKE(1, 1, 64), IF_INDEX_MAKE(1, 2, 1),
                                     IF_INDEX_MAKE(1, 2, 2)}));
    EXPECT_EQ(walk(IF_INDEX_MAKE(2, 0, 5), IF_INDEX_MAKE(2, 0, 5)),
              (std::vector<uint32_t>{IF_INDEX_MAKE(2, 0, 5)}));
    // Reversed, mixed-type and unresolvable runs give only their first index.
    EXPECT_EQ(walk(IF_INDEX_MAKE(1, 1, 4), IF_INDEX_MAKE(1, 1, 1)).size(), 1u);
    EXPECT_EQ(walk(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(2, 0, 5)).size(), 1u);
    EXPECT_EQ(walk(IF_INDEX_MAKE(99, 0, 1), IF_INDEX_MAKE(99, 0, 9)).size(), 1u);
    EXPECT_EQ(walk(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 16, 64)).size(), 16u * 64u);
}

} // namespace
