#include "common/context.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace wex
{

unsigned context_number() noexcept
{
    const char *value = std::getenv("WARDEN_KEL_ID");
    if (!value)
        return 1;
    long long number = std::strtoll(value, nullptr, 10);
    number = std::clamp<long long>(number, std::numeric_limits<int32_t>::min(),
                                   std::numeric_limits<int32_t>::max());
    return static_cast<uint16_t>(number);
}

} // namespace wex
