#include "execute_program.h"

#include <gtest/gtest.h>

namespace
{

TEST(ExecuteProgram, ReturnsTheWaitStatusOfTheProgram)
{
    EXPECT_EQ(execute_program_and_wait("/bin/sh", "-c", "exit 0", nullptr), 0);
    EXPECT_EQ(execute_program_and_wait("/bin/sh", "-c", "exit 3", nullptr), 3 * 256);
    // The arguments arrive in order, $0 being the first after -c's text.
    EXPECT_EQ(execute_program_and_wait("/bin/sh", "-c", "test \"$0$1\" = ab", "a", "b", nullptr), 0);
    EXPECT_EQ(execute_program_and_wait("/no/such/program", nullptr), 127 * 256);
    EXPECT_EQ(execute_program_and_wait(nullptr), -1);
}

#define TEN_ARGS "x", "x", "x", "x", "x", "x", "x", "x", "x", "x"

TEST(ExecuteProgram, PassesAtMostThirtyArguments)
{
    EXPECT_EQ(execute_program_and_wait("/bin/true", TEN_ARGS, TEN_ARGS, TEN_ARGS, nullptr), 0);
    EXPECT_EQ(execute_program_and_wait("/bin/true", TEN_ARGS, TEN_ARGS, TEN_ARGS, "x", nullptr), -1);
}

} // namespace
