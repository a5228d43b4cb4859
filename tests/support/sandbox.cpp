#include "support/sandbox.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>

namespace wex_test
{

std::string sandbox_path(std::string_view absolute)
{
    return std::string(WEX_TEST_SANDBOX) + std::string(absolute);
}

void write_file(const std::string &path, std::string_view content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

void write_file(const std::string &path, const std::vector<uint8_t> &bytes)
{
    write_file(path, std::string_view(reinterpret_cast<const char *>(bytes.data()), bytes.size()));
}

void write_sandbox_file(std::string_view absolute, std::string_view content, unsigned mode)
{
    const std::filesystem::path path = sandbox_path(absolute);
    std::filesystem::create_directories(path.parent_path());
    write_file(path, content);
    if (chmod(path.c_str(), mode) != 0)
        throw std::runtime_error("cannot write sandbox file " + path.string());
}

std::string file_content(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return "<absent>";
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

} // namespace wex_test
