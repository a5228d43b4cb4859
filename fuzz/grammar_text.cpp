// A grammar text as the compiler takes it from an author: any bytes give
// errors or an image, and an image written back as text compiles to itself.
#include "harness.h"
#include "node_layer.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::read_node_layer(text, "fuzz.tree", diagnostics);
    if (!image)
        return 0;
    const auto again =
        wex_grammar::read_node_layer(wex_grammar::write_node_layer(image->bytes), "again", diagnostics);
    if (!again || again->bytes != image->bytes)
        std::abort();
    return 0;
}
