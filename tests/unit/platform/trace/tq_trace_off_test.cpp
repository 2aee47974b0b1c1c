// SPDX-License-Identifier: GPL-2.0-or-later
// Without TQ_TRACE and TQ_FAULTS a wrapped function is just called.
#include "platform/trace/tq_trace.hpp"

#include <gtest/gtest.h>

TEST(TraceOff, a_call_is_made_and_its_result_and_errno_come_back)
{
    ASSERT_FALSE(tq::trace_enabled);
    errno = 0;
    const int result = tq::traced(
        "op",
        [] {
            errno = EIO;
            return -7;
        },
        tq::arg("x", 1));
    EXPECT_EQ(result, -7);
    EXPECT_EQ(errno, EIO);
}

TEST(TraceOff, no_fault_is_ever_found)
{
    EXPECT_FALSE(tq::next_fault("op").fails);
}
