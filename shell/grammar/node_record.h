// One 1000-byte parse-tree node record as its fields, read from and written
// to network order (the order of .par files), byte for byte.
#ifndef WEX_GRAMMAR_NODE_RECORD_H
#define WEX_GRAMMAR_NODE_RECORD_H

#include <wex/parse_tree.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace wex_grammar
{

// Bits of a node's action word that the grammar sets beside the library's
// Terminal and SubMode: how configuration lines made by its commands are
// compared when one configuration is turned into another.
// The node holds a command's value: lines that differ only there are one
// setting, changed by giving the new value.
inline constexpr uint32_t kActionValue = 0x10;
// The command completed here makes a list whose order matters.
inline constexpr uint32_t kActionOrdered = 0x20;

struct ParamFields {
    uint32_t type = 0;
    uint64_t mask = 0;
    std::string help;
    uint32_t min = 0, max = 0, subtype = 0, extra32 = 0;
    uint64_t extra64 = 0;

    bool operator==(const ParamFields &) const = default;
};

struct ChildRef {
    uint16_t index = 0;
    bool link = false;

    bool operator==(const ChildRef &) const = default;
};

// The record's fields; what a record holds beyond them (bytes after a text's
// end, descriptors and children past their counts, link bits past the last
// child) is not a field and is carried separately by whoever needs it.
struct NodeFields {
    std::string name, token, help, submode_help, submode_prompt, function, module, generator;
    uint16_t optional = 0, bcp_msg_type = 0, internal_function = 0, priority = 0;
    uint32_t action = 0, token_id = 0, command_id = 0;
    std::array<uint8_t, 16> permissions{};
    std::vector<ParamFields> params;
    std::vector<ChildRef> children;
    uint64_t interface_mask = 0;
    std::array<uint8_t, 8> reserved{};

    bool operator==(const NodeFields &) const = default;
};

using Record = std::array<uint8_t, WEX_NODE_SIZE>;

// The fields of a network-order record: each text up to its NUL and at
// most one byte short of its width, at most the record's room of
// descriptors and children.
NodeFields decode_record(const uint8_t *record);

// The network-order record of fields, every other byte zero. Texts longer
// than their field leave room for the NUL; the caller has checked them.
Record encode_record(const NodeFields &fields);

// Whether child position i of a record's childlist_mask is a link.
bool link_bit(const uint8_t *childlist_mask, std::size_t i);

} // namespace wex_grammar

#endif
