// Pairing of two lists of lines by a text key: each item of the first list,
// in order, takes the first item of the second with the same key that is
// still free. Linear in the lists' size.
#ifndef WEX_REMEDIATION_PAIRING_H
#define WEX_REMEDIATION_PAIRING_H

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace wex_remediation
{

inline constexpr uint32_t kUnpaired = UINT32_MAX;

using KeyOf = std::function<std::string_view(uint32_t)>;

// For each position of the first list, the position of its partner in the
// second, or kUnpaired. Items whose key is empty are never paired.
std::vector<uint32_t> pair_in_order(uint32_t first_count, const KeyOf &first_key, uint32_t second_count,
                                    const KeyOf &second_key);

// The partners the other way round: for each position of the second list,
// its partner in the first, or kUnpaired.
std::vector<uint32_t> partners_of_second(const std::vector<uint32_t> &pairs, uint32_t second_count);

} // namespace wex_remediation

#endif
