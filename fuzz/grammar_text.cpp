// A grammar text as the compiler takes it from an author, in either layer:
// any bytes give errors or an image; an image written back as node stanzas
// compiles to itself, and so do declarations whenever they can be written.
#include "command_writer.h"
#include "compiler.h"
#include "harness.h"
#include "node_layer.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{

void must_compile_to(const std::string &text, const std::vector<uint8_t> &bytes)
{
    wex_grammar::Diagnostics diagnostics;
    const auto again = wex_grammar::compile({{"again", text}}, diagnostics);
    if (!again || again->bytes != bytes)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    wex_grammar::Diagnostics diagnostics;
    const auto image = wex_grammar::compile(
        {{"fuzz.tree", std::string(reinterpret_cast<const char *>(data), size)}}, diagnostics);
    if (!image)
        return 0;
    must_compile_to(wex_grammar::write_node_layer(image->bytes), image->bytes);
    if (const auto commands = wex_grammar::write_command_layer(image->bytes))
        must_compile_to(*commands, image->bytes);
    return 0;
}
