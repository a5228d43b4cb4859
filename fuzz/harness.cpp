#include "harness.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    std::fflush(stdout);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    close(null);
    return 0;
}

std::pair<std::string, std::string> split_at_nul(const uint8_t *data, size_t size)
{
    const std::string input(reinterpret_cast<const char *>(data), size);
    const std::size_t split = input.find('\0');
    if (split == std::string::npos)
        return {input, ""};
    return {input.substr(0, split), input.substr(split + 1)};
}
