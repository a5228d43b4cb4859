// Runs one operation over the recording transport and gathers everything it
// did, so that a test compares the whole exchange with one expectation:
//   EXPECT_EQ(observe([] { return wexd_cli_unlock(6, 1); }),
//             (Seen{0, {"req_resp q6 37 op940 ..."}, {payload}}));
#ifndef WEX_TEST_TRANSPORT_TEST_H
#define WEX_TEST_TRANSPORT_TEST_H

#include "fakes/transport_fake.h"

#include <functional>
#include <ostream>

namespace wex_fake
{

struct Seen {
    int32_t result;
    Lines lines;                      // every transport call
    std::vector<Bytes> payloads = {}; // what they carried
    std::string out = "";             // standard output
    std::string err = "";             // standard error
    bool operator==(const Seen &) const = default;
};

std::ostream &operator<<(std::ostream &os, const Seen &seen);

using Script = std::vector<std::pair<std::string, Answer>>;

// Resets the transport, scripts its answers, runs call with its output
// captured, and checks that every message handed out was dropped.
Seen observe(const Script &script, const std::function<int32_t()> &call);
inline Seen observe(const std::function<int32_t()> &call)
{
    return observe({}, call);
}

} // namespace wex_fake

#endif
