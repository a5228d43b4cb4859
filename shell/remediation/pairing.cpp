#include "pairing.h"

namespace wex_remediation
{
namespace
{

// A slot whose key's items are all paired: still taken, so that probing
// goes past it.
constexpr uint32_t kExhausted = UINT32_MAX - 1;

// Below this many comparisons a plain scan beats building a table.
constexpr uint64_t kScanLimit = 64;

std::vector<uint32_t> pair_by_scan(uint32_t first_count, const KeyOf &first_key, uint32_t second_count,
                                   const KeyOf &second_key)
{
    std::vector<uint32_t> pairs(first_count, kUnpaired);
    std::vector<bool> taken(second_count, false);
    for (uint32_t i = 0; i < first_count; ++i) {
        const std::string_view key = first_key(i);
        for (uint32_t j = 0; j < second_count && !key.empty(); ++j) {
            if (!taken[j] && second_key(j) == key) {
                taken[j] = true;
                pairs[i] = j;
                break;
            }
        }
    }
    return pairs;
}

// An open-addressed table of the second list's keys, each slot holding the
// first free item of its key and a fingerprint of the key, so that a probe
// reads a key's text only when the fingerprints agree; the items of one
// key are chained in order. No allocation per item.
std::vector<uint32_t> pair_by_table(uint32_t first_count, const KeyOf &first_key, uint32_t second_count,
                                    const KeyOf &second_key)
{
    struct Slot {
        uint32_t head = kUnpaired, tail = kUnpaired, fingerprint = 0;
    };
    std::size_t size = 16;
    while (size < 2 * std::size_t{second_count})
        size *= 2;
    const std::size_t mask = size - 1;
    std::vector<Slot> slots(size);
    std::vector<uint32_t> next(second_count, kUnpaired);
    const std::hash<std::string_view> hash;
    // The slot of key: its own, or the empty one where it would go.
    const auto slot_of = [&](std::string_view key) -> Slot & {
        const std::size_t h = hash(key);
        const auto fingerprint = static_cast<uint32_t>(uint64_t{h} >> 32 ^ h);
        for (std::size_t at = h & mask;; at = (at + 1) & mask) {
            Slot &slot = slots[at];
            if (slot.head == kUnpaired) {
                slot.fingerprint = fingerprint;
                return slot;
            }
            if (slot.fingerprint == fingerprint && second_key(slot.tail) == key)
                return slot;
        }
    };
    for (uint32_t j = 0; j < second_count; ++j) {
        const std::string_view key = second_key(j);
        if (key.empty())
            continue;
        Slot &slot = slot_of(key);
        if (slot.head == kUnpaired)
            slot.head = j;
        else
            next[slot.tail] = j;
        slot.tail = j;
    }
    std::vector<uint32_t> pairs(first_count, kUnpaired);
    for (uint32_t i = 0; i < first_count; ++i) {
        const std::string_view key = first_key(i);
        if (key.empty())
            continue;
        Slot &slot = slot_of(key);
        if (slot.head == kUnpaired || slot.head == kExhausted)
            continue;
        pairs[i] = slot.head;
        slot.head = next[slot.head] == kUnpaired ? kExhausted : next[slot.head];
    }
    return pairs;
}

} // namespace

std::vector<uint32_t> pair_in_order(uint32_t first_count, const KeyOf &first_key, uint32_t second_count,
                                    const KeyOf &second_key)
{
    // Two configurations of one switch mostly list their lines in one
    // order: while they agree, each line pairs with the other's line at the
    // same place, every earlier one being paired already.
    uint32_t same = 0;
    while (same < first_count && same < second_count && !first_key(same).empty() &&
           first_key(same) == second_key(same))
        ++same;
    const KeyOf first_rest = [&](uint32_t i) { return first_key(same + i); };
    const KeyOf second_rest = [&](uint32_t j) { return second_key(same + j); };
    const uint32_t first_left = first_count - same, second_left = second_count - same;
    std::vector<uint32_t> rest = uint64_t{first_left} * second_left <= kScanLimit
                                     ? pair_by_scan(first_left, first_rest, second_left, second_rest)
                                     : pair_by_table(first_left, first_rest, second_left, second_rest);
    std::vector<uint32_t> pairs(first_count);
    for (uint32_t i = 0; i < same; ++i)
        pairs[i] = i;
    for (uint32_t i = 0; i < first_left; ++i)
        pairs[same + i] = rest[i] == kUnpaired ? kUnpaired : same + rest[i];
    return pairs;
}

std::vector<uint32_t> partners_of_second(const std::vector<uint32_t> &pairs, uint32_t second_count)
{
    std::vector<uint32_t> partners(second_count, kUnpaired);
    for (uint32_t i = 0; i < pairs.size(); ++i)
        if (pairs[i] != kUnpaired)
            partners[pairs[i]] = i;
    return partners;
}

} // namespace wex_remediation
