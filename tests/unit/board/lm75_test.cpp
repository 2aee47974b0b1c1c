// SPDX-License-Identifier: GPL-2.0-or-later
// The board's temperature sensor on a recorded bus.
#include "diagd/board/lm75.hpp"

#include "util_i2c.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

using testing::ElementsAre;

namespace {

int next_handle;
int failures; // reads that fail before one succeeds
std::array<std::uint8_t, 2> reg;
std::vector<std::string> calls;

constexpr int tenths_of(std::uint8_t high, std::uint8_t low)
{
    const std::array<std::uint8_t, 2> bytes{high, low};
    return diagd::lm75_tenths_c(bytes);
}

} // namespace

extern "C" {

int misc_i2c_device_init(int bus)
{
    calls.push_back("open bus " + std::to_string(bus));
    return next_handle;
}

int misc_i2c_read(int handle, std::uint8_t addr7, std::uint8_t at, std::uint8_t *buf, int len, int zero)
{
    calls.push_back("read " + std::to_string(handle) + " device " + std::to_string(addr7) + " register " +
                    std::to_string(at) + " length " + std::to_string(len) + " " + std::to_string(zero));
    if (failures > 0) {
        --failures;
        return -1;
    }
    buf[0] = reg[0];
    buf[1] = reg[1];
    return 0;
}

// std::this_thread::sleep_for ends up here.
int nanosleep(const struct timespec *time, struct timespec *)
{
    calls.push_back("pause " + std::to_string(time->tv_sec) + " s " + std::to_string(time->tv_nsec) + " ns");
    return 0;
}
int clock_nanosleep(clockid_t, int, const struct timespec *time, struct timespec *remaining)
{
    return nanosleep(time, remaining);
}
}

class Lm75 : public testing::Test {
protected:
    void SetUp() override
    {
        next_handle = 30;
        failures = 0;
        reg = {0x19, 0x00};
        EXPECT_TRUE(diagd::open_board_sensor());
        EXPECT_THAT(calls, testing::Contains("open bus 2"));
        calls.clear();
    }

    static constexpr const char *read = "read 30 device 72 register 0 length 2 0";
    static constexpr const char *pause = "pause 1 s 0 ns";
};

static_assert(tenths_of(0x19, 0x00) == 250);
static_assert(tenths_of(0x00, 0x00) == 0);
static_assert(tenths_of(0xFF, 0x80) == -5);
static_assert(tenths_of(0xE7, 0x00) == -250);
static_assert(tenths_of(0x7F, 0xFF) == 1279);
static_assert(tenths_of(0x80, 0x00) == -1280);
static_assert(tenths_of(0x00, 0x19) == 0); // 0.0977 degrees, cut towards zero from above
static_assert(tenths_of(0xFF, 0xE7) == 0); // and from below

TEST_F(Lm75, a_sensor_that_never_answered_reads_warmer_than_it_can_measure)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // in a process in which no other test has read
    EXPECT_EXIT(
        {
            failures = 3;
            std::exit(lm75_temperature_get() == 1270 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(Lm75, one_read_gives_tenths_of_a_degree)
{
    EXPECT_EQ(lm75_temperature_get(), 250);
    EXPECT_THAT(calls, ElementsAre(read));
}

TEST_F(Lm75, a_failed_read_is_tried_again_after_a_second)
{
    failures = 2;
    EXPECT_EQ(lm75_temperature_get(), 250);
    EXPECT_THAT(calls, ElementsAre(read, pause, read, pause, read));
}

TEST_F(Lm75, after_three_failures_the_last_good_reading_stands)
{
    reg = {0x23, 0x80};
    EXPECT_EQ(lm75_temperature_get(), 355);
    calls.clear();
    reg = {0x19, 0x00};
    failures = 3;
    EXPECT_EQ(lm75_temperature_get(), 355);
    EXPECT_THAT(calls, ElementsAre(read, pause, read, pause, read, pause));
}

TEST_F(Lm75, a_bus_that_cannot_be_opened_is_reported)
{
    next_handle = -1;
    EXPECT_FALSE(diagd::open_board_sensor());
}
