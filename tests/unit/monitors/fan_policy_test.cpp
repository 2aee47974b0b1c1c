// SPDX-License-Identifier: GPL-2.0-or-later
// The fan policy: its borders, its ratchet, and days of it on the simulated board.
#include "diagd/monitors/fan/fan_policy.hpp"

#include "sim/boardsim/physics/thermal.hpp"

#include <gtest/gtest.h>

#include <cmath>

using diagd::automatic_fan_speed;
using diagd::decide_fans;

namespace {

constexpr int closed = 0;
constexpr int open = 1;
constexpr int automatic = 2;

static_assert(automatic_fan_speed(-400) == 0);
static_assert(automatic_fan_speed(500) == 0);
static_assert(automatic_fan_speed(501) == 1);
static_assert(automatic_fan_speed(650) == 1);
static_assert(automatic_fan_speed(651) == 2);

// The automatic mode with its memory.
struct Fans {
    int threshold = 350;
    int reference = 350;

    bool at(int temperature)
    {
        const auto [is_open, lifted] = decide_fans(automatic, temperature, threshold, reference);
        EXPECT_GE(lifted, reference) << "the reference only rises";
        reference = lifted;
        return is_open;
    }
};

} // namespace

TEST(FanPolicy, a_fixed_mode_heeds_no_temperature_and_keeps_the_reference)
{
    for (int temperature : {-400, 0, 271, 350, 400, 429, 1250}) {
        EXPECT_TRUE(decide_fans(open, temperature, 350, 350).open);
        EXPECT_FALSE(decide_fans(closed, temperature, 350, 350).open);
        EXPECT_EQ(decide_fans(open, temperature, 350, 350).reference, 350);
        EXPECT_EQ(decide_fans(closed, temperature, 350, 350).reference, 350);
    }
}

TEST(FanPolicy, any_other_mode_is_automatic)
{
    for (int mode : {-1, 3, 5, 7})
        for (int temperature : {270, 271, 350, 400}) {
            EXPECT_EQ(decide_fans(mode, temperature, 350, 350).open,
                      decide_fans(automatic, temperature, 350, 350).open);
            EXPECT_EQ(decide_fans(mode, temperature, 350, 350).reference,
                      decide_fans(automatic, temperature, 350, 350).reference);
        }
}

TEST(FanPolicy, fans_run_from_7_9_degrees_below_the_threshold_on_up_and_down_alike)
{
    Fans fans;
    EXPECT_FALSE(fans.at(270));
    EXPECT_TRUE(fans.at(271));
    EXPECT_TRUE(fans.at(350));
    EXPECT_TRUE(fans.at(271));
    EXPECT_FALSE(fans.at(270));
    EXPECT_EQ(fans.reference, 350);
}

TEST(FanPolicy, a_step_of_5_to_7_9_degrees_lifts_the_reference)
{
    for (auto [temperature, reference] :
         {std::pair{399, 350}, {400, 400}, {415, 415}, {429, 429}, {430, 350}, {600, 350}}) {
        Fans fans;
        EXPECT_TRUE(fans.at(temperature));
        EXPECT_EQ(fans.reference, reference) << temperature;
    }
}

TEST(FanPolicy, the_fans_of_a_board_that_was_hot_stop_and_start_at_a_higher_temperature)
{
    Fans fans;
    EXPECT_TRUE(fans.at(360));
    EXPECT_TRUE(fans.at(400));
    EXPECT_TRUE(fans.at(321));
    EXPECT_FALSE(fans.at(320)) << "they ran there before";
    EXPECT_TRUE(fans.at(321)) << "they start again below the threshold";
}

TEST(FanPolicy, the_ratchet_goes_on_step_by_step)
{
    Fans fans;
    for (int temperature = 350; temperature <= 700; temperature += 50)
        EXPECT_TRUE(fans.at(temperature));
    EXPECT_EQ(fans.reference, 700);
    EXPECT_TRUE(fans.at(621));
    EXPECT_TRUE(fans.at(350)) << "at the threshold they run whatever the reference is";
    EXPECT_FALSE(fans.at(349));
}

TEST(FanPolicy, below_the_threshold_nothing_lifts_the_reference)
{
    Fans fans{.threshold = 800, .reference = 350};
    for (int temperature = 300; temperature < 800; ++temperature)
        fans.at(temperature);
    EXPECT_EQ(fans.reference, 350);
}

// A pass every five seconds, a day of it, with a load that comes and goes.
TEST(FanPolicy, keeps_the_simulated_board_in_bounds_over_a_day)
{
    constexpr int passes = 24 * 3600 / 5;
    sim::Thermal board;
    Fans fans;
    bool is_open = false;
    int level = 0;
    int switched = 0;
    double hottest = 0, hottest_late = 0;
    for (int pass = 0; pass < passes; ++pass) {
        board.heat(20 + 15 * std::sin(pass * 2 * M_PI / passes));
        board.step(5, sim::airflow_of(is_open ? 1 : 0, static_cast<unsigned>(level)));
        const int temperature = static_cast<int>(board.celsius() * 10);
        level = automatic_fan_speed(temperature);
        const bool wanted = fans.at(temperature);
        switched += wanted != is_open;
        is_open = wanted;
        hottest = std::max(hottest, board.celsius());
        if (pass > passes / 2)
            hottest_late = std::max(hottest_late, board.celsius());
        ASSERT_EQ(wanted || temperature < fans.threshold, true) << "never closed at or above the threshold";
    }
    // Closed fans would have let it settle at 95 degrees.
    EXPECT_LT(hottest, 25 + 35 * 1.0 + 1);
    EXPECT_GT(hottest, 35.0);
    // In the second half the load is 20 W and less: closed fans would let it settle at 65 degrees.
    EXPECT_LT(hottest_late, 25 + 20 * 1.0 + 1);
    EXPECT_GT(hottest_late, 35.0);
    EXPECT_GE(switched, 2);
}

TEST(FanPolicy, a_faster_speed_holds_a_hot_board_cooler)
{
    sim::Thermal board{70}, slow{70};
    board.heat(60);
    slow.heat(60);
    for (int pass = 0; pass < 1440; ++pass) {
        const int level = automatic_fan_speed(static_cast<int>(board.celsius() * 10));
        board.step(5, sim::airflow_of(1, static_cast<unsigned>(level)));
        slow.step(5, sim::airflow_of(1, 0));
    }
    EXPECT_GT(slow.celsius(), 80);
    EXPECT_LT(board.celsius(), 70);
}
