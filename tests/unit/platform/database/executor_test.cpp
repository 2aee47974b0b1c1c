// SPDX-License-Identifier: GPL-2.0-or-later
// The thread that works for callers who do not wait for ever.
#include "platform/database/engine/executor.hpp"
#include "tq_errno.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <new>

using namespace std::chrono_literals;
using tq::db::Executor;

namespace {

constexpr auto soon = 500ms; // long enough for a thread to begin on a busy machine
constexpr auto in_time = 60s;

} // namespace

TEST(Executor, gives_the_result_of_the_work)
{
    Executor executor([] {}, in_time);
    ASSERT_EQ(executor.start(), TQ_OK);
    EXPECT_EQ(executor.run([] { return 7; }, in_time), 7);
    EXPECT_EQ(executor.run([]() -> int { throw std::bad_alloc(); }, in_time), TQ_ERR_NO_MEMORY);
    EXPECT_EQ(executor.run([]() -> int { throw 1; }, in_time), TQ_ERR);
}

TEST(Executor, looks_while_nobody_asks)
{
    std::promise<void> looked;
    std::atomic<int> looks = 0;
    Executor executor(
        [&] {
            if (++looks == 2)
                looked.set_value();
        },
        1ms);
    ASSERT_EQ(executor.start(), TQ_OK);
    EXPECT_EQ(looked.get_future().wait_for(in_time), std::future_status::ready);
}

TEST(Executor, work_learns_that_its_caller_has_given_up)
{
    std::promise<void> given_up;
    std::promise<bool> awaited;
    Executor executor([] {}, in_time);
    ASSERT_EQ(executor.start(), TQ_OK);
    EXPECT_EQ(executor.run(
                  [&] {
                      given_up.get_future().wait();
                      awaited.set_value(executor.is_awaited());
                      return 0;
                  },
                  soon),
              TQ_ERR_TIMEOUT);
    given_up.set_value();
    EXPECT_FALSE(awaited.get_future().get());
    EXPECT_EQ(executor.run([&] { return executor.is_awaited() ? 1 : 0; }, in_time), 1);
}

TEST(Executor, what_could_not_begin_in_time_is_not_done_later)
{
    std::promise<void> done;
    std::atomic<bool> is_late_work_done = false;
    Executor executor([] {}, in_time);
    ASSERT_EQ(executor.start(), TQ_OK);
    EXPECT_EQ(executor.run(
                  [&] {
                      done.get_future().wait();
                      return 0;
                  },
                  soon),
              TQ_ERR_TIMEOUT);
    EXPECT_EQ(executor.run(
                  [&] {
                      is_late_work_done = true;
                      return 0;
                  },
                  soon),
              TQ_ERR_NO_DB);
    done.set_value();
    EXPECT_EQ(executor.run([] { return 3; }, in_time), 3);
    EXPECT_FALSE(is_late_work_done);
}
