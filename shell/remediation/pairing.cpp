#include "pairing.h"

#include <unordered_map>

namespace wex_remediation
{
namespace
{

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

std::vector<uint32_t> pair_by_table(uint32_t first_count, const KeyOf &first_key, uint32_t second_count,
                                    const KeyOf &second_key)
{
    // Each key's items of the second list chain from the first to the last.
    struct Chain {
        uint32_t head, tail;
    };
    std::unordered_map<std::string_view, Chain> chains;
    chains.reserve(second_count);
    std::vector<uint32_t> next(second_count, kUnpaired);
    for (uint32_t j = 0; j < second_count; ++j) {
        const std::string_view key = second_key(j);
        if (key.empty())
            continue;
        const auto [it, added] = chains.try_emplace(key, Chain{j, j});
        if (!added) {
            next[it->second.tail] = j;
            it->second.tail = j;
        }
    }
    std::vector<uint32_t> pairs(first_count, kUnpaired);
    for (uint32_t i = 0; i < first_count; ++i) {
        const auto found = chains.find(first_key(i));
        if (found == chains.end() || found->second.head == kUnpaired)
            continue;
        pairs[i] = found->second.head;
        found->second.head = next[found->second.head];
    }
    return pairs;
}

} // namespace

std::vector<uint32_t> pair_in_order(uint32_t first_count, const KeyOf &first_key, uint32_t second_count,
                                    const KeyOf &second_key)
{
    if (uint64_t{first_count} * second_count <= kScanLimit)
        return pair_by_scan(first_count, first_key, second_count, second_key);
    return pair_by_table(first_count, first_key, second_count, second_key);
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
