#include "common/text_field.h"

#include <cstdio>

namespace wex
{

void print_text_field(const char *label, const char *field, std::size_t width) noexcept
{
    const std::string_view text = field_text(field, width);
    if (!text.empty())
        std::printf("%s:%.*s ", label, static_cast<int>(text.size()), text.data());
}

} // namespace wex
