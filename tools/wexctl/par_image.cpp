#include "par_image.h"

#include <wex/parse_tree.h>

#include <algorithm>
#include <cstring>

namespace wexctl
{
namespace
{

// The deepest level below a walk's start that the library's walks reach.
constexpr int32_t kMaxDepth = WEX_TREE_MAX_DEPTH - 1;

struct Node {
    uint16_t param_count;
    uint16_t child_count;
    std::vector<uint16_t> children;
    std::vector<bool> is_link;
};

uint16_t be16(const uint8_t *at)
{
    return static_cast<uint16_t>(at[0] << 8 | at[1]);
}

Node read_node(const uint8_t *record)
{
    Node node{be16(record + offsetof(parse_tree_node, param_count)),
              be16(record + offsetof(parse_tree_node, child_count)),
              {},
              {}};
    const uint8_t *mask = record + offsetof(parse_tree_node, childlist_mask);
    for (uint32_t i = 0; i < node.child_count && i < WEX_NODE_MAX_CHILDREN; ++i) {
        node.children.push_back(be16(record + offsetof(parse_tree_node, children) + 2 * i));
        node.is_link.push_back(((mask[i / 8] >> (i % 8)) & 1) != 0);
    }
    return node;
}

std::string at(uint32_t index)
{
    return "node " + std::to_string(index) + ": ";
}

void check_counts(uint32_t i, const Node &node, ImageCheck &check)
{
    if (node.param_count > WEX_NODE_MAX_PARAMS)
        check.problems.push_back(at(i) + "param_count " + std::to_string(node.param_count) + " (at most " +
                                 std::to_string(WEX_NODE_MAX_PARAMS) + ")");
    if (node.child_count > WEX_NODE_MAX_CHILDREN)
        check.problems.push_back(at(i) + "child_count " + std::to_string(node.child_count) + " (at most " +
                                 std::to_string(WEX_NODE_MAX_CHILDREN) + ")");
}

// Counts and child indexes of every node; each node's one non-link parent.
std::vector<int64_t> check_records(const std::vector<Node> &nodes, ImageCheck &check)
{
    std::vector<int64_t> parent(nodes.size(), -1);
    for (uint32_t i = 0; i < nodes.size(); ++i) {
        const Node &node = nodes[i];
        check_counts(i, node, check);
        for (std::size_t c = 0; c < node.children.size(); ++c) {
            const uint32_t child = node.children[c];
            if (child >= nodes.size()) {
                check.problems.push_back(at(i) + "child " + std::to_string(c) + " is node " +
                                         std::to_string(child) + ", past the image's " +
                                         std::to_string(nodes.size()) + " nodes");
            } else if (!node.is_link[c] && parent[child] >= 0) {
                check.problems.push_back(at(child) + "non-link child of both node " +
                                         std::to_string(parent[child]) + " and node " + std::to_string(i));
            } else if (!node.is_link[c]) {
                parent[child] = i;
            }
        }
    }
    return parent;
}

// The non-link tree below one root: what the conversion walks visit from
// it. False, with the problem, when it runs deeper than the walks go.
bool check_tree(const std::vector<Node> &nodes, uint32_t root, std::vector<bool> &seen, ImageCheck &check)
{
    std::vector<std::pair<uint32_t, int32_t>> pending{{root, 0}};
    seen[root] = true;
    while (!pending.empty()) {
        const auto [index, depth] = pending.back();
        pending.pop_back();
        if (depth > kMaxDepth) {
            check.problems.push_back(at(index) + "more than " + std::to_string(kMaxDepth) +
                                     " levels below node " + std::to_string(root));
            return false;
        }
        for (std::size_t c = 0; c < nodes[index].children.size(); ++c) {
            const uint32_t child = nodes[index].children[c];
            if (!nodes[index].is_link[c]) {
                seen[child] = true;
                pending.push_back({child, depth + 1});
            }
        }
    }
    return true;
}

// Every node lies in exactly one non-link tree of bounded depth; a node no
// root reaches sits on a loop of non-link children.
bool check_forest(const std::vector<Node> &nodes, const std::vector<int64_t> &parent, ImageCheck &check)
{
    std::vector<bool> seen(nodes.size(), false);
    for (uint32_t i = 0; i < nodes.size(); ++i) {
        if (parent[i] >= 0)
            continue;
        check.roots.push_back(i);
        if (!check_tree(nodes, i, seen, check))
            return false;
    }
    const auto lost = std::find(seen.begin(), seen.end(), false);
    if (lost == seen.end())
        return true;
    check.problems.push_back(at(static_cast<uint32_t>(lost - seen.begin())) +
                             "lies on a loop of non-link children");
    return false;
}

// Every edge from the start, links too: a loop, or a path deeper than the
// walks go, is what cycle_check reports; found here first, it is named.
struct LinkWalk {
    const std::vector<Node> &nodes;
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
        for (uint32_t child : nodes[index].children) {
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

// The links from start, through the parsed nodes, then the library's own
// cycle check on the image, already in host order.
void check_links(const std::vector<Node> &nodes, const uint8_t *host_image, uint32_t start, ImageCheck &check)
{
    LinkWalk walk{nodes, std::vector<int>(nodes.size(), 0), std::vector<int32_t>(nodes.size(), 0)};
    walk.visit(start, 0);
    if (walk.loop_at >= 0) {
        check.problems.push_back(at(static_cast<uint32_t>(walk.loop_at)) +
                                 "a loop through links comes back here");
        return;
    }
    if (walk.too_deep || walk.height[start] > kMaxDepth) {
        check.problems.push_back(at(start) + "paths following links run more than " +
                                 std::to_string(kMaxDepth) + " levels deep");
        return;
    }
    if (cycle_check(host_image, start, 0) != 0)
        check.problems.push_back(at(start) + "cycle_check finds a cycle or too deep a path");
}

} // namespace

ImageCheck check_image(std::span<uint8_t> image, uint32_t start)
{
    ImageCheck check;
    if (image.empty() || image.size() % WEX_NODE_SIZE != 0) {
        check.problems.push_back("size " + std::to_string(image.size()) + " is not a whole number of " +
                                 std::to_string(WEX_NODE_SIZE) + "-byte nodes");
        return check;
    }
    check.nodes = static_cast<uint32_t>(image.size() / WEX_NODE_SIZE);
    if (start >= check.nodes) {
        check.problems.push_back("start node " + std::to_string(start) + " is past the image's " +
                                 std::to_string(check.nodes) + " nodes");
        return check;
    }
    std::vector<Node> nodes;
    for (uint32_t i = 0; i < check.nodes; ++i)
        nodes.push_back(read_node(&image[std::size_t{i} * WEX_NODE_SIZE]));
    const std::vector<int64_t> parent = check_records(nodes, check);
    if (!check.problems.empty())
        return check;
    check.walkable = check_forest(nodes, parent, check);
    if (!check.walkable)
        return check;
    // Every tree, so that links into any of them are in host order too.
    for (const uint32_t root : check.roots)
        ntoh_array_tree(image.data(), root, 0);
    check_links(nodes, image.data(), start, check);
    return check;
}

} // namespace wexctl
