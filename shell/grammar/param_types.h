// The parameter types a grammar can name: each TYPE_* code once, with its
// name in node stanzas, its word in command declarations and what its
// descriptor's numbers mean.
#ifndef WEX_GRAMMAR_PARAM_TYPES_H
#define WEX_GRAMMAR_PARAM_TYPES_H

#include "node_record.h"

#include <cstdint>
#include <string>
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

// A subtype: a placeholder whose bounds the hardware sets at run time (the
// feature registers them), written <module> in a command.
struct Subtype {
    std::string_view placeholder;
    int32_t code;
    uint32_t type;
};

const ParamType *type_by_code(uint32_t code);
const ParamType *type_by_name(std::string_view name);
const ParamType *type_by_word(std::string_view word);
const Subtype *subtype_by_placeholder(std::string_view placeholder);
// The placeholder of subtype code for a parameter of type (the -hex forms
// are the hexadecimal parameters of their code).
const Subtype *subtype_by_code(int32_t code, uint32_t type);

// A min or max as its type reads it: signed decimal, 0x hexadecimal, or
// unsigned decimal for the types whose numbers are no range.
std::string bound_number(uint32_t value, Bounds bounds);

// A descriptor's bounds as a command declaration writes them after the
// type ("64", "1..4094", "0x1..0xef", "0x6"); empty for a type without.
std::string bounds_text(const ParamFields &param, Bounds bounds);

} // namespace wex_grammar

#endif
