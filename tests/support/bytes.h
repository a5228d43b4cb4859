// Expected record and message images, written out field by field from their
// documented offsets: Image(88).text(0, "zone").le(84, 3).
#ifndef WEX_TEST_BYTES_H
#define WEX_TEST_BYTES_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace wex_test
{

using Bytes = std::vector<uint8_t>;

struct Image {
    Bytes bytes;

    explicit Image(std::size_t size, uint8_t fill = 0) : bytes(size, fill) {}
    // A 32-bit value little-endian (the host order of the switch).
    Image &le(std::size_t offset, uint32_t value) { return put(offset, value, 0, 8); }
    // A 32-bit value big-endian (network order).
    Image &be(std::size_t offset, uint32_t value) { return put(offset, value, 24, -8); }
    Image &byte(std::size_t offset, uint8_t value)
    {
        bytes.at(offset) = value;
        return *this;
    }
    // The characters of text, without a terminator.
    Image &text(std::size_t offset, std::string_view text)
    {
        for (std::size_t i = 0; i < text.size(); ++i)
            bytes.at(offset + i) = static_cast<uint8_t>(text[i]);
        return *this;
    }
    operator Bytes() const { return bytes; }

  private:
    Image &put(std::size_t offset, uint32_t value, int shift, int step)
    {
        for (int i = 0; i < 4; ++i, shift += step)
            bytes.at(offset + i) = static_cast<uint8_t>(value >> shift);
        return *this;
    }
};

// The size bytes at data.
inline Bytes bytes_of(const void *data, std::size_t size)
{
    const auto *bytes = static_cast<const uint8_t *>(data);
    return Bytes(bytes, bytes + size);
}

// The bytes of a record, for comparing or scripting it.
template <typename Record> Bytes bytes_of(const Record &record)
{
    return bytes_of(&record, sizeof record);
}

} // namespace wex_test

#endif
