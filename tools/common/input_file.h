// Files and arguments a user hands a tool, taken as untrusted: read whole
// within a stated limit, refused with one line that names the file and why.
#ifndef WEX_TOOLS_INPUT_FILE_H
#define WEX_TOOLS_INPUT_FILE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace wex_tools
{

// The bytes of the regular file at path, or of standard input for "-", at
// most limit of them. Anything else (a missing or unreadable file, a
// directory, a device, a FIFO, more than limit bytes) prints
// "PROGRAM: PATH: REASON" on standard error and gives nothing.
std::optional<std::string> read_input(const char *program, const std::string &path, std::size_t limit);

// The same input read through one reused block of block bytes, for a
// caller that needs only a summary of it: take sees each block in turn,
// full but for the last. The number of bytes, or nothing, said why, as
// read_input.
using BlockTaker = std::function<void(std::span<const uint8_t>)>;
std::optional<std::size_t> read_input_in_blocks(const char *program, const std::string &path,
                                                std::size_t limit, std::size_t block, const BlockTaker &take);

// A configuration text as a tool compares it, followed by a NUL so that the
// library takes it as a C string. A regular file's own pages are mapped
// read-only, so a text of tens of megabytes is neither zeroed nor copied;
// standard input is read.
class InputText
{
  public:
    explicit InputText(std::string bytes) : bytes_(std::move(bytes)), view_(bytes_) {}
    InputText(void *mapping, std::size_t mapped, std::size_t size);
    InputText(InputText &&other) noexcept;
    InputText &operator=(InputText &&) = delete;
    ~InputText();

    std::string_view view() const { return view_; }
    const char *c_str() const { return view_.data(); }

  private:
    std::string bytes_;
    void *mapping_ = nullptr;
    std::size_t mapped_ = 0;
    std::string_view view_;
};

// Configuration texts are read whole; past this they are not configurations.
inline constexpr std::size_t kMaxConfigTextBytes = 64u << 20;

// The text at path, or on standard input for "-", refused as read_input
// refuses.
std::optional<InputText> read_text_input(const char *program, const std::string &path, std::size_t limit);

// Why the bytes are not a configuration text (a NUL or another control
// byte, named with its line), or nothing when they are one.
std::optional<std::string> not_text(std::string_view bytes);

// A number typed as a whole word: decimal, or hexadecimal after "0x", no
// sign, no blanks, at most max.
std::optional<uint64_t> parse_number(std::string_view word, uint64_t max);

} // namespace wex_tools

#endif
