// SPDX-License-Identifier: GPL-2.0-or-later
// Order in which the board bracket takes and gives back what it needs, with the calls recorded.
#include "diagd/board/session.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/state.hpp"

#include "util_cpld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

using testing::ElementsAre;

namespace {
std::vector<std::string> calls;
int open_result;
int take_result;
int select_result;
} // namespace

extern "C" {
int semaphore_p(int id)
{
    calls.push_back("P " + std::to_string(id));
    return take_result;
}
int semaphore_v(int id)
{
    calls.push_back("V " + std::to_string(id));
    errno = EBADF; // what is given back may disturb errno
    return 0;
}
struct zebra_privs_t *_zprivs_raise(struct zebra_privs_t *privs, const char *reason)
{
    calls.push_back(std::string{"raise "} + reason);
    return privs;
}
void _zprivs_lower(struct zebra_privs_t **privs)
{
    calls.push_back("lower");
    *privs = nullptr;
    errno = EBADF;
}
int misc_cpld_i2c_open(int bus)
{
    calls.push_back("open " + std::to_string(bus));
    errno = ENXIO;
    return open_result;
}
int misc_cpld_i2c_close(int handle)
{
    calls.push_back("close " + std::to_string(handle));
    return 0;
}
int misc_cpld_channel_select(int handle, int channel)
{
    calls.push_back("select " + std::to_string(handle) + " " + std::to_string(channel));
    return select_result;
}
int misc_cpld_channel_select_end(int handle)
{
    calls.push_back("end " + std::to_string(handle));
    return 0;
}
int misc_cpld_i2c_read_byte(int, std::uint8_t, std::uint8_t *)
{
    return -1;
}
int board_mmap_read(int, void *)
{
    return -1;
}
}

class BoardBracketTest : public testing::Test {
protected:
    void SetUp() override
    {
        calls.clear();
        open_result = 9;
        take_result = 0;
        select_result = 0;
        diagm.sem_id = 5;
        diagm.cpld_i2c_bus = 1;
    }
};

TEST_F(BoardBracketTest, privileges_are_raised_only_around_the_open)
{
    {
        const diagd::BoardBracket board{"show_pon_led", diagd::OpenFailure::release_then_lower};
        ASSERT_TRUE(board);
        EXPECT_EQ(board.handle(), 9);
        calls.emplace_back("work");
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise show_pon_led", "open 1", "lower", "work", "close 9", "V 5"));
}

TEST_F(BoardBracketTest, an_open_that_fails_can_release_before_lowering)
{
    open_result = -1;
    {
        const diagd::BoardBracket board{"show_pon_led", diagd::OpenFailure::release_then_lower};
        EXPECT_FALSE(board);
        EXPECT_EQ(errno, ENXIO) << "the reason of the open survives";
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise show_pon_led", "open 1", "V 5", "lower"));
}

TEST_F(BoardBracketTest, an_open_that_fails_can_lower_before_releasing)
{
    open_result = -1;
    {
        const diagd::BoardBracket board{"transceiver", diagd::OpenFailure::lower_then_release};
        EXPECT_FALSE(board);
        EXPECT_EQ(errno, ENXIO);
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise transceiver", "open 1", "lower", "V 5"));
}

TEST_F(BoardBracketTest, a_semaphore_that_was_not_taken_is_not_given_back)
{
    take_result = -1;
    {
        const diagd::BoardBracket board{"x", diagd::OpenFailure::lower_then_release};
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise x", "open 1", "lower", "close 9"));
}

TEST_F(BoardBracketTest, a_channel_is_ended_before_the_board_is_closed)
{
    {
        const diagd::BoardBracket board{"x", diagd::OpenFailure::lower_then_release};
        const diagd::ChannelSelect channel{board, 11};
        EXPECT_TRUE(channel);
    }
    EXPECT_THAT(calls,
                ElementsAre("P 5", "raise x", "open 1", "lower", "select 9 11", "end 9", "close 9", "V 5"));
}

TEST_F(BoardBracketTest, a_channel_that_was_not_selected_is_not_ended)
{
    select_result = -1;
    {
        const diagd::BoardBracket board{"x", diagd::OpenFailure::lower_then_release};
        const diagd::ChannelSelect channel{board, 3};
        EXPECT_FALSE(channel);
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise x", "open 1", "lower", "select 9 3", "close 9", "V 5"));
}

TEST_F(BoardBracketTest, a_channel_is_ended_in_any_case_where_that_is_wanted)
{
    select_result = -1;
    {
        const diagd::BoardBracket board{"x", diagd::OpenFailure::lower_then_release};
        const diagd::ChannelSelect channel{board, 3, diagd::ChannelEnd::always};
        EXPECT_FALSE(channel);
    }
    EXPECT_THAT(calls,
                ElementsAre("P 5", "raise x", "open 1", "lower", "select 9 3", "end 9", "close 9", "V 5"));
}

TEST(State, all_monitors_are_switched_together)
{
    diagm.set_all_monitors(true);
    EXPECT_EQ(diagm.fan_monitor.load(), 1);
    EXPECT_EQ(diagm.usb_monitor.load(), 1);
    EXPECT_EQ(diagm.power_monitor.load(), 1);
    EXPECT_EQ(diagm.transceiver_monitor.load(), 1);
    diagm.set_all_monitors(false);
    EXPECT_EQ(diagm.fan_monitor.load() + diagm.usb_monitor.load() + diagm.power_monitor.load() +
                  diagm.transceiver_monitor.load(),
              0);
}
