// The parameter types a grammar can name: each TYPE_* code once, with its
// name in node stanzas, its word in command declarations and what its
// descriptor's numbers mean.
#ifndef WEX_GRAMMAR_PARAM_TYPES_H
#define WEX_GRAMMAR_PARAM_TYPES_H

#include <cstdint>
#include <string_view>

namespace wex_grammar
{

// What a descriptor's min and max hold for a type.
enum class Bounds {
    none,      // nothing
    length,    // min: the longest text
    uri_mask,  // min: the URI kinds accepted
    decimal,   // min to max, signed, or a subtype
    hex,       // min to max, hexadecimal, or a subtype
    interfaces // the descriptor's mask: the interface types accepted
};

struct ParamType {
    uint32_t code;
    std::string_view name; // "TYPE_INT"
    std::string_view word; // "int"; empty for types a user cannot type
    Bounds bounds;
};

const ParamType *type_by_code(uint32_t code);
const ParamType *type_by_name(std::string_view name);
const ParamType *type_by_word(std::string_view word);

} // namespace wex_grammar

#endif
