#include "input_file.h"
#include "descriptor.h"
#include "mapping_guard.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wex_tools
{
namespace
{

std::nullopt_t refuse(const char *program, const std::string &name, const std::string &why)
{
    std::fprintf(stderr, "%s: %s: %s\n", program, name.c_str(), why.c_str());
    return std::nullopt;
}

const char *kind_of(mode_t mode)
{
    if (S_ISDIR(mode))
        return "is a directory";
    if (S_ISFIFO(mode))
        return "is a FIFO, not a regular file";
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return "is a device, not a regular file";
    if (S_ISSOCK(mode))
        return "is a socket, not a regular file";
    return nullptr;
}

std::nullopt_t refuse_size(const char *program, const std::string &name, std::size_t limit)
{
    return refuse(program, name, "is larger than the limit of " + std::to_string(limit) + " bytes");
}

// Reads to the end straight into the text, one byte past the limit at most,
// so an endless input costs no more than the limit. A file's size sizes the
// text at once (one byte over, to meet the end without growing it); the
// text grows by doubling only for input of unknown size.
std::optional<std::string> read_bounded(const char *program, const std::string &name, int fd,
                                        std::size_t limit, std::size_t size_hint)
{
    constexpr std::size_t kFirstRead = 64 * 1024;
    std::string bytes(std::min(limit + 1, size_hint > 0 ? size_hint + 1 : kFirstRead), '\0');
    std::size_t have = 0;
    for (;;) {
        if (have == bytes.size())
            bytes.resize(std::min(limit + 1, 2 * have));
        const std::size_t room = bytes.size() - have;
        const ssize_t got = read_block(fd, reinterpret_cast<uint8_t *>(bytes.data()) + have, room);
        if (got < 0)
            return refuse(program, name, std::strerror(errno));
        have += static_cast<std::size_t>(got);
        if (have > limit)
            return refuse_size(program, name, limit);
        if (static_cast<std::size_t>(got) < room)
            break;
    }
    bytes.resize(have);
    return bytes;
}

// Reads to the end through one block of memory reused for the whole input,
// handing each block to take; the total, at most limit.
std::optional<std::size_t> read_blocks(const char *program, const std::string &name, int fd,
                                       std::size_t limit, std::size_t block_size, const BlockTaker &take)
{
    const std::unique_ptr<uint8_t[]> block = std::make_unique_for_overwrite<uint8_t[]>(block_size);
    std::size_t total = 0;
    for (;;) {
        const ssize_t got = read_block(fd, block.get(), block_size);
        if (got < 0)
            return refuse(program, name, std::strerror(errno));
        total += static_cast<std::size_t>(got);
        if (total > limit)
            return refuse_size(program, name, limit);
        if (got > 0)
            take({block.get(), static_cast<std::size_t>(got)});
        if (static_cast<std::size_t>(got) < block_size)
            return total;
    }
}

// Tab, the line ends, form feed and escape occur in configuration texts;
// any other control byte does not.
constexpr bool is_binary(unsigned char byte)
{
    return byte < 0x20 && !(byte >= '\t' && byte <= '\r') && byte != 0x1b;
}

// Whether a block of kBlock bytes holds a binary byte. No branch per byte:
// the compiler turns the loop into vector compares, so a text of tens of
// megabytes is checked at about the speed of reading it.
constexpr std::size_t kBlock = 64;
bool block_has_binary(const unsigned char *block)
{
    unsigned char found = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
        const unsigned char byte = block[i];
        found |= static_cast<unsigned char>(
            (byte < 0x20) & (static_cast<unsigned char>(byte - '\t') > '\r' - '\t') & (byte != 0x1b));
    }
    return found != 0;
}

// The first binary byte, or end.
const unsigned char *first_binary_byte(const unsigned char *p, const unsigned char *end)
{
    while (static_cast<std::size_t>(end - p) >= kBlock && !block_has_binary(p))
        p += kBlock;
    return std::find_if(p, end, is_binary);
}

// Opens the input and refuses what is not a regular file within limit, then
// has read take its bytes: read(name, descriptor, size or 0 when unknown).
template <typename Read>
auto with_input(const char *program, const std::string &path, std::size_t limit, Read read)
    -> decltype(read(path, 0, 0))
{
    if (path == "-")
        return read("standard input", STDIN_FILENO, 0);
    // Not blocking on the open: a FIFO without a writer would wait forever.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.get() < 0)
        return refuse(program, path, std::strerror(errno));
    struct stat status {
    };
    if (fstat(file.get(), &status) != 0)
        return refuse(program, path, std::strerror(errno));
    if (const char *kind = kind_of(status.st_mode))
        return refuse(program, path, kind);
    if (static_cast<uint64_t>(status.st_size) > limit)
        return refuse_size(program, path, limit);
    return read(path, file.get(), static_cast<std::size_t>(status.st_size));
}

// Maps the size bytes of the open file read-only, with a page of zeros
// after them whatever the size: the NUL that ends the text. Nothing when
// the file cannot be mapped; the caller reads it instead.
std::optional<InputText> map_text(const char *program, const std::string &name, int fd, std::size_t size)
{
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t mapped = (size / page + 1) * page;
    void *region = mmap(nullptr, mapped, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (region == MAP_FAILED)
        return std::nullopt;
    if (mmap(region, size, PROT_READ, MAP_PRIVATE | MAP_FIXED | MAP_POPULATE, fd, 0) == MAP_FAILED ||
        !guard_mapping(region, mapped,
                       std::string(program) + ": " + name + ": changed size while it was read\n")) {
        munmap(region, mapped);
        return std::nullopt;
    }
    return InputText(region, mapped, size);
}

} // namespace

std::optional<std::string> read_input(const char *program, const std::string &path, std::size_t limit)
{
    return with_input(program, path, limit, [&](const std::string &name, int fd, std::size_t size_hint) {
        return read_bounded(program, name, fd, limit, size_hint);
    });
}

std::optional<std::size_t> read_input_in_blocks(const char *program, const std::string &path,
                                                std::size_t limit, std::size_t block, const BlockTaker &take)
{
    return with_input(program, path, limit, [&](const std::string &name, int fd, std::size_t) {
        return read_blocks(program, name, fd, limit, block, take);
    });
}

std::optional<InputText> read_text_input(const char *program, const std::string &path, std::size_t limit)
{
    return with_input(program, path, limit,
                      [&](const std::string &name, int fd, std::size_t size) -> std::optional<InputText> {
                          // Standard input comes with no size and is read.
                          if (size > 0)
                              if (std::optional<InputText> mapped = map_text(program, name, fd, size))
                                  return mapped;
                          std::optional<std::string> bytes = read_bounded(program, name, fd, limit, size);
                          if (!bytes)
                              return std::nullopt;
                          return InputText(std::move(*bytes));
                      });
}

InputText::InputText(void *mapping, std::size_t mapped, std::size_t size)
    : mapping_(mapping), mapped_(mapped), view_(static_cast<const char *>(mapping), size)
{
}

InputText::InputText(InputText &&other) noexcept
    : bytes_(std::move(other.bytes_)), mapping_(std::exchange(other.mapping_, nullptr)),
      mapped_(other.mapped_), view_(mapping_ ? other.view_ : std::string_view(bytes_))
{
}

InputText::~InputText()
{
    if (!mapping_)
        return;
    unguard_mapping(mapping_);
    munmap(mapping_, mapped_);
}

std::optional<std::string> not_text(std::string_view bytes)
{
    const auto *first = reinterpret_cast<const unsigned char *>(bytes.data());
    const unsigned char *const end = first + bytes.size();
    const unsigned char *const bad = first_binary_byte(first, end);
    if (bad == end)
        return std::nullopt;
    const std::size_t line = 1 + static_cast<std::size_t>(std::count(first, bad, '\n'));
    char why[80];
    std::snprintf(why, sizeof why, "binary content (byte 0x%02x on line %zu), not compared as text", *bad,
                  line);
    return why;
}

std::optional<uint64_t> parse_number(std::string_view word, uint64_t max)
{
    int base = 10;
    if (word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X')) {
        base = 16;
        word.remove_prefix(2);
    }
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value, base);
    if (word.empty() || error != std::errc{} || end != word.data() + word.size() || value > max)
        return std::nullopt;
    return value;
}

} // namespace wex_tools
