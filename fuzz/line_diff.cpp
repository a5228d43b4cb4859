// The line-set diff of two texts: the input is OLD, a NUL byte, then NEW.
#include "quiet.h"

#include <wex/output.h>

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silence_standard_output();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string input(reinterpret_cast<const char *>(data), size);
    const std::size_t split = input.find('\0');
    const std::string old_text = input.substr(0, split);
    const std::string new_text = split == std::string::npos ? "" : input.substr(split + 1);
    wex_diff(old_text.c_str(), new_text.c_str());
    wex_is_diff_same(old_text.c_str(), new_text.c_str());
    return 0;
}
