// The main parse tree as the shell walks it: the file read whole, checked
// before any walk (a bad image is never handed to the library's walks,
// which end the process past their depth), and converted to host order.
#ifndef WEX_SHELL_MAIN_TREE_H
#define WEX_SHELL_MAIN_TREE_H

#include "field_text.h"

#include <wex/parse_tree.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace wex_shell
{

using wex_tools::field_text;

class MainTree
{
  public:
    // The tree of the .par file at path, or nothing with why set to what is
    // wrong: the file, or the image's first problem and its node.
    static std::optional<MainTree> load(const std::string &path, std::string &why);
    // The tree of a network-order image in memory (a grammar just compiled),
    // checked and converted as a file's is; nothing with why set otherwise.
    static std::optional<MainTree> from_image(std::span<const uint8_t> image, std::string &why);

    std::size_t size() const { return size_; }
    const parse_tree_node &node(std::size_t index) const { return nodes_[index]; }

    // Makes this tree the process's parse-tree root; it must outlive that use.
    void make_root() const;

    // The tree's one block of memory, mapped apart from the heap so that a
    // large tree can sit in huge pages.
    struct Unmap {
        std::size_t bytes;
        void operator()(parse_tree_node *nodes) const;
    };
    using NodeBlock = std::unique_ptr<parse_tree_node[], Unmap>;

  private:
    MainTree(NodeBlock nodes, std::size_t size) : nodes_(std::move(nodes)), size_(size) {}
    // The nodes read into their block, checked and converted for the walks.
    static std::optional<MainTree> checked(NodeBlock nodes, std::size_t count, const std::string &name,
                                           std::string &why);

    NodeBlock nodes_;
    std::size_t size_;
};

} // namespace wex_shell

#endif
