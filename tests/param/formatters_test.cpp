// Value formatters: each text worked out from the value, and each printer
// printing exactly the text of its _to_str twin.
#include <wex/param.h>

#include "if_index.h"
#include "support/alloc_failure.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <climits>
#include <cstdlib>
#include <functional>
#include <string>

using wex_test::capture_stdout;

namespace
{

std::string take(char *text)
{
    std::string copy = text ? text : "<null>";
    std::free(text);
    return copy;
}

wex_inet_addr_t inet(uint32_t family, std::initializer_list<uint8_t> bytes, int32_t prefix)
{
    wex_inet_addr_t address{};
    address.family = family;
    std::copy(bytes.begin(), bytes.end(), address.address);
    address.prefix_len = prefix;
    return address;
}

const wex_inet_addr_t kNet10 = inet(1, {10, 1, 2, 0}, 24);
const wex_inet_addr_t kZero = inet(2, {}, 0);
const wex_inet_addr_t kDoc = inet(2, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 128);
const wex_inet_addr_t kNet10AsSix = inet(2, {10, 1, 2, 0}, 24);

const uint32_t kFc13 = IF_INDEX_MAKE(1, 1, 3);
const uint32_t kPortChannel5 = IF_INDEX_MAKE(2, 0, 5);
const uint32_t kUnknownInterface = IF_INDEX_MAKE(99, 0, 1);

// Each formatter's text, and the same text printed by its printer.
struct Pair {
    std::function<char *()> to_str;
    std::function<void()> print;
    std::string text;
};

TEST(Formatters, EachPairGivesTheTextOfItsFormat)
{
    const uint8_t hex_bytes[] = {0xab, 0x01};
    const integer_range negative_range{0xFFFFFFFF, 0x80000000};
    const community comm{100, 200};
    const uint32_t ip = htonl(0x0A010203);
    type_net net{};
    net.head = 0x49;
    net.pairs[1] = 0x01;
    net.words[0] = 0x1921;
    net.words[1] = 0x6800;
    net.words[2] = 0x1001;
    const type_lid lid_max{{0xffff, 0xabcd, 0}, {99, 255}};
    // clang-format off
    const Pair pairs[] = {
        {[] { return print_integer_to_str(INT_MIN); }, [] { print_integer(INT_MIN); }, "-2147483648"},
        {[] { return print_intx_to_str(~0u); }, [] { print_intx(~0u); }, "0xffffffff"},
        {[] { return print_u_long_long_to_str(~0ull); }, [] { print_u_long_long(~0ull); }, "-1"},
        {[] { return print_u_long_long_to_str(1ull << 63); }, [] { print_u_long_long(1ull << 63); }, "-9223372036854775808"},
        {[&] { return print_integer_range_to_str(&negative_range); }, [&] { print_integer_range(&negative_range); }, "-1 - -2147483648"},
        {[&] { return print_community_to_str(&comm); }, [&] { print_community(&comm); }, "100:200"},
        {[&] { return print_hex_to_str(hex_bytes, 2); }, [&] { print_hex(hex_bytes, 2); }, "0xab01"},
        {[&] { return print_hex_to_str(hex_bytes, -4); }, [&] { print_hex(hex_bytes, -4); }, "0x"},
        {[&] { return print_ip_to_str(&ip); }, [&] { print_ip(&ip); }, "10.1.2.3"},
        {[] { return print_ipv4_to_str(&kNet10); }, [] { print_ipv4(&kNet10); }, "10.1.2.0"},
        {[] { return print_ipv6_to_str(&kDoc); }, [] { print_ipv6(&kDoc); }, "2001:db8::1"},
        {[] { return print_inet_addr_to_str(&kNet10AsSix); }, [] { print_inet_addr(&kNet10AsSix); }, "a01:200::"},
        {[] { return print_ipv4_prefix_to_str(&kNet10); }, [] { print_ipv4_prefix(&kNet10); }, "10.1.2.0/24"},
        {[] { return print_ipv6_prefix_to_str(&kDoc); }, [] { print_ipv6_prefix(&kDoc); }, "2001:db8::1/128"},
        {[] { return print_ipv6_prefix_to_str(&kZero); }, [] { print_ipv6_prefix(&kZero); }, "::/0"},
        {[] { return print_interface_to_str(&kPortChannel5); }, [] { print_interface(&kPortChannel5); }, "port-channel 5"},
        {[] { return print_interface_to_str(&kUnknownInterface); }, [] { print_interface(&kUnknownInterface); }, ""},
        {[&] { return print_type_net_to_str(&net); }, [&] { print_type_net(&net); }, "49.0001.0000.0000.0000.0000.0000.1921.6800.1001.00"},
        {[&] { return print_type_lid_to_str(&lid_max); }, [&] { print_type_lid(&lid_max); }, "ffff.abcd.0000.99-255"},
    };
    // clang-format on
    std::string made, printed, expected;
    for (const Pair &pair : pairs) {
        made += take(pair.to_str()) + "\n";
        printed += capture_stdout(pair.print) + "\n";
        expected += pair.text + "\n";
    }
    EXPECT_EQ(made, expected);
    EXPECT_EQ(printed, expected);
}

TEST(Formatters, InterfaceRangesJoinAtMost65EntriesAndHexIsWhole)
{
    intf_range_list list{};
    EXPECT_EQ(take(print_interface_range_to_str(&list)), "");
    list.count = 3;
    list.ranges[0] = {IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 4)};
    list.ranges[1] = {kPortChannel5, kPortChannel5};
    list.ranges[2] = {IF_INDEX_MAKE(1, 1, 5), IF_INDEX_MAKE(1, 2, 3)};
    EXPECT_EQ(capture_stdout([&] { print_interface_range(&list); }),
              "fc1/1-4 , port-channel 5 , fc1/5-fc2/3");
    // A count beyond the 65 entries the list holds reads no further.
    for (auto &range : list.ranges)
        range = {kFc13, kFc13};
    list.count = 0xFFFFFFFF;
    std::string all = "fc1/3";
    for (int i = 1; i < 65; ++i)
        all += " , fc1/3";
    EXPECT_EQ(take(print_interface_range_to_str(&list)), all);

    std::string expected = "0x";
    for (int i = 0; i < 3000; ++i)
        expected += "5a";
    EXPECT_EQ(take(print_hex_to_str(std::string(3000, '\x5a').data(), 3000)), expected);
}

TEST(Formatters, TextPrintersAndTheCopyOfAText)
{
    const guid id{0x12345678, 0x9abc, 0xdef0, {1, 2, 3, 4, 5, 6, 7, 8}};
    const integer_range range{0x10, 0x20};
    EXPECT_EQ(capture_stdout([&] {
                  print_string(nullptr);
                  print_string("a%s|");
                  print_user_at_host("admin@10.0.0.1|");
                  print_dns_name("sw.example|");
                  print_guid(&id);
                  print_hex_range(&range);
              }),
              "a%s|admin@10.0.0.1|sw.example|{12345678-9abc-def0-0102-030405060708}0x10 - 0x20\n");
    EXPECT_EQ(take(create_str("copy")), "copy");
    EXPECT_EQ(create_str(nullptr), nullptr);
}

TEST(Formatters, NothingIsPrintedWhenTheTextCannotBeMade)
{
    int failed = 0;
    // Only the last run, with no allocation failing, prints.
    const std::string printed = capture_stdout(
        [&] { failed = wex_test::for_each_allocation_failure([] { print_ipv6_prefix(&kDoc); }, [] {}); });
    EXPECT_EQ(failed, 2);
    EXPECT_EQ(printed, "2001:db8::1/128");
}

} // namespace
