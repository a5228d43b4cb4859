#include "feature_protocol.h"

#include <cstring>

namespace wex_shell
{
namespace
{

class Writer
{
  public:
    void word(uint32_t value)
    {
        const std::size_t at = bytes_.size();
        bytes_.resize(at + sizeof value);
        std::memcpy(bytes_.data() + at, &value, sizeof value);
    }
    // A length, then the bytes.
    void blob(std::span<const uint8_t> bytes)
    {
        word(static_cast<uint32_t>(bytes.size()));
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    }
    void text(std::string_view text) { blob({reinterpret_cast<const uint8_t *>(text.data()), text.size()}); }
    Bytes take() { return std::move(bytes_); }

  private:
    Bytes bytes_;
};

class Reader
{
  public:
    explicit Reader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    bool word(uint32_t &value)
    {
        if (bytes_.size() - at_ < sizeof value)
            return false;
        std::memcpy(&value, bytes_.data() + at_, sizeof value);
        at_ += sizeof value;
        return true;
    }
    bool blob(std::span<const uint8_t> &out)
    {
        uint32_t size = 0;
        if (!word(size) || size > bytes_.size() - at_)
            return false;
        out = bytes_.subspan(at_, size);
        at_ += size;
        return true;
    }
    bool text(std::string &out)
    {
        std::span<const uint8_t> bytes;
        if (!blob(bytes))
            return false;
        out.assign(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        return true;
    }
    // A count of items of at least min_item bytes each: never more than the
    // bytes left could hold, so a forged count reserves nothing.
    bool count(uint32_t &value, std::size_t min_item)
    {
        return word(value) && value <= (bytes_.size() - at_) / min_item;
    }
    bool finished() const { return at_ == bytes_.size(); }

  private:
    std::span<const uint8_t> bytes_;
    std::size_t at_ = 0;
};

} // namespace

void BatchWriter::start(uint32_t flags)
{
    bytes_.clear();
    count_ = 0;
    put(flags);
    put(0);
}

void BatchWriter::put(uint32_t word)
{
    const std::size_t at = bytes_.size();
    bytes_.resize(at + sizeof word);
    patch(at, word);
}

void BatchWriter::patch(std::size_t at, std::size_t word)
{
    const auto value = static_cast<uint32_t>(word);
    std::memcpy(bytes_.data() + at, &value, sizeof value);
}

std::optional<ExecuteBatch> decode_batch(std::span<const uint8_t> bytes)
{
    Reader in(bytes);
    ExecuteBatch batch;
    uint32_t count = 0;
    if (!in.word(batch.flags) || !in.count(count, 4))
        return std::nullopt;
    batch.records.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        std::span<const uint8_t> record;
        if (!in.blob(record))
            return std::nullopt;
        batch.records.push_back(record);
    }
    return in.finished() ? std::optional(std::move(batch)) : std::nullopt;
}

Bytes encode_outcomes(std::span<const CommandOutcome> outcomes)
{
    Writer out;
    out.word(static_cast<uint32_t>(outcomes.size()));
    for (const CommandOutcome &outcome : outcomes) {
        out.word(static_cast<uint32_t>(outcome.status));
        out.text(outcome.text);
    }
    return out.take();
}

std::optional<std::vector<CommandOutcome>> decode_outcomes(std::span<const uint8_t> bytes)
{
    Reader in(bytes);
    uint32_t count = 0;
    if (!in.count(count, 8))
        return std::nullopt;
    std::vector<CommandOutcome> outcomes(count);
    for (CommandOutcome &outcome : outcomes) {
        uint32_t status = 0;
        if (!in.word(status) || !in.text(outcome.text))
            return std::nullopt;
        outcome.status = static_cast<int32_t>(status);
    }
    return in.finished() ? std::optional(std::move(outcomes)) : std::nullopt;
}

Bytes encode_page_request(uint32_t start)
{
    Writer out;
    out.word(start);
    return out.take();
}

std::optional<uint32_t> decode_page_request(std::span<const uint8_t> bytes)
{
    Reader in(bytes);
    uint32_t start = 0;
    return in.word(start) && in.finished() ? std::optional(start) : std::nullopt;
}

Bytes encode_page(const ConfigPage &page)
{
    Writer out;
    out.word(page.next);
    out.word(static_cast<uint32_t>(page.blocks.size()));
    for (const ConfigBlock &block : page.blocks) {
        out.word(block.priority);
        out.text(block.text);
    }
    return out.take();
}

std::optional<ConfigPage> decode_page(std::span<const uint8_t> bytes)
{
    Reader in(bytes);
    ConfigPage page;
    uint32_t count = 0;
    if (!in.word(page.next) || !in.count(count, 8))
        return std::nullopt;
    page.blocks.resize(count);
    for (ConfigBlock &block : page.blocks) {
        if (!in.word(block.priority) || !in.text(block.text))
            return std::nullopt;
    }
    return in.finished() ? std::optional(std::move(page)) : std::nullopt;
}

} // namespace wex_shell
