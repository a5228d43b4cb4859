#include "status_names.h"

#include <wex/wex.h>

#include <cstdio>
#include <cstring>

namespace wex_tools
{
namespace
{

struct StatusName {
    uint32_t code;
    const char *name;
};

// Each entry is spelled once: the name is the macro's own text.
#define WEX_STATUS_ENTRY(code)                                                                               \
    {                                                                                                        \
        static_cast<uint32_t>(code), #code                                                                   \
    }
constexpr StatusName kStatusNames[] = {
    WEX_STATUS_ENTRY(WEX_STATUS_SUCCESS),           WEX_STATUS_ENTRY(WEX_STATUS_FAILURE),
    WEX_STATUS_ENTRY(WEX_STATUS_FILE_MISSING),      WEX_STATUS_ENTRY(WEX_STATUS_INTERPRETER_ONE),
    WEX_STATUS_ENTRY(WEX_STATUS_BAD_EXEC_RECORD),   WEX_STATUS_ENTRY(WEX_STATUS_ROLE_UNKNOWN),
    WEX_STATUS_ENTRY(WEX_STATUS_INTF_TYPE_UNKNOWN), WEX_STATUS_ENTRY(WEX_STATUS_LOCALE_UNKNOWN),
    WEX_STATUS_ENTRY(WEX_STATUS_NO_EXCHANGE),
};
#undef WEX_STATUS_ENTRY

// The errno statuses carry the error in their low 12 bits.
struct ErrnoFamily {
    uint32_t family;
    const char *name;
};
constexpr ErrnoFamily kErrnoFamilies[] = {
    {static_cast<uint32_t>(WEX_ERRNO_STATUS(0)), "WEX_ERRNO_STATUS"},
    {static_cast<uint32_t>(WEX_ANNOUNCE_ERRNO_STATUS(0)), "WEX_ANNOUNCE_ERRNO_STATUS"},
};

uint32_t family_of(uint32_t code)
{
    return code & ~0xFFFu;
}

std::string errno_status_name(uint32_t code)
{
    for (const ErrnoFamily &family : kErrnoFamilies) {
        if (family_of(code) != family.family)
            continue;
        const int error = static_cast<int>(code & 0xFFFu);
        const char *error_name = strerrorname_np(error);
        return std::string(family.name) + "(" + (error_name ? error_name : std::to_string(error)) + ")";
    }
    return {};
}

} // namespace

bool is_exchange_failure(int32_t status)
{
    return family_of(static_cast<uint32_t>(status)) == kErrnoFamilies[0].family;
}

std::string status_text(int32_t status)
{
    const auto code = static_cast<uint32_t>(status);
    std::string name = errno_status_name(code);
    for (const StatusName &known : kStatusNames) {
        if (known.code == code)
            name = known.name;
    }
    char number[16];
    std::snprintf(number, sizeof number, "0x%08x", code);
    return name.empty() ? number : name + " (" + number + ")";
}

} // namespace wex_tools
