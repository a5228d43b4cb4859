// The URI record filled from a text: the input is the default scheme, a NUL
// byte, then the URI.
#include "quiet.h"

#include <wex/param.h>

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
    const std::string scheme = split == std::string::npos ? "" : input.substr(0, split);
    const std::string text = split == std::string::npos ? input : input.substr(split + 1);
    uri_info info{};
    if (wex_xml_parse_uri2(&info, text.c_str(), scheme.empty() ? nullptr : scheme.c_str()) == 0) {
        wex_uri_info_print(&info);
        uri_info copy{};
        wex_uri_info_copy(&copy, &info);
    }
    wex_xml_parse_uri(&info, text.c_str());
    return 0;
}
