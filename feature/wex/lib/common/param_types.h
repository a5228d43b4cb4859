// The parameter types a parse-tree node can declare and a command parameter
// record can carry: each TYPE_* code once, with its name and with how the
// two diagnostic dumps show it.
#ifndef WEX_COMMON_PARAM_TYPES_H
#define WEX_COMMON_PARAM_TYPES_H

#include <wex/param.h>

#include <cstdint>

namespace wex
{

// Which fields of a node's parameter descriptor the tree dump shows after
// the type's name; none: the dump shows no type at all.
enum class DescriptorShows { none, name, name_and_min, uri_mask, interface_mask, decimal_range, hex_range };

// Prints an argument's value after its label in the parameter-record dump.
using ValuePrinter = void (*)(const param_arg *arg) noexcept;

struct ParamType {
    uint32_t code;
    const char *name;
    DescriptorShows shows;
    const char *value_label;
    ValuePrinter print_value;
};

// The entry for code, or nullptr for a code this build does not know.
const ParamType *find_param_type(uint32_t code) noexcept;

} // namespace wex

#endif
