#include "fakes/transport_test.h"

#include "support/capture.h"

#include <gtest/gtest.h>

#include <iomanip>

namespace wex_fake
{

std::ostream &operator<<(std::ostream &os, const Seen &seen)
{
    os << "result " << seen.result << "\n";
    for (const std::string &line : seen.lines)
        os << "  " << line << "\n";
    for (const Bytes &payload : seen.payloads) {
        os << "  payload";
        for (uint8_t byte : payload)
            os << ' ' << std::hex << std::setw(2) << std::setfill('0') << int(byte) << std::dec;
        os << "\n";
    }
    return os << "  out \"" << seen.out << "\"\n  err \"" << seen.err << "\"";
}

Seen observe(const Script &script, const std::function<int32_t()> &call)
{
    transport().reset();
    for (const auto &[function, answer] : script)
        transport().script(function, answer);
    int32_t result = 0;
    const auto output = wex_test::capture_output([&] { result = call(); });
    EXPECT_EQ(transport().live_messages(), 0) << "a message was not dropped";
    return Seen{result, transport().lines(), transport().payloads(), output.out, output.err};
}

} // namespace wex_fake
