// A .par image as wexctl takes it: the check (which converts what it
// accepts to host order), then the dump and the library's loop check.
#include "par_image.h"
#include "harness.h"

#include <wex/parse_tree.h>

#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2 || size - 1 > wexctl::kMaxImageNodes * WEX_NODE_SIZE)
        return 0;
    const uint32_t start = data[0]; // the first byte names the start node
    std::vector<uint8_t> image(data + 1, data + size);
    const wexctl::ImageCheck check = wexctl::check_image(image, start);
    if (!check.walkable)
        return 0;
    display_array_tree(image.data(), start, 0);
    cycle_check(image.data(), start, 0);
    return 0;
}
