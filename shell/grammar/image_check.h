// Validation of a ".par" parse-tree image as stored, in network order,
// before any library walk touches it: the walks trust the image and end
// the process past their depth limit.
#ifndef WEX_GRAMMAR_IMAGE_CHECK_H
#define WEX_GRAMMAR_IMAGE_CHECK_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace wex_grammar
{

// The largest image: child indexes are 16 bits wide.
inline constexpr std::size_t kMaxImageNodes = 0x10000;

// What a check needs of each node record, read from network order: its
// counts and its children with their link bits. A tenth of the record, so
// an image can be checked as it streams past.
class TreeShape
{
  public:
    // Adds a node for each whole record in bytes; a partial record at the
    // end is left out.
    void add_records(std::span<const uint8_t> bytes);

    uint32_t size() const { return static_cast<uint32_t>(nodes_.size()); }
    uint16_t param_count(uint32_t node) const { return nodes_[node].param_count; }
    uint16_t child_count(uint32_t node) const { return nodes_[node].child_count; }
    // The children the record holds: child_count of them, at most the
    // record's room.
    std::span<const uint16_t> children(uint32_t node) const;
    bool is_link(uint32_t node, std::size_t child) const { return links_[nodes_[node].first + child]; }

  private:
    // Adds the next node from its whole record.
    void add(const uint8_t *record);

    struct Node {
        uint16_t param_count;
        uint16_t child_count;
        uint32_t first; // of its children, in children_ and links_
    };
    std::vector<Node> nodes_;
    std::vector<uint16_t> children_;
    std::vector<bool> links_;
};

// The shape of a whole image in memory; a partial record at its end is left out.
TreeShape shape_of(std::span<const uint8_t> image);

struct Problem {
    int64_t node; // the node it is about; -1 for the image as a whole
    std::string text;

    // "node N: text", or the text alone.
    std::string line() const { return node < 0 ? text : "node " + std::to_string(node) + ": " + text; }
};

struct ImageCheck {
    std::vector<Problem> problems;
    bool walkable = false; // the whole image converts to host order safely
    uint32_t nodes = 0;
    std::vector<uint32_t> roots; // the nodes without a non-link parent
};

// Checks an image of image_bytes bytes, whose whole records make shape,
// from node start: whole nodes, counts, child indexes, one non-link parent
// per node, the depth of every non-link tree, and loops and depth
// following links.
ImageCheck check_image(const TreeShape &shape, std::size_t image_bytes, uint32_t start);

// Converts every tree of an image found walkable to host order, ready for
// the library's walks, and, when the check found nothing, has the library's
// cycle_check confirm it from start.
void convert_for_walks(std::span<uint8_t> image, uint32_t start, ImageCheck &check);

} // namespace wex_grammar

#endif
