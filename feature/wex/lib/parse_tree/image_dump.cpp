#include "field_print.h"
#include "common/param_types.h"
#include "common/text_field.h"
#include "node_access.h"
#include "walk_limits.h"

#include <wex/parse_tree.h>

#include <cstdio>
#include <cstring>

namespace
{

using namespace wex::tree;

using wex::DescriptorShows;
using wex::ParamType;

uint32_t type_family(uint32_t code) noexcept
{
    return code & ((code & 0xC0000000u) ? 0xFFC000u : 0xF00000u);
}

void print_type(const ParamType &t, const param_descriptor &p) noexcept
{
    const auto min = static_cast<int32_t>(p.min);
    const auto max = static_cast<int32_t>(p.max);
    const bool ranged = t.shows == DescriptorShows::decimal_range || t.shows == DescriptorShows::hex_range;
    if (ranged && p.subtype != 0) {
        std::printf("%s|Subtype:%d", t.name, static_cast<int32_t>(p.subtype));
        return;
    }
    switch (t.shows) {
    case DescriptorShows::none:
        break;
    case DescriptorShows::name:
        std::fputs(t.name, stdout);
        break;
    case DescriptorShows::name_and_min:
        std::printf("%s:%d", t.name, min);
        break;
    case DescriptorShows::uri_mask:
        std::printf("%s Mask:%d", t.name, min);
        break;
    case DescriptorShows::interface_mask:
        std::printf("%s Mask:%lld", t.name, static_cast<long long>(p.mask));
        break;
    case DescriptorShows::decimal_range:
        std::printf("%s:%d to %d", t.name, min, max);
        break;
    case DescriptorShows::hex_range:
        std::printf("%s:0x%x to 0x%x", t.name, p.min, p.max);
        break;
    }
}

// A character field of the node record, read in place (alignment 1).
struct NodeText {
    const char *label;
    std::size_t offset;
    std::size_t width;
};

#define WEX_NODE_TEXT(label, member)                                                                         \
    NodeText                                                                                                 \
    {                                                                                                        \
        label, offsetof(parse_tree_node, member), sizeof(parse_tree_node::member)                            \
    }

void print_text(const uint8_t *node, const NodeText &f) noexcept
{
    wex::print_text_field(f.label, reinterpret_cast<const char *>(node + f.offset), f.width);
}

void print_node_fields(const uint8_t *node) noexcept
{
    const uint32_t action = load<uint32_t>(node + kOffAction);
    print_text(node, WEX_NODE_TEXT("NodeName", NodeName));
    print_text(node, WEX_NODE_TEXT("Token", Token));
    print_text(node, WEX_NODE_TEXT("Help", Help));
    print_int("SubMode", static_cast<int32_t>(action & WEX_ACTION_SUBMODE));
    print_text(node, WEX_NODE_TEXT("SubMode_Help", SubMode_Help));
    print_text(node, WEX_NODE_TEXT("SubMode_Prompt", SubMode_Prompt));
    print_text(node, WEX_NODE_TEXT("subtree_config_generator", subtree_config_generator));
    print_int("Terminal", static_cast<int32_t>(action & WEX_ACTION_TERMINAL));
    print_text(node, WEX_NODE_TEXT("Func_ID", Func_ID));
    print_text(node, WEX_NODE_TEXT("module_id", module_id));
    print_reversed_bytes("permissions_mask:", node + offsetof(parse_tree_node, permissions_mask),
                         sizeof(parse_tree_node::permissions_mask));

    print_int("token_id", load<int32_t>(node + kOffTokenId));
    print_int("command_id", load<int32_t>(node + kOffCommandId));
    print_int("action", static_cast<int32_t>(action));
    if (action != 0)
        print_hex_value("action", node + kOffAction, sizeof action);
    print_int("internal_func_id", load<uint16_t>(node + kOffInternalFuncId));
    print_int("optional", load<uint16_t>(node + kOffOptional));
    print_int("bcp_msg_type", load<uint16_t>(node + kOffBcpMsgType));
    print_int("asciigen_priority", load<uint16_t>(node + kOffAsciigenPriority));
    print_u_l_long(" Interface Mask", load<uint64_t>(node + kOffInterfaceMask));
    print_reversed_bytes("childlist_mask:", node + kOffChildlistMask,
                         sizeof(parse_tree_node::childlist_mask));
}

void print_node_params(const uint8_t *node) noexcept
{
    for (unsigned i = 0; i < param_count(node); ++i) {
        param_descriptor p;
        std::memcpy(&p, node + kOffParams + i * sizeof p, sizeof p);
        display_param(&p);
    }
    std::putchar('\n');
}

void print_link(const uint8_t *image, uint16_t target, int32_t depth) noexcept
{
    const char *name = reinterpret_cast<const char *>(node_at(image, target) + kOffNodeName);
    print_indent(3 * depth);
    std::printf("<Link> Nodename:%.*s\n", static_cast<int>(strnlen(name, 64)), name);
}

} // namespace

extern "C" {

WEX_API void display_param(const param_descriptor *p) noexcept
{
    std::fputs("<Parameter ", stdout);
    if (const ParamType *t = wex::find_param_type(p->type))
        print_type(*t, *p);
    wex::print_text_field(" help", p->help, sizeof p->help);
    std::printf("{%d}>", static_cast<int32_t>(type_family(p->type)));
}

WEX_API void display_array_tree(const uint8_t *image, uint32_t index, int32_t depth) noexcept
{
    if (!image)
        return;
    depth = start_depth(depth);
    if (past_max_depth(depth))
        end_walk(stdout, "Error: Cycle in parse tree or exceeded maximum depth\n");
    const uint8_t *node = node_at(image, index);
    print_indent(3 * depth);
    std::fputs("<NODE> ", stdout);
    print_node_fields(node);
    print_node_params(node);
    for (unsigned i = 0; i < child_count(node); ++i) {
        if (child_is_link(node, i))
            print_link(image, child_index(node, i), depth + 1);
        else
            display_array_tree(image, child_index(node, i), depth + 1);
    }
}

} // extern "C"
