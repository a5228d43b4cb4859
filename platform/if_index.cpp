#include "if_index.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>

namespace
{

struct InterfaceType {
    uint8_t code;
    const char *name;
    bool slotted;          // named "<name><slot>/<port>"
    const char *separator; // between the name and the number of an unslotted type
    uint32_t min_port;
    uint32_t max_port;
};

constexpr uint32_t kMaxSlot = 16;

constexpr InterfaceType kTypes[] = {
    {1, "fc", true, "", 1, 64},      {2, "port-channel", false, " ", 1, 4096},
    {3, "mgmt", false, "", 0, 3},    {4, "fcip", false, "", 1, 255},
    {5, "iscsi", true, "", 1, 64},   {6, "vsan", false, "", 1, 4094},
    {7, "sup-fc", false, "", 0, 3},  {8, "fcoe", true, "", 1, 64},
    {10, "fv", true, "", 1, 64},     {11, "san-port-channel", false, " ", 1, 4096},
    {12, "ext", true, "", 1, 64},    {15, "bay", true, "", 1, 64},
    {22, "vfc", false, "", 1, 8192},
};

struct Interface {
    const InterfaceType *type;
    uint32_t slot;
    uint32_t port;
};

std::optional<Interface> decode(uint32_t if_index)
{
    const uint8_t code = static_cast<uint8_t>(if_index >> 24);
    const uint32_t slot = (if_index >> 16) & 0xFF;
    const uint32_t port = if_index & 0xFFFF;
    for (const InterfaceType &type : kTypes) {
        if (type.code != code)
            continue;
        const bool slot_ok = type.slotted ? slot >= 1 && slot <= kMaxSlot : slot == 0;
        if (!slot_ok || port < type.min_port || port > type.max_port)
            return std::nullopt;
        return Interface{&type, slot, port};
    }
    return std::nullopt;
}

int write_name(char *buf, std::size_t size, const Interface &interface)
{
    if (interface.type->slotted)
        return std::snprintf(buf, size, "%s%u/%u", interface.type->name, interface.slot, interface.port);
    return std::snprintf(buf, size, "%s%s%u", interface.type->name, interface.type->separator,
                         interface.port);
}

int unresolved(char *buf, std::size_t size)
{
    if (buf && size > 0)
        buf[0] = '\0';
    errno = ENXIO;
    return -1;
}

// The decimal number at text, at most max; how many digits it took, 0 for none.
std::size_t read_number(const char *text, uint32_t max, uint32_t &number)
{
    std::size_t digits = 0;
    number = 0;
    for (; text[digits] >= '0' && text[digits] <= '9'; ++digits) {
        number = number * 10 + static_cast<uint32_t>(text[digits] - '0');
        if (number > max)
            return 0;
    }
    return digits;
}

// The type whose name starts text and is followed by a digit; the longest
// wins, so "fcip1" is not read as "fc".
const InterfaceType *type_named_at(const char *text)
{
    const InterfaceType *found = nullptr;
    for (const InterfaceType &type : kTypes) {
        const std::size_t length = std::strlen(type.name);
        if (std::strncmp(text, type.name, length) == 0 && text[length] >= '0' && text[length] <= '9' &&
            (!found || length > std::strlen(found->name)))
            found = &type;
    }
    return found;
}

} // namespace

extern "C" int if_index_parse(const char *text, uint32_t *if_index)
{
    const InterfaceType *type = text ? type_named_at(text) : nullptr;
    if (!type || !if_index)
        return -1;
    std::size_t at = std::strlen(type->name);
    uint32_t slot = 0, port = 0;
    if (type->slotted) {
        const std::size_t digits = read_number(text + at, kMaxSlot, slot);
        if (digits == 0 || text[at + digits] != '/')
            return -1;
        at += digits + 1;
    }
    const std::size_t digits = read_number(text + at, type->max_port, port);
    const uint32_t index = IF_INDEX_MAKE(type->code, slot, port);
    if (digits == 0 || !decode(index))
        return -1;
    *if_index = index;
    return static_cast<int>(at + digits);
}

extern "C" int if_index_get_type(uint32_t if_index, uint8_t *type)
{
    const auto interface = decode(if_index);
    if (!interface || !type)
        return -1;
    *type = interface->type->code;
    return 0;
}

extern "C" int if_index_get_next_if_index_in_range(uint32_t first, uint32_t last, uint32_t current,
                                                   uint32_t *next)
{
    const auto from = decode(first), to = decode(last), at = decode(current);
    if (!from || !to || !at || !next || from->type != to->type || at->type != from->type || current >= last)
        return 1;
    Interface following = *at;
    if (++following.port > following.type->max_port) {
        following.port = following.type->min_port;
        ++following.slot;
    }
    const uint32_t index = IF_INDEX_MAKE(following.type->code, following.slot, following.port);
    if (index > last || !decode(index))
        return 1;
    *next = index;
    return 0;
}

extern "C" int sprintf_if_index(char *buf, uint32_t if_index)
{
    // The caller's buffer holds at least 64 bytes, and no name is longer.
    constexpr std::size_t kNameBuffer = 64;
    const auto interface = decode(if_index);
    if (!interface || !buf)
        return unresolved(buf, kNameBuffer);
    return write_name(buf, kNameBuffer, *interface);
}

extern "C" int snprintf_if_index_range(char *buf, size_t size, const struct intf_range *range)
{
    uint32_t ends[2] = {0, 0};
    if (range)
        std::memcpy(ends, range, sizeof ends);
    const auto first = decode(ends[0]), last = decode(ends[1]);
    if (!range || !first || !last || !buf)
        return unresolved(buf, size);
    char head[64];
    write_name(head, sizeof head, *first);
    if (ends[0] == ends[1])
        return std::snprintf(buf, size, "%s", head);
    if (first->type == last->type && first->slot == last->slot)
        return std::snprintf(buf, size, "%s-%u", head, last->port);
    char tail[64];
    write_name(tail, sizeof tail, *last);
    return std::snprintf(buf, size, "%s-%s", head, tail);
}
