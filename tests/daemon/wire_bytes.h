// Expected message bytes, written out field by field.
#ifndef WEX_TEST_DAEMON_WIRE_BYTES_H
#define WEX_TEST_DAEMON_WIRE_BYTES_H

#include "fakes/transport_fake.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace wex_test
{

// size zero bytes.
inline wex_fake::Bytes zeros(std::size_t size)
{
    return wex_fake::Bytes(size, 0);
}

// Stores value little-endian at offset.
inline void put_u32(wex_fake::Bytes &bytes, std::size_t offset, uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<uint8_t>(value >> (8 * i));
}

// Stores value big-endian at offset.
inline void put_be32(wex_fake::Bytes &bytes, std::size_t offset, uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<uint8_t>(value >> (24 - 8 * i));
}

// Stores the characters of text (no terminator) at offset.
inline void put_text(wex_fake::Bytes &bytes, std::size_t offset, std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i)
        bytes.at(offset + i) = static_cast<uint8_t>(text[i]);
}

// Little-endian words followed by zeros up to size bytes.
inline wex_fake::Bytes words_then_zeros(std::initializer_list<uint32_t> words, std::size_t size)
{
    wex_fake::Bytes bytes = zeros(size);
    std::size_t at = 0;
    for (uint32_t word : words) {
        put_u32(bytes, at, word);
        at += 4;
    }
    return bytes;
}

// The bytes of a record, for scripting replies.
template <typename Record> wex_fake::Bytes bytes_of_record(const Record &record)
{
    wex_fake::Bytes bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

} // namespace wex_test

#endif
