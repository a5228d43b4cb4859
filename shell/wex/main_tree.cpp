#include "main_tree.h"

#include "descriptor.h"
#include "image_check.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wex_shell
{
namespace
{

constexpr std::size_t kMaxBytes = wex_grammar::kMaxImageNodes * WEX_NODE_SIZE;

// A block for count nodes. A large tree is read whole at each start, and
// faulting it in 4 KiB pages costs more than reading it: 2 MiB pages make
// a 20 MB tree's start several times faster where the kernel grants them.
MainTree::NodeBlock map_nodes(std::size_t count)
{
    constexpr std::size_t kHugePage = 2u << 20;
    const std::size_t bytes = (count * WEX_NODE_SIZE + kHugePage - 1) / kHugePage * kHugePage;
    void *block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED)
        return MainTree::NodeBlock(nullptr, {0});
    (void)madvise(block, bytes, MADV_HUGEPAGE); // a hint: 4 KiB pages serve as well, only slower
    return MainTree::NodeBlock(static_cast<parse_tree_node *>(block), {bytes});
}

} // namespace

std::optional<MainTree> MainTree::load(const std::string &path, std::string &why)
{
    const wex_tools::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {
    };
    if (file.get() < 0 || fstat(file.get(), &status) != 0) {
        why = "main tree " + path + ": " + std::strerror(errno);
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        why = "main tree " + path + ": not a regular file";
        return std::nullopt;
    }
    const auto bytes = static_cast<std::size_t>(status.st_size);
    if (bytes == 0 || bytes % WEX_NODE_SIZE != 0 || bytes > kMaxBytes) {
        why = "main tree " + path + ": " + std::to_string(bytes) + " bytes is not an image of whole " +
              std::to_string(WEX_NODE_SIZE) + "-byte nodes";
        return std::nullopt;
    }
    const std::size_t count = bytes / WEX_NODE_SIZE;
    NodeBlock nodes = map_nodes(count);
    if (!nodes) {
        why = "main tree " + path + ": no memory for " + std::to_string(count) + " nodes";
        return std::nullopt;
    }
    if (wex_tools::read_block(file.get(), reinterpret_cast<uint8_t *>(nodes.get()), bytes) !=
        static_cast<ssize_t>(bytes)) {
        why = "main tree " + path + ": changed size while it was read";
        return std::nullopt;
    }
    return checked(std::move(nodes), count, path, why);
}

std::optional<MainTree> MainTree::from_image(std::span<const uint8_t> image, std::string &why)
{
    const std::size_t count = image.size() / WEX_NODE_SIZE;
    if (image.empty() || image.size() % WEX_NODE_SIZE != 0 || image.size() > kMaxBytes) {
        why = "main tree image: " + std::to_string(image.size()) + " bytes is not an image of whole " +
              std::to_string(WEX_NODE_SIZE) + "-byte nodes";
        return std::nullopt;
    }
    NodeBlock nodes = map_nodes(count);
    if (!nodes) {
        why = "main tree image: no memory for " + std::to_string(count) + " nodes";
        return std::nullopt;
    }
    std::memcpy(nodes.get(), image.data(), image.size());
    return checked(std::move(nodes), count, "image", why);
}

std::optional<MainTree> MainTree::checked(NodeBlock nodes, std::size_t count, const std::string &name,
                                          std::string &why)
{
    const std::size_t bytes = count * WEX_NODE_SIZE;
    const std::span image(reinterpret_cast<uint8_t *>(nodes.get()), bytes);
    wex_grammar::ImageCheck check = wex_grammar::check_image(wex_grammar::shape_of(image), bytes, 0);
    if (check.walkable)
        wex_grammar::convert_for_walks(image, 0, check);
    if (!check.problems.empty()) {
        why = "main tree " + name + ": " + check.problems.front().line();
        return std::nullopt;
    }
    return MainTree(std::move(nodes), count);
}

void MainTree::Unmap::operator()(parse_tree_node *nodes) const
{
    munmap(nodes, bytes);
}

void MainTree::make_root() const
{
    wex_parse_tree_root_set(nodes_.get());
}

} // namespace wex_shell
