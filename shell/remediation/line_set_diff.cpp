#include "line_set_diff.h"

#include "pairing.h"

#include <cstdio>

namespace wex_remediation
{
namespace
{

DiffEntry whole(char mark, const ConfigText &text, uint32_t i)
{
    DiffEntry entry{
        mark, mark == '-' ? text[i].number : 0, mark == '+' ? text[i].number : 0, text.text(i), {}};
    text.each_block(i + 1, text[i].end, [&](uint32_t j) { entry.children.push_back(whole(mark, text, j)); });
    return entry;
}

std::vector<DiffEntry> diff_blocks(const ConfigText &a, uint32_t a_first, uint32_t a_end, const ConfigText &b,
                                   uint32_t b_first, uint32_t b_end)
{
    const std::vector<uint32_t> as = a.block(a_first, a_end), bs = b.block(b_first, b_end);
    const auto count = [](const std::vector<uint32_t> &v) { return static_cast<uint32_t>(v.size()); };
    const std::vector<uint32_t> pairs = pair_in_order(
        count(as), [&](uint32_t k) { return a.text(as[k]); }, count(bs),
        [&](uint32_t k) { return b.text(bs[k]); });
    std::vector<DiffEntry> result;
    for (uint32_t k = 0; k < as.size(); ++k) {
        const uint32_t i = as[k];
        if (pairs[k] == kUnpaired) {
            result.push_back(whole('-', a, i));
            continue;
        }
        const uint32_t j = bs[pairs[k]];
        std::vector<DiffEntry> below = diff_blocks(a, i + 1, a[i].end, b, j + 1, b[j].end);
        if (!below.empty())
            result.push_back({' ', a[i].number, b[j].number, a.text(i), std::move(below)});
    }
    const std::vector<uint32_t> partners = partners_of_second(pairs, count(bs));
    for (uint32_t k = 0; k < bs.size(); ++k)
        if (partners[k] == kUnpaired)
            result.push_back(whole('+', b, bs[k]));
    return result;
}

void append_text(const std::vector<DiffEntry> &entries, std::string &out)
{
    for (const DiffEntry &e : entries) {
        out.append("    ").append(1, e.mark).append(e.text).append("\n");
        append_text(e.children, out);
    }
}

void append_json_string(std::string_view text, std::string &out)
{
    out += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out.append(1, '\\').append(1, c);
        } else if (byte < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
            out += escaped;
        } else {
            out += c;
        }
    }
    out += '"';
}

void append_json(const std::vector<DiffEntry> &entries, std::string &out)
{
    out += '[';
    for (std::size_t k = 0; k < entries.size(); ++k) {
        const DiffEntry &e = entries[k];
        out += k ? ",{\"mark\":" : "{\"mark\":";
        append_json_string(std::string_view(&e.mark, 1), out);
        out += ",\"first\":" + std::to_string(e.first) + ",\"second\":" + std::to_string(e.second) +
               ",\"text\":";
        append_json_string(e.text, out);
        out += ",\"children\":";
        append_json(e.children, out);
        out += '}';
    }
    out += ']';
}

} // namespace

std::vector<DiffEntry> line_set_diff(const ConfigText &first, const ConfigText &second)
{
    return diff_blocks(first, 0, first.size(), second, 0, second.size());
}

std::string diff_text(const std::vector<DiffEntry> &entries)
{
    std::string out;
    append_text(entries, out);
    return out;
}

std::string diff_json(const std::vector<DiffEntry> &entries)
{
    std::string out;
    append_json(entries, out);
    return out + "\n";
}

} // namespace wex_remediation
