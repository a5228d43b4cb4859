#include "swapbits.h"

#include <gtest/gtest.h>

TEST(Swapbits, ReversesTheEightBitsOfAByte)
{
    const struct {
        uint8_t in, out;
    } cases[] = {{0x00, 0x00}, {0x01, 0x80}, {0x80, 0x01}, {0x02, 0x40}, {0xF0, 0x0F},
                 {0x12, 0x48}, {0xA5, 0xA5}, {0xFF, 0xFF}, {0x0C, 0x30}};
    for (const auto &c : cases)
        EXPECT_EQ(swapbits(c.in), c.out) << int(c.in);
    for (int b = 0; b < 256; ++b)
        EXPECT_EQ(swapbits(swapbits(static_cast<uint8_t>(b))), b);
}
