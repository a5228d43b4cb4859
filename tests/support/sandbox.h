// The sandbox folder that stands for the switch's root file system: the test
// build of the library composes every fixed path under it.
#ifndef WEX_TEST_SANDBOX_H
#define WEX_TEST_SANDBOX_H

#include <string>
#include <string_view>
#include <vector>
#include <cstdint>

namespace wex_test
{

// The sandbox counterpart of an absolute switch path ("/tarn/bin/wex").
std::string sandbox_path(std::string_view absolute);

// Writes a file at a switch path inside the sandbox, creating its folders.
void write_sandbox_file(std::string_view absolute, std::string_view content, unsigned mode = 0644);

// Writes a file anywhere, whole, replacing what it held.
void write_file(const std::string &path, std::string_view content);
void write_file(const std::string &path, const std::vector<uint8_t> &bytes);

// The whole content of a file, or "<absent>" when it cannot be read.
std::string file_content(const std::string &path);

} // namespace wex_test

#endif
