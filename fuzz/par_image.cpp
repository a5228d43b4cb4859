// A .par image as wexctl's dump takes it: the check, the conversion of what
// it accepts to host order with the library's loop check, then the dump.
#include "image_check.h"
#include "harness.h"

#include <wex/parse_tree.h>

#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2 || size - 1 > wex_grammar::kMaxImageNodes * WEX_NODE_SIZE)
        return 0;
    const uint32_t start = data[0]; // the first byte names the start node
    std::vector<uint8_t> image(data + 1, data + size);
    wex_grammar::ImageCheck check =
        wex_grammar::check_image(wex_grammar::shape_of(image), image.size(), start);
    if (!check.walkable)
        return 0;
    wex_grammar::convert_for_walks(image, start, check);
    display_array_tree(image.data(), start, 0);
    return 0;
}
