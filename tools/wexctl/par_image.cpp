#include "par_image.h"

#include <wex/parse_tree.h>

#include <cstring>
#include <functional>

namespace wexctl
{
namespace
{

constexpr int32_t kMaxDepth = 30;      // the library's walks stop past this depth
constexpr uint64_t kMaxPaths = 200000; // cycle_check visits every path; beyond this it could run for hours
constexpr uint32_t kMaxChildren = 192;

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
    for (uint32_t i = 0; i < node.child_count && i < kMaxChildren; ++i) {
        node.children.push_back(be16(record + offsetof(parse_tree_node, children) + 2 * i));
        node.is_link.push_back(((mask[i / 8] >> (i % 8)) & 1) != 0);
    }
    return node;
}

std::string at(uint32_t index)
{
    return "node " + std::to_string(index) + ": ";
}

void check_records(const std::vector<Node> &nodes, ImageCheck &check)
{
    std::vector<int64_t> parent(nodes.size(), -1);
    for (uint32_t i = 0; i < nodes.size(); ++i) {
        const Node &node = nodes[i];
        if (node.param_count > 2)
            check.problems.push_back(at(i) + "param_count " + std::to_string(node.param_count) +
                                     " (at most 2)");
        if (node.child_count > kMaxChildren)
            check.problems.push_back(at(i) + "child_count " + std::to_string(node.child_count) +
                                     " (at most 192)");
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
}

// The non-link tree from the start node: what the conversion and dump
// walks visit. Each node has one non-link parent at most, so reaching a
// node twice means a loop.
bool check_tree(const std::vector<Node> &nodes, uint32_t start, ImageCheck &check)
{
    std::vector<bool> seen(nodes.size(), false);
    std::vector<std::pair<uint32_t, int32_t>> pending{{start, 0}};
    seen[start] = true;
    while (!pending.empty()) {
        const auto [index, depth] = pending.back();
        pending.pop_back();
        if (depth > kMaxDepth) {
            check.problems.push_back(at(index) + "more than 30 levels below node " + std::to_string(start));
            return false;
        }
        for (std::size_t c = 0; c < nodes[index].children.size(); ++c) {
            const uint32_t child = nodes[index].children[c];
            if (nodes[index].is_link[c])
                continue;
            if (seen[child]) {
                check.problems.push_back(at(index) + "non-link child " + std::to_string(child) +
                                         " closes a loop");
                return false;
            }
            seen[child] = true;
            pending.push_back({child, depth + 1});
        }
    }
    return true;
}

// Every edge, links too: a loop, or a path deeper than the limit, is what
// cycle_check reports. Also counts the paths from the start, up to a cap.
struct LinkWalk {
    const std::vector<Node> &nodes;
    std::vector<int> state;      // 0 new, 1 on the path, 2 done
    std::vector<int32_t> height; // longest path below the node
    std::vector<uint64_t> paths; // paths from the node, capped
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
        paths[index] = 1;
        for (uint32_t child : nodes[index].children) {
            if (state[child] == 1 && loop_at < 0)
                loop_at = child;
            if (state[child] == 0)
                visit(child, depth + 1);
            if (loop_at >= 0 || too_deep)
                return;
            height[index] = std::max(height[index], height[child] + 1);
            paths[index] = std::min(kMaxPaths + 1, paths[index] + paths[child]);
        }
        state[index] = 2;
    }
};

void check_links(const std::vector<Node> &nodes, const std::vector<uint8_t> &image, uint32_t start,
                 ImageCheck &check)
{
    LinkWalk walk{nodes, std::vector<int>(nodes.size(), 0), std::vector<int32_t>(nodes.size(), 0),
                  std::vector<uint64_t>(nodes.size(), 0)};
    walk.visit(start, 0);
    if (walk.loop_at >= 0) {
        check.problems.push_back(at(static_cast<uint32_t>(walk.loop_at)) +
                                 "a loop through links comes back here");
        return;
    }
    if (walk.too_deep || walk.height[start] > kMaxDepth) {
        check.problems.push_back(at(start) + "paths following links run more than 30 levels deep");
        return;
    }
    if (walk.paths[start] > kMaxPaths)
        return;
    std::vector<uint8_t> host(image);
    ntoh_array_tree(host.data(), start, 0);
    if (cycle_check(host.data(), start, 0) != 0)
        check.problems.push_back(at(start) + "cycle_check finds a cycle or too deep a path");
}

} // namespace

ImageCheck check_image(const std::vector<uint8_t> &image, uint32_t start)
{
    ImageCheck check;
    if (image.empty() || image.size() % WEX_NODE_SIZE != 0) {
        check.problems.push_back("size " + std::to_string(image.size()) +
                                 " is not a whole number of 1000-byte nodes");
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
    check_records(nodes, check);
    if (!check.problems.empty())
        return check;
    check.walkable = check_tree(nodes, start, check);
    if (check.walkable)
        check_links(nodes, image, start, check);
    return check;
}

} // namespace wexctl
