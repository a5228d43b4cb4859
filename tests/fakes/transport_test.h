// The fixture of tests that run over the recording transport: each test
// starts with no call, script or log line recorded, and ends with every
// message it was handed released.
#ifndef WEX_TEST_TRANSPORT_TEST_H
#define WEX_TEST_TRANSPORT_TEST_H

#include "fakes/transport_fake.h"
#include "support/syslog_recorder.h"

#include <gtest/gtest.h>

namespace wex_fake
{

class TransportTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        transport().reset();
        wex_test::syslog_lines().clear();
    }
    void TearDown() override { EXPECT_EQ(transport().live_messages(), 0); }
};

} // namespace wex_fake

#endif
