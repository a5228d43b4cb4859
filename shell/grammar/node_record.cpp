#include "node_record.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace wex_grammar
{
namespace
{

uint64_t read_be(const uint8_t *at, std::size_t width)
{
    uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
        value = value << 8 | at[i];
    return value;
}

void write_be(uint8_t *at, std::size_t width, uint64_t value)
{
    for (std::size_t i = width; i-- > 0; value >>= 8)
        at[i] = static_cast<uint8_t>(value);
}

// A text is what the field can hold with its NUL; a last byte that is not
// one is left to the record's other bytes.
std::string read_text(const uint8_t *at, std::size_t width)
{
    const auto *text = reinterpret_cast<const char *>(at);
    return std::string(text, strnlen(text, width - 1));
}

void write_text(uint8_t *at, std::size_t width, const std::string &text)
{
    std::memcpy(at, text.data(), std::min(text.size(), width - 1));
}

// Every field of the record, as an offset and a width, in one list that
// reading and writing share.
#define WEX_FIELD(member) offsetof(parse_tree_node, member), sizeof(parse_tree_node::member)
#define WEX_PARAM(member) offsetof(param_descriptor, member), sizeof(param_descriptor::member)

template <typename Fields, typename Visitor> void visit_node(Fields &f, Visitor &&v)
{
    v.text(WEX_FIELD(NodeName), f.name);
    v.text(WEX_FIELD(Token), f.token);
    v.text(WEX_FIELD(Help), f.help);
    v.text(WEX_FIELD(SubMode_Help), f.submode_help);
    v.text(WEX_FIELD(SubMode_Prompt), f.submode_prompt);
    v.text(WEX_FIELD(Func_ID), f.function);
    v.text(WEX_FIELD(module_id), f.module);
    v.text(WEX_FIELD(subtree_config_generator), f.generator);
    v.number(WEX_FIELD(optional), f.optional);
    v.number(WEX_FIELD(bcp_msg_type), f.bcp_msg_type);
    v.number(WEX_FIELD(action), f.action);
    v.number(WEX_FIELD(token_id), f.token_id);
    v.number(WEX_FIELD(command_id), f.command_id);
    v.bytes(WEX_FIELD(permissions_mask), f.permissions);
    v.number(WEX_FIELD(internal_func_id), f.internal_function);
    v.number(WEX_FIELD(asciigen_priority), f.priority);
    v.number(WEX_FIELD(interface_mask), f.interface_mask);
    v.bytes(WEX_FIELD(reserved), f.reserved);
}

template <typename Fields, typename Visitor> void visit_param(Fields &p, Visitor &&v)
{
    v.number(WEX_PARAM(type), p.type);
    v.number(WEX_PARAM(mask), p.mask);
    v.text(WEX_PARAM(help), p.help);
    v.number(WEX_PARAM(min), p.min);
    v.number(WEX_PARAM(max), p.max);
    v.number(WEX_PARAM(subtype), p.subtype);
    v.number(WEX_PARAM(extra32), p.extra32);
    v.number(WEX_PARAM(extra64), p.extra64);
}

#undef WEX_FIELD
#undef WEX_PARAM

struct Reader {
    const uint8_t *base;
    void text(std::size_t at, std::size_t width, std::string &out) const
    {
        out = read_text(base + at, width);
    }
    template <typename N> void number(std::size_t at, std::size_t width, N &out) const
    {
        out = static_cast<N>(read_be(base + at, width));
    }
    template <std::size_t W> void bytes(std::size_t at, std::size_t, std::array<uint8_t, W> &out) const
    {
        std::memcpy(out.data(), base + at, W);
    }
};

struct Writer {
    uint8_t *base;
    void text(std::size_t at, std::size_t width, const std::string &in) const
    {
        write_text(base + at, width, in);
    }
    template <typename N> void number(std::size_t at, std::size_t width, N in) const
    {
        write_be(base + at, width, in);
    }
    template <std::size_t W> void bytes(std::size_t at, std::size_t, const std::array<uint8_t, W> &in) const
    {
        std::memcpy(base + at, in.data(), W);
    }
};

constexpr std::size_t kParamCount = offsetof(parse_tree_node, param_count);
constexpr std::size_t kChildCount = offsetof(parse_tree_node, child_count);
constexpr std::size_t kParams = offsetof(parse_tree_node, params);
constexpr std::size_t kChildren = offsetof(parse_tree_node, children);
constexpr std::size_t kLinks = offsetof(parse_tree_node, childlist_mask);

} // namespace

bool link_bit(const uint8_t *childlist_mask, std::size_t i)
{
    return (childlist_mask[i / 8] >> (i % 8)) & 1;
}

NodeFields decode_record(const uint8_t *record)
{
    NodeFields f;
    visit_node(f, Reader{record});
    const std::size_t params = std::min<std::size_t>(read_be(record + kParamCount, 2), WEX_NODE_MAX_PARAMS);
    for (std::size_t i = 0; i < params; ++i)
        visit_param(f.params.emplace_back(), Reader{record + kParams + i * sizeof(param_descriptor)});
    const std::size_t children =
        std::min<std::size_t>(read_be(record + kChildCount, 2), WEX_NODE_MAX_CHILDREN);
    for (std::size_t i = 0; i < children; ++i)
        f.children.push_back(
            {static_cast<uint16_t>(read_be(record + kChildren + 2 * i, 2)), link_bit(record + kLinks, i)});
    return f;
}

Record encode_record(const NodeFields &f)
{
    Record record{};
    visit_node(f, Writer{record.data()});
    const std::size_t params = std::min<std::size_t>(f.params.size(), WEX_NODE_MAX_PARAMS);
    write_be(record.data() + kParamCount, 2, params);
    for (std::size_t i = 0; i < params; ++i)
        visit_param(f.params[i], Writer{record.data() + kParams + i * sizeof(param_descriptor)});
    const std::size_t children = std::min<std::size_t>(f.children.size(), WEX_NODE_MAX_CHILDREN);
    write_be(record.data() + kChildCount, 2, children);
    for (std::size_t i = 0; i < children; ++i) {
        write_be(record.data() + kChildren + 2 * i, 2, f.children[i].index);
        if (f.children[i].link)
            record[kLinks + i / 8] |= static_cast<uint8_t>(1u << (i % 8));
    }
    return record;
}

} // namespace wex_grammar
