// Permitted-VSAN (and VLAN) masks: 4096 bits, most significant bit first.
#include <wex/output.h>
#include <wex/param.h>

#include <bit>
#include <charconv>
#include <cstring>

namespace
{

constexpr int kWords = WEX_VSAN_MASK_BYTES / 4;
// A run costs at most 5 characters per id (",dddd" or ",dddd-dddd"), so
// every list fits; the longest single piece is kept free as a margin.
constexpr std::size_t kMaxPiece = sizeof(",4094-4095");
constexpr std::size_t kMaxListText = (WEX_VSAN_MAX_ID + 1) * 5 + kMaxPiece;

// The bits of ids 32w to 32w + 31, id 32w in the top bit.
uint32_t mask_word(const vsan_mask *mask, int w) noexcept
{
    const uint8_t *b = mask->bits + 4 * w;
    return uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3];
}

bool id_in_mask(const vsan_mask *mask, uint32_t id) noexcept
{
    // An id beyond the mask is not permitted rather than read past the bits.
    return id <= WEX_VSAN_MAX_ID && (mask->bits[id / 8] & (0x80u >> (id % 8))) != 0;
}

int restricted(const vsan_mask *mask) noexcept
{
    for (int w = 0; w < kWords; ++w) {
        if (mask_word(mask, w) != 0xFFFFFFFFu)
            return 1;
    }
    return 0;
}

// Collects the permitted ids as runs: "1-5,7,10-11".
class RunList
{
  public:
    void add(int id) noexcept
    {
        if (has_run_ && id == last_ + 1) {
            last_ = id;
            return;
        }
        flush();
        start_ = last_ = id;
        has_run_ = true;
    }
    // The whole list; empty when no id was added.
    const char *finish() noexcept
    {
        flush();
        return text_;
    }

  private:
    void flush() noexcept
    {
        if (!has_run_)
            return;
        has_run_ = false;
        char piece[kMaxPiece];
        char *end = piece;
        if (length_ > 0)
            *end++ = ',';
        end = std::to_chars(end, piece + sizeof piece, start_).ptr;
        if (last_ != start_) {
            *end++ = '-';
            end = std::to_chars(end, piece + sizeof piece, last_).ptr;
        }
        const auto size = static_cast<std::size_t>(end - piece);
        if (size >= sizeof text_ - length_)
            return;
        std::memcpy(text_ + length_, piece, size);
        length_ += size;
        text_[length_] = '\0';
    }

    char text_[kMaxListText] = "";
    std::size_t length_ = 0;
    bool has_run_ = false;
    int start_ = 0;
    int last_ = 0;
};

} // namespace

extern "C" {

WEX_API void wex_print_vsan_mask(const vsan_mask *mask) noexcept
{
    wex_buf_printf("Permitted vsans: ");
    RunList runs;
    bool any = false;
    for (int w = 0; w < kWords; ++w) {
        for (uint32_t word = mask_word(mask, w); word != 0;) {
            const int lead = std::countl_zero(word);
            runs.add(32 * w + lead);
            word &= ~(0x80000000u >> lead);
            any = true;
        }
    }
    if (!any) {
        wex_buf_printf("none");
        wex_buf_printf("\n");
        return;
    }
    wex_buf_printf("%s", runs.finish());
    wex_buf_printf("\n");
}

WEX_API int wex_is_vsan_allowed(const vsan_mask *mask, int vsan_id) noexcept
{
    return vsan_id >= 0 && id_in_mask(mask, static_cast<uint32_t>(vsan_id)) ? 1 : 0;
}

WEX_API int wex_is_vsan_range_allowed(const vsan_mask *mask, const integer_range *range) noexcept
{
    for (uint64_t id = range->low; id <= range->high; ++id) {
        if (!id_in_mask(mask, static_cast<uint32_t>(id)))
            return 0;
    }
    return 1;
}

WEX_API int wex_is_user_vsan_restricted(const vsan_mask *mask) noexcept
{
    return restricted(mask);
}

WEX_API int wex_is_user_vlan_restricted(const vlan_mask *mask) noexcept
{
    return restricted(mask);
}

} // extern "C"
