#include "graph.h"

#include "node_record.h"
#include "param_types.h"
#include "source_text.h"

#include <set>

namespace wex_grammar
{
namespace
{

std::string escaped(const std::string &text)
{
    std::string out;
    for (const char c : text) {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c;
    }
    return out;
}

// The parameter as a command declaration writes it: type word and bounds.
std::string parameter_label(const ParamFields &p)
{
    const ParamType *type = type_by_code(p.type);
    if (!type)
        return "type " + hex_number(p.type);
    const std::string label(type->word.empty() ? type->name : type->word);
    if (p.subtype != 0)
        return label + " (subtype " + std::to_string(static_cast<int32_t>(p.subtype)) + ")";
    const std::string bounds = bounds_text(p, type->bounds);
    return bounds.empty() ? label : label + " " + bounds;
}

class Drawing
{
  public:
    explicit Drawing(std::span<const uint8_t> image) : image_(image) {}

    std::string run(uint32_t from, uint32_t depth)
    {
        out_ = "digraph parse_tree {\n  node [fontname=\"Helvetica\", fontsize=10];\n"
               "  edge [arrowsize=0.6];\n";
        draw(from, depth);
        return out_ + "}\n";
    }

  private:
    NodeFields fields(uint32_t index) const { return decode_record(image_.data() + index * WEX_NODE_SIZE); }

    void declare(uint32_t index, const NodeFields &f)
    {
        if (!declared_.insert(index).second)
            return;
        std::string label = escaped(f.token.empty() ? f.name : f.token);
        for (const ParamFields &p : f.params)
            label += "\\n" + escaped(parameter_label(p));
        if (f.action & WEX_ACTION_SUBMODE)
            label += "\\n(" + escaped(f.submode_prompt) + ")";
        out_ += "  n" + std::to_string(index) + " [label=\"" + label +
                "\", shape=" + (f.params.empty() ? "box" : "ellipse");
        if (f.action & WEX_ACTION_SUBMODE)
            out_ += ", style=bold";
        if (f.action & WEX_ACTION_TERMINAL)
            out_ += ", peripheries=2";
        out_ += "];\n";
    }

    void draw(uint32_t index, uint32_t depth)
    {
        const NodeFields f = fields(index);
        declare(index, f);
        if (depth == 0)
            return;
        for (const ChildRef &c : f.children) {
            if (c.link) {
                declare(c.index, fields(c.index));
                out_ +=
                    "  n" + std::to_string(index) + " -> n" + std::to_string(c.index) + " [style=dashed];\n";
                continue;
            }
            out_ += "  n" + std::to_string(index) + " -> n" + std::to_string(c.index) + ";\n";
            draw(c.index, depth - 1);
        }
    }

    std::span<const uint8_t> image_;
    std::string out_;
    std::set<uint32_t> declared_;
};

} // namespace

std::string write_graph(std::span<const uint8_t> image, uint32_t from, uint32_t depth)
{
    return Drawing(image).run(from, depth);
}

} // namespace wex_grammar
