// The URI record filled from a text: the input is the URI, a NUL byte, then
// the default scheme.
#include "harness.h"

#include <wex/param.h>

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto [text, scheme] = split_at_nul(data, size);
    uri_info info{};
    if (wex_xml_parse_uri2(&info, text.c_str(), scheme.empty() ? nullptr : scheme.c_str()) == 0) {
        wex_uri_info_print(&info);
        uri_info copy{};
        wex_uri_info_copy(&copy, &info);
    }
    wex_xml_parse_uri(&info, text.c_str());
    return 0;
}
