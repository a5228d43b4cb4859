// The library's status codes by name, for what the tools print.
#ifndef WEX_TOOLS_STATUS_NAMES_H
#define WEX_TOOLS_STATUS_NAMES_H

#include <cstdint>
#include <string>

namespace wex_tools
{

// "WEX_STATUS_FAILURE (0x40540001)", "WEX_ERRNO_STATUS(ETIME) (0x8054003e)";
// a code the library does not define is shown by its number alone.
std::string status_text(int32_t status);

// True for WEX_ERRNO_STATUS codes: the exchange itself failed.
bool is_exchange_failure(int32_t status);

} // namespace wex_tools

#endif
