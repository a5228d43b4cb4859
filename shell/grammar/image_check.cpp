#include "image_check.h"

#include <wex/parse_tree.h>

#include <algorithm>
#include <cstring>

namespace wex_grammar
{
namespace
{

// The deepest level below a walk's start that the library's walks reach.
constexpr int32_t kMaxDepth = WEX_TREE_MAX_DEPTH - 1;

uint16_t be16(const uint8_t *at)
{
    return static_cast<uint16_t>(at[0] << 8 | at[1]);
}

void check_counts(const TreeShape &shape, uint32_t i, ImageCheck &check)
{
    if (shape.param_count(i) > WEX_NODE_MAX_PARAMS)
        check.problems.push_back(
            {static_cast<int64_t>(i), "param_count " + std::to_string(shape.param_count(i)) + " (at most " +
                                          std::to_string(WEX_NODE_MAX_PARAMS) + ")"});
    if (shape.child_count(i) > WEX_NODE_MAX_CHILDREN)
        check.problems.push_back(
            {static_cast<int64_t>(i), "child_count " + std::to_string(shape.child_count(i)) + " (at most " +
                                          std::to_string(WEX_NODE_MAX_CHILDREN) + ")"});
}

// Counts and child indexes of every node; each node's one non-link parent.
std::vector<int64_t> check_records(const TreeShape &shape, ImageCheck &check)
{
    std::vector<int64_t> parent(shape.size(), -1);
    for (uint32_t i = 0; i < shape.size(); ++i) {
        check_counts(shape, i, check);
        const std::span<const uint16_t> children = shape.children(i);
        for (std::size_t c = 0; c < children.size(); ++c) {
            const uint32_t child = children[c];
            if (child >= shape.size()) {
                check.problems.push_back(
                    {static_cast<int64_t>(i), "child " + std::to_string(c) + " is node " +
                                                  std::to_string(child) + ", past the image's " +
                                                  std::to_string(shape.size()) + " nodes"});
            } else if (!shape.is_link(i, c) && parent[child] >= 0) {
                check.problems.push_back({static_cast<int64_t>(child), "non-link child of both node " +
                                                                           std::to_string(parent[child]) +
                                                                           " and node " + std::to_string(i)});
            } else if (!shape.is_link(i, c)) {
                parent[child] = i;
            }
        }
    }
    return parent;
}

// The non-link tree below one root: what the conversion walks visit from
// it. False, with the problem, when it runs deeper than the walks go.
bool check_tree(const TreeShape &shape, uint32_t root, std::vector<bool> &seen, ImageCheck &check)
{
    std::vector<std::pair<uint32_t, int32_t>> pending{{root, 0}};
    seen[root] = true;
    while (!pending.empty()) {
        const auto [index, depth] = pending.back();
        pending.pop_back();
        if (depth > kMaxDepth) {
            check.problems.push_back(
                {static_cast<int64_t>(index),
                 "more than " + std::to_string(kMaxDepth) + " levels below node " + std::to_string(root)});
            return false;
        }
        const std::span<const uint16_t> children = shape.children(index);
        for (std::size_t c = 0; c < children.size(); ++c) {
            const uint32_t child = children[c];
            if (!shape.is_link(index, c)) {
                seen[child] = true;
                pending.push_back({child, depth + 1});
            }
        }
    }
    return true;
}

// Every node lies in exactly one non-link tree of bounded depth; a node no
// root reaches sits on a loop of non-link children.
bool check_forest(const TreeShape &shape, const std::vector<int64_t> &parent, ImageCheck &check)
{
    std::vector<bool> seen(shape.size(), false);
    for (uint32_t i = 0; i < shape.size(); ++i) {
        if (parent[i] >= 0)
            continue;
        check.roots.push_back(i);
        if (!check_tree(shape, i, seen, check))
            return false;
    }
    const auto lost = std::find(seen.begin(), seen.end(), false);
    if (lost == seen.end())
        return true;
    check.problems.push_back({lost - seen.begin(), "lies on a loop of non-link children"});
    return false;
}

// Every edge from the start, links too: a loop, or a path deeper than the
// walks go, is what cycle_check reports; found here first, it is named.
struct LinkWalk {
    const TreeShape &shape;
    std::vector<int> state;      // 0 new, 1 on the path, 2 done
    std::vector<int32_t> height; // longest path below the node
    int64_t loop_at = -1;
    bool too_deep = false;

    // The walk goes no deeper than one level past the limit: whatever lies
    // below fails anyway, and the recursion stays short.
    void visit(uint32_t index, int32_t depth)
    {
        if (depth > kMaxDepth) {
            too_deep = true;
            return;
        }
        state[index] = 1;
        height[index] = 0;
        for (const uint32_t child : shape.children(index)) {
            if (state[child] == 1 && loop_at < 0)
                loop_at = child;
            if (state[child] == 0)
                visit(child, depth + 1);
            if (loop_at >= 0 || too_deep)
                return;
            height[index] = std::max(height[index], height[child] + 1);
        }
        state[index] = 2;
    }
};

// The links from start.
void check_links(const TreeShape &shape, uint32_t start, ImageCheck &check)
{
    LinkWalk walk{shape, std::vector<int>(shape.size(), 0), std::vector<int32_t>(shape.size(), 0)};
    walk.visit(start, 0);
    if (walk.loop_at >= 0) {
        check.problems.push_back(
            {static_cast<int64_t>(walk.loop_at), "a loop through links comes back here"});
        return;
    }
    if (walk.too_deep || walk.height[start] > kMaxDepth) {
        check.problems.push_back(
            {static_cast<int64_t>(start),
             "paths following links run more than " + std::to_string(kMaxDepth) + " levels deep"});
    }
}

} // namespace

void TreeShape::add(const uint8_t *record)
{
    const Node node{be16(record + offsetof(parse_tree_node, param_count)),
                    be16(record + offsetof(parse_tree_node, child_count)),
                    static_cast<uint32_t>(children_.size())};
    nodes_.push_back(node);
    const uint8_t *mask = record + offsetof(parse_tree_node, childlist_mask);
    for (uint32_t i = 0; i < node.child_count && i < WEX_NODE_MAX_CHILDREN; ++i) {
        children_.push_back(be16(record + offsetof(parse_tree_node, children) + 2 * i));
        links_.push_back(((mask[i / 8] >> (i % 8)) & 1) != 0);
    }
}

std::span<const uint16_t> TreeShape::children(uint32_t node) const
{
    const std::size_t end = node + 1 < nodes_.size() ? nodes_[node + 1].first : children_.size();
    return {children_.data() + nodes_[node].first, end - nodes_[node].first};
}

void TreeShape::add_records(std::span<const uint8_t> bytes)
{
    for (std::size_t at = 0; at + WEX_NODE_SIZE <= bytes.size(); at += WEX_NODE_SIZE)
        add(&bytes[at]);
}

TreeShape shape_of(std::span<const uint8_t> image)
{
    TreeShape shape;
    shape.add_records(image);
    return shape;
}

ImageCheck check_image(const TreeShape &shape, std::size_t image_bytes, uint32_t start)
{
    ImageCheck check;
    if (image_bytes == 0 || image_bytes % WEX_NODE_SIZE != 0) {
        check.problems.push_back({-1, "size " + std::to_string(image_bytes) + " is not a whole number of " +
                                          std::to_string(WEX_NODE_SIZE) + "-byte nodes"});
        return check;
    }
    check.nodes = shape.size();
    if (start >= check.nodes) {
        check.problems.push_back({-1, "start node " + std::to_string(start) + " is past the image's " +
                                          std::to_string(check.nodes) + " nodes"});
        return check;
    }
    const std::vector<int64_t> parent = check_records(shape, check);
    if (!check.problems.empty())
        return check;
    check.walkable = check_forest(shape, parent, check);
    if (check.walkable)
        check_links(shape, start, check);
    return check;
}

void convert_for_walks(std::span<uint8_t> image, uint32_t start, ImageCheck &check)
{
    // Every tree, so that links into any of them are in host order too.
    for (const uint32_t root : check.roots)
        ntoh_array_tree(image.data(), root, 0);
    if (check.problems.empty() && cycle_check(image.data(), start, 0) != 0)
        check.problems.push_back(
            {static_cast<int64_t>(start), "cycle_check finds a cycle or too deep a path"});
}

} // namespace wex_grammar
