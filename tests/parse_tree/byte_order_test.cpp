#include <wex/parse_tree.h>

#include "image_builder.h"
#include "support/bytes.h"
#include "support/child_process.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

using wex_test::bytes_of;
using wex_test::Tree;

namespace
{

const char kDepthFatal[] = "Fatal error: Tree exceeded maximum depth \n";

// Big-endian bytes of a value.
std::vector<uint8_t> be(uint64_t v, int width)
{
    std::vector<uint8_t> out(width);
    for (int i = width - 1; i >= 0; --i, v >>= 8)
        out[i] = static_cast<uint8_t>(v);
    return out;
}

void fill_pattern(void *p, std::size_t n, uint8_t seed)
{
    auto *b = static_cast<uint8_t *>(p);
    for (std::size_t i = 0; i < n; ++i)
        b[i] = static_cast<uint8_t>(seed + i * 7);
}

// Every byte of a node record filled, then the fields that drive the walk set.
void fill_node(parse_tree_node &n, uint8_t seed, uint16_t params)
{
    fill_pattern(&n, sizeof n, seed);
    std::memset(n.childlist_mask, 0, sizeof n.childlist_mask);
    // Masks without bit 0, so that only the cases that ask for it widen.
    n.interface_mask = 0x1122334455667788ull;
    n.params[0].mask = 0xA0B0C0D0E0F00010ull;
    n.params[1].mask = 0x0000000100000000ull;
    n.param_count = params;
    n.child_count = 0;
}

struct Field {
    std::size_t offset;
    int width;
};

// The converted fields of a node record, by offset and width.
std::vector<Field> converted_fields(const parse_tree_node &host)
{
    std::vector<Field> f = {{332, 4}, {336, 4}, {340, 4}, {328, 2}, {330, 2},
                            {560, 2}, {564, 2}, {562, 2}, {566, 2}, {984, 8}};
    for (unsigned i = 0; i < host.child_count; ++i)
        f.push_back({568 + 2 * i, 2});
    for (unsigned i = 0; i < host.param_count; ++i) {
        const std::size_t d = 360 + 100 * i;
        for (std::size_t off : {0, 76, 80, 84, 88})
            f.push_back({d + off, 4});
        f.push_back({d + 4, 8});
        f.push_back({d + 92, 8});
    }
    return f;
}

// Checks a node converted to network order byte by byte against its host
// form: each converted field big-endian, every other byte untouched.
void expect_network_node(const parse_tree_node &host, const uint8_t *net)
{
    const auto *h = reinterpret_cast<const uint8_t *>(&host);
    std::set<std::size_t> converted;
    for (const Field &f : converted_fields(host)) {
        uint64_t value = 0;
        std::memcpy(&value, h + f.offset, f.width);
        EXPECT_EQ(bytes_of(net + f.offset, f.width), be(value, f.width)) << "offset " << f.offset;
        for (int i = 0; i < f.width; ++i)
            converted.insert(f.offset + i);
    }
    for (std::size_t i = 0; i < sizeof host; ++i) {
        if (!converted.count(i)) {
            EXPECT_EQ(net[i], h[i]) << "untouched byte " << i;
        }
    }
}

} // namespace

TEST(ParameterByteOrder, ConvertsEachWordAndWidensMaskBitZeroOnTheWayIn)
{
    param_descriptor p;
    fill_pattern(&p, sizeof p, 3);
    p.type = TYPE_INT;
    p.mask = 1;
    p.min = static_cast<uint32_t>(-5);
    p.max = 10;
    p.subtype = 3;
    p.extra32 = 0x11223344;
    p.extra64 = 0x0102030405060708ull;
    const param_descriptor host = p;

    hton_parameter(&p);
    std::vector<uint8_t> expected;
    for (const auto &piece : {be(0x40100001, 4), be(1, 8), bytes_of(host.help, 64), be(0xFFFFFFFB, 4),
                              be(10, 4), be(3, 4), be(0x11223344, 4), be(0x0102030405060708ull, 8)})
        expected.insert(expected.end(), piece.begin(), piece.end());
    EXPECT_EQ(bytes_of(p), expected);

    ntoh_parameter(&p);
    EXPECT_EQ(uint64_t(p.mask), 0xC0001ull);
    param_descriptor widened = host;
    widened.mask = 0xC0001;
    EXPECT_EQ(bytes_of(p), bytes_of(widened));

    p.mask = 1;
    hton_parameter(&p);
    EXPECT_EQ(uint64_t(p.mask), 0x0100000000000000ull) << "the way out never widens";
}

TEST(ImageByteOrder, ConvertsTheOrdinarySubtreeOnceAndNothingElse)
{
    // 0 -> 1 (ordinary), 0 -> 3 (link), 1 -> 2 (ordinary), 3 reached only by
    // the link, 4 a node with no children whose children bytes stay.
    Tree image(5);
    fill_node(image[0], 1, 2);
    fill_node(image[1], 2, 1);
    fill_node(image[2], 3, 0);
    fill_node(image[3], 4, 2);
    fill_node(image[4], 5, 0);
    image.add_child(0, 1);
    image.add_child(0, 3, true);
    image.add_child(1, 2);
    image.add_child(3, 4);
    image[1].interface_mask = 1;
    image[2].interface_mask = 0x8000000000000001ull;
    image[0].params[1].mask = 1;
    image[3].params[1].mask = 1;
    const Tree host = image;

    hton_array_tree(image.bytes(), 0, 0);
    for (int i : {0, 1, 2})
        expect_network_node(host.nodes[i], reinterpret_cast<uint8_t *>(&image[i]));
    for (int i : {3, 4})
        EXPECT_EQ(bytes_of(image[i]), bytes_of(host.nodes[i])) << "node " << i;

    ntoh_array_tree(image.bytes(), 0, 0);
    Tree widened = host;
    widened[1].interface_mask = 0xC0001;
    widened[2].interface_mask = 0x80000000000C0001ull;
    widened[0].params[1].mask = 0xC0001; // node 3 is reached only by a link: unchanged
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(bytes_of(image[i]), bytes_of(widened[i])) << "node " << i;

    hton_array_tree(image.bytes(), 3, 0);
    expect_network_node(widened.nodes[3], reinterpret_cast<uint8_t *>(&image[3]));
    expect_network_node(widened.nodes[4], reinterpret_cast<uint8_t *>(&image[4]));
}

TEST(ImageByteOrder, ThirtyOneLevelsConvertAndThirtyTwoEndTheProcess)
{
    Tree fits = wex_test::make_chain(31);
    const Tree host = fits;
    hton_array_tree(fits.bytes(), 0, 0);
    EXPECT_EQ(bytes_of(&fits[30].child_count, 2), be(0, 2));
    EXPECT_EQ(bytes_of(&fits[29].children[0], 2), be(30, 2));
    ntoh_array_tree(fits.bytes(), 0, 0);
    EXPECT_EQ(bytes_of(fits.bytes(), 31000), bytes_of(&host.nodes[0], 31000));

    Tree deep = wex_test::make_chain(32);
    const auto out = wex_test::run_in_child([&] { hton_array_tree(deep.bytes(), 0, 0); });
    EXPECT_EQ(out.exit_status, 255);
    EXPECT_EQ(out.err, kDepthFatal);
    EXPECT_EQ(out.out, "");

    hton_array_tree(deep.bytes(), 1, 0); // 31 levels below node 1
    deep[0].child_count = __builtin_bswap16(1);
    deep[0].children[0] = __builtin_bswap16(1);
    const auto in = wex_test::run_in_child([&] { ntoh_array_tree(deep.bytes(), 0, 0); });
    EXPECT_EQ(in.exit_status, 255);
    EXPECT_EQ(in.err, kDepthFatal);
}

TEST(ImageByteOrder, NullImageAndSubtreeHeader)
{
    hton_array_tree(nullptr, 0, 0);
    ntoh_array_tree(nullptr, 7, 40);
    uint32_t header[WEX_SUBTREE_HEADER_WORDS + 1] = {1, 2, 0x01020304, 0, 0xFFFFFFFF, 0x80, 0xA5A5A5A5};
    hton_subtree_header(header);
    const std::vector<uint8_t> expected = {0, 0, 0, 1,    0,    0,    0,    2,    1,    2,
                                           3, 4, 0, 0,    0,    0,    0xFF, 0xFF, 0xFF, 0xFF,
                                           0, 0, 0, 0x80, 0xA5, 0xA5, 0xA5, 0xA5};
    EXPECT_EQ(bytes_of(header), expected); // six words only
    ntoh_subtree_header(header);
    const uint32_t restored[] = {1, 2, 0x01020304, 0, 0xFFFFFFFF, 0x80, 0xA5A5A5A5};
    EXPECT_EQ(bytes_of(header), bytes_of(restored));
}
