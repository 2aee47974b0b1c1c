// SPDX-License-Identifier: GPL-2.0-or-later
// Warmth of the simulated board.
#include "sim/boardsim/physics/thermal.hpp"

#include <gtest/gtest.h>

using sim::Airflow;
using sim::Thermal;

namespace {

double settled(double watts, Airflow airflow)
{
    Thermal board;
    board.heat(watts);
    for (int minute = 0; minute < 60; ++minute)
        board.step(60, airflow);
    return board.celsius();
}

} // namespace

TEST(Thermal, a_board_that_nothing_heats_has_the_temperature_of_the_air)
{
    EXPECT_DOUBLE_EQ(settled(0, Airflow::none), Thermal::ambient_celsius);
    EXPECT_DOUBLE_EQ(settled(0, Airflow::high), Thermal::ambient_celsius);
}

TEST(Thermal, a_heater_warms_it_and_the_faster_the_fans_the_less)
{
    EXPECT_GT(settled(30, Airflow::none), settled(30, Airflow::low));
    EXPECT_GT(settled(30, Airflow::low), settled(30, Airflow::medium));
    EXPECT_GT(settled(30, Airflow::medium), settled(30, Airflow::high));
    EXPECT_GT(settled(30, Airflow::high), Thermal::ambient_celsius);
}

TEST(Thermal, many_short_steps_are_one_long_step)
{
    Thermal fine, coarse;
    fine.heat(20);
    coarse.heat(20);
    for (int i = 0; i < 600; ++i)
        fine.step(0.1, Airflow::low);
    coarse.step(60, Airflow::low);
    EXPECT_NEAR(fine.celsius(), coarse.celsius(), 1e-9);
}

TEST(Thermal, fans_without_power_move_no_air_at_any_speed)
{
    for (unsigned speed : {0U, 1U, 2U, 5U, 255U})
        EXPECT_EQ(sim::airflow_of(0, speed), Airflow::none);
    EXPECT_EQ(sim::airflow_of(1, 0), Airflow::low);
    EXPECT_EQ(sim::airflow_of(1, 1), Airflow::medium);
    EXPECT_EQ(sim::airflow_of(1, 2), Airflow::high);
    EXPECT_EQ(sim::airflow_of(1, 3), Airflow::high);
    EXPECT_EQ(sim::airflow_of(1, 4), Airflow::low);
    EXPECT_EQ(sim::airflow_of(1, 5), Airflow::low);
}
