// The default-interface request and the feature privilege: the whole
// exchange on the transport for success and each failure.
#include <wex/exec.h>

#include "common/alloc_hook.h"
#include "fakes/transport_test.h"
#include "if_index.h"
#include "support/bytes.h"
#include "support/syslog_recorder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

using namespace wex_fake;
using wex_test::Image;

namespace
{

intf_range_list list_of(std::initializer_list<intf_range> ranges)
{
    intf_range_list list{};
    for (const intf_range &range : ranges)
        list.ranges[list.count++] = range;
    return list;
}

intf_range fc(uint32_t slot, uint32_t first, uint32_t last)
{
    return {IF_INDEX_MAKE(1, slot, first), IF_INDEX_MAKE(1, slot, last)};
}

// The message: the two values, the count, then the indexes.
Bytes message_of(const std::vector<uint32_t> &indexes)
{
    Image message = Image(12 + 4 * indexes.size()).le(0, 0xA1).le(4, 0xB2).le(8, indexes.size());
    for (std::size_t i = 0; i < indexes.size(); ++i)
        message.le(12 + 4 * i, indexes[i]);
    return message;
}

Seen execute(const intf_range_list &list, const Script &script = {})
{
    return observe(script, [&] { return wex_execute_default_intf(9, 0xA1, 0xB2, list); });
}

const std::string kSend = "send q9 FE000000:76 op7694 len";

TEST(DefaultIntf, RangesAreExpandedInListOrderUpTo255)
{
    std::vector<uint32_t> full;
    for (uint32_t slot = 1; slot <= 4; ++slot)
        for (uint32_t port = 1; port <= (slot == 4 ? 63u : 64u); ++port)
            full.push_back(IF_INDEX_MAKE(1, slot, port));
    const uint32_t p1 = IF_INDEX_MAKE(1, 1, 1), p2 = p1 + 1, p3 = p1 + 2, p4 = p1 + 3;
    EXPECT_EQ(execute(list_of({})), (Seen{0, {kSend + "12 flags0"}, {message_of({})}}));
    EXPECT_EQ(execute(list_of({fc(1, 1, 3), fc(1, 2, 4)})),
              (Seen{0, {kSend + "36 flags0"}, {message_of({p1, p2, p3, p2, p3, p4})}}));
    const intf_range_list all = list_of({fc(1, 1, 64), fc(2, 1, 64), fc(3, 1, 64), fc(4, 1, 63)});
    EXPECT_EQ(execute(all), (Seen{0, {kSend + "1032 flags0"}, {message_of(full)}}));

    const intf_range_list too_many = list_of({fc(1, 1, 64), fc(2, 1, 64), fc(3, 1, 64), fc(4, 1, 64)});
    EXPECT_EQ(execute(too_many), (Seen{-1, {}, {}, "Error:Too many interfaces in the list (Max 256)\n"}));
    intf_range_list damaged = list_of({fc(1, 1, 1)});
    damaged.count = 66;
    EXPECT_EQ(execute(damaged), (Seen{-1, {}}));

    const intf_range_list one = list_of({fc(1, 1, 2)});
    const auto with_failing_allocation = [&](long nth) {
        return observe([&] {
            wex::alloc_hook::arm(nth);
            const int32_t result = wex_execute_default_intf(9, 0, 0, one);
            wex::alloc_hook::arm(0);
            return result;
        });
    };
    EXPECT_EQ(with_failing_allocation(1), (Seen{1, {}, {}, "error: allocating memory for range list\n"}));
    EXPECT_EQ(with_failing_allocation(2), (Seen{-1, {}}));

    wex_test::syslog_lines().clear();
    EXPECT_EQ(execute(one, {{"send", fails(ECONNREFUSED)}}),
              (Seen{-1, {kSend + "20 flags0"}, {message_of({p1, p2})}}));
    EXPECT_EQ(wex_test::syslog_lines(),
              (std::vector<wex_test::LogLine>{{2, "Could not communicate with ascii_cfg_server\n"}}));
}

TEST(DefaultIntf, PrivilegeIsTheFirstWordOfWexdsAnswer)
{
    const Lines exchange_lines = {"send_request q5 FE000000:37 op7673 type1 len8 \"\" \"\" +msg",
                                  "token",
                                  "drop",
                                  "recv q5 opts(v1 f0 t0 tok7001)",
                                  "parse_response",
                                  "drop"};
    const std::vector<Bytes> request = {Image(8).le(0, 6)};
    const auto privilege = [] { return wex_get_feature_privilege(5); };
    EXPECT_EQ(observe({{"parse_response", replies(Image(8).le(0, 0x1F).le(4, 7))}}, privilege),
              (Seen{0x1F, exchange_lines, request}));
    EXPECT_EQ(
        observe({{"recv", fails(ETIME)}}, privilege),
        (Seen{-1, Lines(exchange_lines.begin(), exchange_lines.begin() + 4), request, "Error on recv\n"}));
    EXPECT_EQ(
        observe({{"send_request", fails(EPIPE)}}, privilege),
        (Seen{-1, Lines(exchange_lines.begin(), exchange_lines.begin() + 3), request, "Error on recv\n"}));
    for (const Answer &bad : {fails(EBADMSG), replies({}), replies({1, 2, 3})})
        EXPECT_EQ(observe({{"parse_response", bad}}, privilege), (Seen{-1, exchange_lines, request}));
}

} // namespace
