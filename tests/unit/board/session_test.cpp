// SPDX-License-Identifier: GPL-2.0-or-later
// Order in which a session with the board takes and gives back what it needs, with the calls recorded.
#include "diagd/board/cage.hpp"
#include "diagd/board/registers.hpp"
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
    calls.emplace_back("lower");
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
int misc_cpld_i2c_set_byte(int handle, std::uint8_t reg, std::uint8_t value)
{
    calls.push_back("write " + std::to_string(handle) + " " + std::to_string(reg) + "=" +
                    std::to_string(value));
    return -1;
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

class BoardSessionTest : public testing::Test {
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

TEST_F(BoardSessionTest, privileges_are_raised_only_around_the_open)
{
    {
        const diagd::BoardSession board{"show_pon_led", diagd::SessionPolicy::release_then_lower};
        ASSERT_TRUE(board);
        EXPECT_EQ(board.handle(), 9);
        calls.emplace_back("work");
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise show_pon_led", "open 1", "lower", "work", "close 9", "V 5"));
}

TEST_F(BoardSessionTest, an_open_that_fails_can_release_before_lowering)
{
    open_result = -1;
    {
        const diagd::BoardSession board{"show_pon_led", diagd::SessionPolicy::release_then_lower};
        EXPECT_FALSE(board);
        EXPECT_EQ(errno, ENXIO) << "the reason of the open survives";
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise show_pon_led", "open 1", "V 5", "lower"));
}

TEST_F(BoardSessionTest, an_open_that_fails_can_lower_before_releasing)
{
    open_result = -1;
    {
        const diagd::BoardSession board{"transceiver", diagd::SessionPolicy::lower_then_release};
        EXPECT_FALSE(board);
        EXPECT_EQ(errno, ENXIO);
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise transceiver", "open 1", "lower", "V 5"));
}

TEST_F(BoardSessionTest, a_semaphore_that_was_not_taken_is_not_given_back)
{
    take_result = -1;
    {
        const diagd::BoardSession board{"x", diagd::SessionPolicy::lower_then_release};
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise x", "open 1", "lower", "close 9"));
}

TEST_F(BoardSessionTest, a_lock_free_session_leaves_the_semaphore_alone)
{
    {
        const diagd::BoardSession board{"cpld_init", diagd::SessionPolicy::lock_free};
        ASSERT_TRUE(board);
        calls.emplace_back("work");
    }
    EXPECT_THAT(calls, ElementsAre("raise cpld_init", "open 1", "lower", "work", "close 9"));
    calls.clear();
    open_result = -1;
    EXPECT_FALSE((diagd::BoardSession{"cpld_init", diagd::SessionPolicy::lock_free}));
    EXPECT_THAT(calls, ElementsAre("raise cpld_init", "open 1", "lower"));
}

TEST_F(BoardSessionTest, a_handle_for_life_stays_open_and_nobody_holds_the_board)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(diagd::open_board_for_life("usb_monitor"), 9);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(calls, ElementsAre("raise usb_monitor", "open 1", "lower"));
}

TEST_F(BoardSessionTest, a_handle_for_life_that_there_is_not_is_told_with_its_reason)
{
    open_result = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(diagd::open_board_for_life("power_monitor"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "open fan failed: No such device or address\r\n");
}

TEST_F(BoardSessionTest, a_register_is_written_with_the_board_held_or_by_whoever_holds_it)
{
    diagd::lock_and_write_register(9, diagd::CpldRegister::usb_led, 1);
    diagd::write_register(9, diagd::CpldRegister::system_led, 2);
    EXPECT_THAT(calls, ElementsAre("P 5", "write 9 6=1", "V 5", "write 9 13=2"));
}

TEST_F(BoardSessionTest, a_channel_is_ended_before_the_board_is_closed)
{
    {
        const diagd::BoardSession board{"x", diagd::SessionPolicy::lower_then_release};
        const diagd::ChannelSelect channel{board, 11};
        EXPECT_TRUE(channel);
    }
    EXPECT_THAT(calls,
                ElementsAre("P 5", "raise x", "open 1", "lower", "select 9 11", "end 9", "close 9", "V 5"));
}

TEST_F(BoardSessionTest, a_channel_that_was_not_selected_is_not_ended)
{
    select_result = -1;
    {
        const diagd::BoardSession board{"x", diagd::SessionPolicy::lower_then_release};
        const diagd::ChannelSelect channel{board, 3};
        EXPECT_FALSE(channel);
    }
    EXPECT_THAT(calls, ElementsAre("P 5", "raise x", "open 1", "lower", "select 9 3", "close 9", "V 5"));
}

TEST_F(BoardSessionTest, a_channel_is_ended_in_any_case_where_that_is_wanted)
{
    select_result = -1;
    {
        const diagd::BoardSession board{"x", diagd::SessionPolicy::lower_then_release};
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
