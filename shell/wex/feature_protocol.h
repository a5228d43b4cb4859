// What the shell and a feature process say to each other, beside the
// library's own requests: commands to apply, in batches, and the feature's
// lines of the running configuration, in pages. Both ends run on one
// machine, so numbers travel in host order; every reader checks every
// length against the bytes it was given.
#ifndef WEX_SHELL_FEATURE_PROTOCOL_H
#define WEX_SHELL_FEATURE_PROTOCOL_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wex_shell
{

// Opcodes of the project's own, outside the library's.
inline constexpr uint32_t kOpcExecute = 0x57580001;
inline constexpr uint32_t kOpcRunningConfig = 0x57580002;

// A feature stops at the first command of a batch that fails.
inline constexpr uint32_t kStopOnError = 1;

// How long the shell waits for a feature's answer, in seconds.
inline constexpr uint32_t kFeatureTimeout = 10;

using Bytes = std::vector<uint8_t>;

// A batch as a feature reads it: views into the request's payload.
struct ExecuteBatch {
    uint32_t flags = 0;
    std::vector<std::span<const uint8_t>> records; // flattened command records, in the order typed
};

// A batch as the shell writes it, in place: each record is flattened
// straight into the request, whose memory serves batch after batch.
class BatchWriter
{
  public:
    // Starts an empty batch with these flags.
    void start(uint32_t flags);
    // Adds the record that write appends to the bytes it is given.
    template <typename Write> void add(Write &&write)
    {
        const std::size_t length_at = bytes_.size();
        put(0);
        write(bytes_);
        patch(length_at, bytes_.size() - length_at - sizeof(uint32_t));
        patch(kCountAt, ++count_);
    }
    std::size_t size() const { return count_; }
    std::span<const uint8_t> bytes() const { return bytes_; }

  private:
    static constexpr std::size_t kCountAt = sizeof(uint32_t); // after the flags
    void put(uint32_t word);
    void patch(std::size_t at, std::size_t word);

    Bytes bytes_;
    uint32_t count_ = 0;
};

// What a feature made of one command: 0 when applied, and what it printed.
struct CommandOutcome {
    int32_t status = 0;
    std::string text;
};

// One part of a feature's running configuration: its first line is a
// top-level command, the lines after it belong to that command's submode.
// Blocks are printed by priority, lowest first.
struct ConfigBlock {
    uint32_t priority = 0;
    std::string text;
};

// A page of a feature's blocks; next is where the following page starts, or
// 0 after the last.
struct ConfigPage {
    uint32_t next = 0;
    std::vector<ConfigBlock> blocks;
};

std::optional<ExecuteBatch> decode_batch(std::span<const uint8_t> bytes);

Bytes encode_outcomes(std::span<const CommandOutcome> outcomes);
std::optional<std::vector<CommandOutcome>> decode_outcomes(std::span<const uint8_t> bytes);

Bytes encode_page_request(uint32_t start);
std::optional<uint32_t> decode_page_request(std::span<const uint8_t> bytes);

Bytes encode_page(const ConfigPage &page);
std::optional<ConfigPage> decode_page(std::span<const uint8_t> bytes);

} // namespace wex_shell

#endif
