/* Bit reversal of one byte, a utility of the switch's platform. */
#ifndef WEX_PLATFORM_SWAPBITS_H
#define WEX_PLATFORM_SWAPBITS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns b with its eight bits in reverse order (bit 0 becomes bit 7). */
uint8_t swapbits(uint8_t b);

#ifdef __cplusplus
}
#endif

#endif /* WEX_PLATFORM_SWAPBITS_H */
