// The smaller stand-ins: program execution and interface indexes; bit
// reversal is seen through the tree dumps.
#include "execute_program.h"
#include "if_index.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

#define TEN_ARGS "x", "x", "x", "x", "x", "x", "x", "x", "x", "x"

TEST(ExecuteProgram, ReturnsTheWaitStatusOfTheProgramGivenAtMostThirtyArguments)
{
    EXPECT_EQ(execute_program_and_wait("/bin/sh", "-c", "exit 3", nullptr), 3 * 256);
    EXPECT_EQ(execute_program_and_wait("/no/such/program", nullptr), 127 * 256);
    EXPECT_EQ(execute_program_and_wait(nullptr), -1);
    EXPECT_EQ(execute_program_and_wait("/bin/true", TEN_ARGS, TEN_ARGS, TEN_ARGS, nullptr), 0);
    EXPECT_EQ(execute_program_and_wait("/bin/true", TEN_ARGS, TEN_ARGS, TEN_ARGS, "x", nullptr), -1);
}

// "name/type" of an index, or "/-1" when it does not resolve (and then
// neither the name nor the type is written).
std::string name_and_type(uint32_t if_index)
{
    char buf[64] = "untouched";
    const int written = sprintf_if_index(buf, if_index);
    uint8_t type = 0xAA;
    if (if_index_get_type(if_index, &type) != 0) {
        EXPECT_EQ(type, 0xAA);
        EXPECT_EQ(written, -1);
        return std::string(buf) + "/-1";
    }
    EXPECT_EQ(written, static_cast<int>(std::string(buf).size()));
    return std::string(buf) + "/" + std::to_string(type);
}

TEST(IfIndex, NamesTypesAndUnresolvableIndexes)
{
    const struct {
        uint32_t if_index;
        std::string name_type;
    } cases[] = {
        {IF_INDEX_MAKE(1, 1, 3), "fc1/3/1"},
        {IF_INDEX_MAKE(1, 16, 64), "fc16/64/1"},
        {IF_INDEX_MAKE(2, 0, 5), "port-channel 5/2"},
        {IF_INDEX_MAKE(3, 0, 0), "mgmt0/3"},
        {IF_INDEX_MAKE(6, 0, 4094), "vsan4094/6"},
        {IF_INDEX_MAKE(0, 0, 0), "/-1"},
        {IF_INDEX_MAKE(99, 0, 1), "/-1"},
        {IF_INDEX_MAKE(1, 0, 1), "/-1"},
        {IF_INDEX_MAKE(1, 17, 1), "/-1"},
        {IF_INDEX_MAKE(1, 1, 65), "/-1"},
        {IF_INDEX_MAKE(2, 1, 5), "/-1"},
        {0xFFFFFFFFu, "/-1"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(name_and_type(c.if_index), c.name_type);
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

TEST(IfIndex, RunsPrintInTheSwitchStyleAndWalkPortByPortAndSlotBySlot)
{
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 4)), "fc1/1-4");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 3), IF_INDEX_MAKE(1, 1, 3)), "fc1/3");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 5), IF_INDEX_MAKE(1, 2, 3)), "fc1/5-fc2/3");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(2, 0, 5), IF_INDEX_MAKE(2, 0, 7)), "port-channel 5-7");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(99, 0, 1)), "");
    EXPECT_EQ(run_text(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 4), 5), "fc1/");

    EXPECT_EQ(walk(IF_INDEX_MAKE(1, 1, 63), IF_INDEX_MAKE(1, 2, 2)),
              (std::vector<uint32_t>{IF_INDEX_MAKE(1, 1, 63), IF_INDEX_MAKE(1, 1, 64), IF_INDEX_MAKE(1, 2, 1),
                                     IF_INDEX_MAKE(1, 2, 2)}));
    EXPECT_EQ(walk(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 16, 64)).size(), 16u * 64u);
    // Reversed, mixed-type and unresolvable runs give only their first index.
    EXPECT_EQ(walk(IF_INDEX_MAKE(1, 1, 4), IF_INDEX_MAKE(1, 1, 1)).size(), 1u);
    EXPECT_EQ(walk(IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(2, 0, 5)).size(), 1u);
    EXPECT_EQ(walk(IF_INDEX_MAKE(99, 0, 1), IF_INDEX_MAKE(99, 0, 9)).size(), 1u);
}

} // namespace
