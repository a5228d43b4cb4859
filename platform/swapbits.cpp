#include "swapbits.h"

extern "C" uint8_t swapbits(uint8_t b)
{
    // Swap nibbles, then bit pairs, then neighbouring bits.
    unsigned v = b;
    v = ((v & 0xF0u) >> 4) | ((v & 0x0Fu) << 4);
    v = ((v & 0xCCu) >> 2) | ((v & 0x33u) << 2);
    v = ((v & 0xAAu) >> 1) | ((v & 0x55u) << 1);
    return static_cast<uint8_t>(v);
}
