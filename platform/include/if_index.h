/* The switch's interface-index service: what kind of interface an index
 * names, its printable name, and the walk through a run of indexes.
 *
 * Encoding of this stand-in: bits 24-31 hold the interface type, bits
 * 16-23 the slot, bits 0-15 the port (or the interface's number for types
 * without slots). Types, their names and their limits:
 *
 *   type  name            printed            slot    port / number
 *   1     fc              "fc1/3"            1-16    1-64
 *   2     port-channel    "port-channel 5"   0       1-4096
 *   3     mgmt            "mgmt0"            0       0-3
 *   4     fcip            "fcip7"            0       1-255
 *   5     iscsi           "iscsi2/1"         1-16    1-64
 *   6     vsan            "vsan10"           0       1-4094
 *   7     sup-fc          "sup-fc0"          0       0-3
 *   8     fcoe            "fcoe1/2"          1-16    1-64
 *   10    fv              "fv4/2"            1-16    1-64
 *   11    san-port-channel "san-port-channel 9" 0    1-4096
 *   12    ext             "ext1/1"           1-16    1-64
 *   15    bay             "bay1/2"           1-16    1-64
 *   22    vfc             "vfc20"            0       1-8192
 *
 * Any other type, or a slot or port outside its limits, is an index the
 * service cannot resolve. */
#ifndef WEX_PLATFORM_IF_INDEX_H
#define WEX_PLATFORM_IF_INDEX_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A run of interfaces: two 32-bit interface indexes, first then last. */
struct intf_range;

/* Builds an interface index of this encoding. */
#define IF_INDEX_MAKE(type, slot, port)                                                                      \
    ((uint32_t)(((uint32_t)(type) << 24) | ((uint32_t)(slot) << 16) | ((uint32_t)(port)&0xFFFFu)))

/* Stores the interface's type. 0, or -1 for an index it cannot resolve. */
int if_index_get_type(uint32_t if_index, uint8_t *type);

/* Walks a run: stores the index after current and returns 0 while the run
 * from first to last (of one type, ports in order, slot after slot) has
 * more; returns 1 when it is exhausted or cannot be walked. */
int if_index_get_next_if_index_in_range(uint32_t first, uint32_t last, uint32_t current, uint32_t *next);

/* Writes the interface's name, terminated, into buf (which holds at least
 * 64 bytes). Returns its length, or -1 (and an empty text) for an index it
 * cannot resolve. */
int sprintf_if_index(char *buf, uint32_t if_index);

/* Writes a run within size bytes: the first interface's name, then for a
 * longer run "-" and the last port in the same slot ("fc1/1-4") or "-" and
 * the last interface's name ("fc1/5-fc2/3"). Returns the length of the
 * whole text, or -1 (and an empty text) when an end cannot be resolved. */
int snprintf_if_index_range(char *buf, size_t size, const struct intf_range *range);

/* Reads the name of one interface at the start of text, as the service
 * prints it but without a blank ("fc1/3", "port-channel5"), into *if_index.
 * Returns how many characters the name took, or -1 when text does not start
 * with the name of an interface the service can resolve. */
int if_index_parse(const char *text, uint32_t *if_index);

#ifdef __cplusplus
}
#endif

#endif /* WEX_PLATFORM_IF_INDEX_H */
