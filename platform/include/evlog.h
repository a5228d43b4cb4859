/* The switch's event-history service: the header line it prints in front
 * of each stored event. */
#ifndef WEX_PLATFORM_EVLOG_H
#define WEX_PLATFORM_EVLOG_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Prints on standard output the event's time (seconds since the epoch,
 * shown in UTC), its name (NULL: empty) and three values of its record:
 * "2026-11-22 22:30:05 E_WEXD_LOCK 2 4 5\n". */
void evlog_hist_print_event_header(uint32_t time_s, const char *event_name, uint32_t value2, uint32_t value4,
                                   uint32_t value5);

#ifdef __cplusplus
}
#endif

#endif
