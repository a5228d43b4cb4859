#include "image_merge.h"

#include "image_check.h"
#include "node_record.h"

#include <algorithm>
#include <map>

namespace wex_grammar
{
namespace
{

// What makes two nodes one: the word a user types there.
std::string place_of(const NodeFields &f)
{
    if (!f.token.empty())
        return "k " + f.token;
    std::string key = "p";
    for (ParamFields p : f.params) {
        p.help.clear();
        key += " " + std::to_string(p.type) + "," + std::to_string(p.mask) + "," + std::to_string(p.min) +
               "," + std::to_string(p.max) + "," + std::to_string(p.subtype) + "," +
               std::to_string(p.extra32) + "," + std::to_string(p.extra64);
    }
    return key;
}

// Everything of a node but its children.
bool same_fields(NodeFields a, NodeFields b)
{
    a.children.clear();
    b.children.clear();
    return a == b;
}

class Merger
{
  public:
    explicit Merger(Diagnostics &diagnostics) : diagnostics_(diagnostics) {}

    void add(const NamedImage &image)
    {
        std::vector<NodeFields> nodes;
        for (std::size_t at = 0; at + WEX_NODE_SIZE <= image.bytes.size(); at += WEX_NODE_SIZE)
            nodes.push_back(decode_record(image.bytes.data() + at));
        if (nodes.empty())
            return;
        if (merged_.empty()) {
            adopt(std::move(nodes));
            return;
        }
        std::vector<int64_t> merged_index(nodes.size(), -1);
        if (!same_fields(merged_[0], nodes[0])) {
            diagnostics_.error(image.name, "its root differs from the first image's root");
            return;
        }
        merged_index[0] = 0;
        place(image.name, nodes, 0, merged_index);
        link(image.name, nodes, merged_index);
    }

    std::vector<uint8_t> image() const
    {
        std::vector<uint8_t> bytes;
        bytes.reserve(merged_.size() * WEX_NODE_SIZE);
        for (const NodeFields &f : merged_) {
            const Record record = encode_record(f);
            bytes.insert(bytes.end(), record.begin(), record.end());
        }
        return bytes;
    }

  private:
    // The first image is taken as it is, so that a tree merged with nothing
    // else, or with what it already holds, keeps its bytes.
    void adopt(std::vector<NodeFields> nodes)
    {
        merged_ = std::move(nodes);
        for (std::size_t n = 0; n < merged_.size(); ++n)
            for (const ChildRef &c : merged_[n].children)
                if (!c.link && c.index < merged_.size())
                    places_.emplace(std::to_string(n) + " " + place_of(merged_[c.index]), c.index);
    }

    static NodeFields without_children(NodeFields f)
    {
        f.children.clear();
        return f;
    }

    // The ordinary children of node n, each found in or added to the merged
    // node it maps to; depth first, so that each subtree keeps its order.
    void place(const std::string &name, const std::vector<NodeFields> &nodes, std::size_t n,
               std::vector<int64_t> &merged_index)
    {
        const auto parent = static_cast<uint16_t>(merged_index[n]);
        for (const ChildRef &c : nodes[n].children) {
            if (c.link || c.index >= nodes.size() || merged_index[c.index] >= 0)
                continue;
            const NodeFields &child = nodes[c.index];
            const std::string key = std::to_string(parent) + " " + place_of(child);
            const auto found = places_.find(key);
            if (found != places_.end()) {
                if (!same_fields(merged_[found->second], child)) {
                    diagnostics_.error(name,
                                       "node " + std::to_string(c.index) + " ('" + child.name +
                                           "') differs from the node at its place in the images before");
                    continue;
                }
                merged_index[c.index] = found->second;
            } else {
                if (merged_.size() == kMaxImageNodes) {
                    diagnostics_.error(name, "the merged tree would hold more than " +
                                                 std::to_string(kMaxImageNodes) + " nodes");
                    return;
                }
                const auto index = static_cast<uint16_t>(merged_.size());
                merged_.push_back(without_children(child));
                merged_[parent].children.push_back({index, false});
                places_.emplace(key, index);
                merged_index[c.index] = index;
            }
            place(name, nodes, c.index, merged_index);
        }
    }

    // Each link of the image, to where its target went, once.
    void link(const std::string &name, const std::vector<NodeFields> &nodes,
              const std::vector<int64_t> &merged_index)
    {
        for (std::size_t n = 0; n < nodes.size(); ++n) {
            if (merged_index[n] < 0)
                continue;
            NodeFields &parent = merged_[static_cast<std::size_t>(merged_index[n])];
            for (const ChildRef &c : nodes[n].children) {
                if (!c.link)
                    continue;
                if (c.index >= nodes.size() || merged_index[c.index] < 0) {
                    diagnostics_.error(name,
                                       "node " + std::to_string(n) + " links to a node outside its tree");
                    continue;
                }
                const ChildRef to{static_cast<uint16_t>(merged_index[c.index]), true};
                if (std::find(parent.children.begin(), parent.children.end(), to) != parent.children.end())
                    continue;
                if (parent.children.size() == WEX_NODE_MAX_CHILDREN) {
                    diagnostics_.error(name, "node '" + parent.name + "' would have more than " +
                                                 std::to_string(WEX_NODE_MAX_CHILDREN) + " children");
                    continue;
                }
                parent.children.push_back(to);
            }
        }
    }

    Diagnostics &diagnostics_;
    std::vector<NodeFields> merged_;
    std::map<std::string, uint16_t> places_; // merged node by parent and word
};

} // namespace

std::optional<std::vector<uint8_t>> merge_images(const std::vector<NamedImage> &images,
                                                 Diagnostics &diagnostics)
{
    Merger merger(diagnostics);
    for (const NamedImage &image : images)
        merger.add(image);
    if (diagnostics.any())
        return std::nullopt;
    std::vector<uint8_t> merged = merger.image();
    const ImageCheck check = check_image(shape_of(merged), merged.size(), 0);
    for (const Problem &problem : check.problems)
        diagnostics.error("the merged tree", problem.line());
    if (!check.problems.empty())
        return std::nullopt;
    return merged;
}

} // namespace wex_grammar
