// A file mapped into memory ends the process with SIGBUS when another
// program shortens the file under it. While a mapping is guarded, that
// signal ends the process with status 2 and a line naming the file instead.
#ifndef WEX_TOOLS_MAPPING_GUARD_H
#define WEX_TOOLS_MAPPING_GUARD_H

#include <cstddef>
#include <string>

namespace wex_tools
{

// Guards [begin, begin + size) until unguard_mapping(begin); message is the
// line printed when the file under it shrinks. False when every slot is
// taken: the caller then reads the file instead of mapping it.
bool guard_mapping(const void *begin, std::size_t size, const std::string &message);
void unguard_mapping(const void *begin);

} // namespace wex_tools

#endif
