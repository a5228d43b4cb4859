// The line-set diff of two texts: the input is OLD, a NUL byte, then NEW.
#include "harness.h"

#include <wex/output.h>

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto [old_text, new_text] = split_at_nul(data, size);
    wex_diff(old_text.c_str(), new_text.c_str());
    wex_is_diff_same(old_text.c_str(), new_text.c_str());
    return 0;
}
