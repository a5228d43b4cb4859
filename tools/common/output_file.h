// A file a program makes, written whole or not at all: the bytes go to a
// new file beside it, which replaces the old one only once it is complete.
#ifndef WEX_TOOLS_OUTPUT_FILE_H
#define WEX_TOOLS_OUTPUT_FILE_H

#include <span>
#include <string>

namespace wex_tools
{

// Writes bytes to path; false after a line on standard error naming the
// file, with the path untouched and no temporary file left.
bool write_file_whole(const char *program, const std::string &path, std::span<const uint8_t> bytes);

} // namespace wex_tools

#endif
