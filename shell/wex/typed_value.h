// A word typed for a parameter, read by the parameter's type and checked
// against its bounds into the value record a feature finds behind the
// argument's value pointer.
#ifndef WEX_SHELL_TYPED_VALUE_H
#define WEX_SHELL_TYPED_VALUE_H

#include <wex/parse_tree.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wex_shell
{

struct TypedValue {
    uint32_t type = 0;
    uint64_t intf_mask = 0; // interfaces: the types of those named
    uint32_t addr_type = 0; // an address of either family: TYPE_IPV4 or TYPE_IPV6
    std::vector<uint8_t> bytes;
};

// The value of word for param, or nothing when word is not one: then why
// is what the type expects, with its bounds.
std::optional<TypedValue> read_value(const param_descriptor &param, std::string_view word, std::string &why);

// What param expects, as the help and the errors name it: "an integer from
// 1 to 4094", "a port WWN, as 10:00:00:00:c9:12:34:56".
std::string expected_form(const param_descriptor &param);

// Whether bytes have the shape of a value of type as read_value makes it:
// a list's count within its bytes, a record as long as its layout. A
// receiver checks a value from another process before it reads one.
bool value_fits(uint32_t type, std::span<const uint8_t> bytes);

// Whether the type takes the rest of the command line as its one value.
bool takes_rest_of_line(uint32_t type);

} // namespace wex_shell

#endif
