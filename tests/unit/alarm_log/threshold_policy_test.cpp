// SPDX-License-Identifier: GPL-2.0-or-later
// When threshold alarms are raised and cleared.
#include "diagd/alarm_log/thresholds/threshold_policy.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace diagd;

namespace {

using Limits = std::numeric_limits<float>;
constexpr float nan_value = Limits::quiet_NaN();
constexpr float infinite = Limits::infinity();

constexpr Thresholds high{70.0F, 65.0F};
constexpr Thresholds low{5.0F, 10.0F};

// Follows one alarm as the monitor does.
struct Follower {
    Thresholds thresholds;
    Direction direction;
    ThresholdState state = ThresholdState::unknown;

    Report operator()(float value)
    {
        const Evaluation evaluation = evaluate(value, thresholds, direction, state);
        state = evaluation.state;
        return evaluation.report;
    }
};

} // namespace

TEST(HighAlarm, is_raised_at_its_threshold_and_cleared_below_the_clear_threshold_once_each)
{
    Follower alarm{high, Direction::high};
    EXPECT_EQ(alarm(69.9F), Report::nothing);
    EXPECT_EQ(alarm.state, ThresholdState::unknown);
    EXPECT_EQ(alarm(70.0F), Report::is_above);
    EXPECT_EQ(alarm.state, ThresholdState::raised);
    EXPECT_EQ(alarm(80.0F), Report::nothing);
    EXPECT_EQ(alarm(69.9F), Report::nothing);
    EXPECT_EQ(alarm(65.0F), Report::nothing);
    EXPECT_EQ(alarm(64.9F), Report::back_from_above);
    EXPECT_EQ(alarm.state, ThresholdState::normal);
    EXPECT_EQ(alarm(64.9F), Report::nothing);
    EXPECT_EQ(alarm(69.9F), Report::nothing);
    EXPECT_EQ(alarm(70.0F), Report::is_above);
}

TEST(LowAlarm, is_raised_at_its_threshold_and_cleared_above_the_clear_threshold_once_each)
{
    Follower alarm{low, Direction::low};
    EXPECT_EQ(alarm(5.1F), Report::nothing);
    EXPECT_EQ(alarm(5.0F), Report::is_below);
    EXPECT_EQ(alarm(-40.0F), Report::nothing);
    EXPECT_EQ(alarm(10.0F), Report::nothing);
    EXPECT_EQ(alarm(10.1F), Report::back_from_below);
    EXPECT_EQ(alarm(10.1F), Report::nothing);
    EXPECT_EQ(alarm(5.0F), Report::is_below);
}

TEST(ThresholdAlarm, the_first_normal_value_is_reported)
{
    EXPECT_EQ((Follower{high, Direction::high}(20.0F)), Report::back_from_above);
    EXPECT_EQ((Follower{low, Direction::low}(20.0F)), Report::back_from_below);
}

TEST(ThresholdAlarm, without_thresholds_only_what_is_negative_is_not_too_high)
{
    EXPECT_EQ((Follower{{}, Direction::high}(25.0F)), Report::is_above);
    EXPECT_EQ((Follower{{}, Direction::high}(0.0F)), Report::is_above);
    EXPECT_EQ((Follower{{}, Direction::high}(-0.1F)), Report::back_from_above);
    EXPECT_EQ((Follower{{}, Direction::low}(0.0F)), Report::is_below);
    EXPECT_EQ((Follower{{}, Direction::low}(25.0F)), Report::back_from_below);
}

TEST(ThresholdAlarm, what_is_no_number_changes_nothing)
{
    for (const Direction direction : {Direction::high, Direction::low})
        for (const ThresholdState state :
             {ThresholdState::raised, ThresholdState::normal, ThresholdState::unknown})
            for (const auto &[value, thresholds] :
                 {std::pair{nan_value, high}, {50.0F, Thresholds{nan_value, nan_value}}}) {
                const Evaluation evaluation = evaluate(value, thresholds, direction, state);
                EXPECT_EQ(evaluation.report, Report::nothing);
                EXPECT_EQ(evaluation.state, state);
            }
}

TEST(ThresholdAlarm, no_light_is_below_every_threshold)
{
    EXPECT_EQ((Follower{{-10.0F, -8.0F}, Direction::low}(-infinite)), Report::is_below);
    EXPECT_EQ((Follower{{4.0F, 3.0F}, Direction::high}(-infinite)), Report::back_from_above);
    EXPECT_EQ((Follower{{4.0F, 3.0F}, Direction::high}(infinite)), Report::is_above);
    EXPECT_EQ((Follower{{-10.0F, -8.0F}, Direction::low}(infinite)), Report::back_from_below);
}

TEST(ThresholdAlarm, infinite_thresholds_compare_as_they_are)
{
    EXPECT_EQ((Follower{{infinite, infinite}, Direction::high}(1e38F)), Report::back_from_above);
    EXPECT_EQ((Follower{{infinite, infinite}, Direction::high}(infinite)), Report::is_above);
    EXPECT_EQ((Follower{{-infinite, -infinite}, Direction::low}(-1e38F)), Report::back_from_below);
}

TEST(ThresholdAlarm, new_thresholds_do_not_forget_a_raised_alarm)
{
    Follower alarm{high, Direction::high};
    EXPECT_EQ(alarm(75.0F), Report::is_above);
    alarm.thresholds = {90.0F, 60.0F};
    EXPECT_EQ(alarm(75.0F), Report::nothing);
    EXPECT_EQ(alarm(62.0F), Report::nothing);
    EXPECT_EQ(alarm(59.0F), Report::back_from_above);
}

TEST(Order, of_thresholds_may_be_equal_but_not_crossed)
{
    EXPECT_TRUE(are_in_order({70, 65}, Direction::high));
    EXPECT_TRUE(are_in_order({65, 65}, Direction::high));
    EXPECT_FALSE(are_in_order({65, 70}, Direction::high));
    EXPECT_TRUE(are_in_order({5, 10}, Direction::low));
    EXPECT_TRUE(are_in_order({5, 5}, Direction::low));
    EXPECT_FALSE(are_in_order({10, 5}, Direction::low));
}

// The same in another way: whole numbers, and after each step the state is worked out again from the whole
// history.  A value is decisive when it reaches the alarm threshold, passes the clear threshold, or, with
// thresholds the wrong way round, does both; only a decisive value that changes the state is reported.
namespace {

struct Model {
    int alarm, clear;
    Direction direction;
    std::vector<int> history;

    enum class Kind { none, reaches, clears, both };

    Kind kind(int value) const
    {
        const int sign = direction == Direction::high ? 1 : -1;
        const bool reaches = sign * (value - alarm) >= 0;
        const bool clears = sign * (clear - value) > 0;
        return reaches && clears ? Kind::both : reaches ? Kind::reaches : clears ? Kind::clears : Kind::none;
    }

    ThresholdState state() const
    {
        ThresholdState state = ThresholdState::unknown;
        for (const int value : history)
            switch (kind(value)) {
            case Kind::none:
                break;
            case Kind::reaches:
                state = ThresholdState::raised;
                break;
            case Kind::clears:
                state = ThresholdState::normal;
                break;
            case Kind::both:
                state = state == ThresholdState::raised ? ThresholdState::normal : ThresholdState::raised;
                break;
            }
        return state;
    }

    Report operator()(int value)
    {
        const ThresholdState before = state();
        history.push_back(value);
        const ThresholdState after = state();
        if (after == before)
            return Report::nothing;
        if (direction == Direction::high)
            return after == ThresholdState::raised ? Report::is_above : Report::back_from_above;
        return after == ThresholdState::raised ? Report::is_below : Report::back_from_below;
    }
};

} // namespace

TEST(ThresholdAlarm, random_walks_agree_with_a_model_of_the_whole_history)
{
    std::mt19937 random{20240101};
    const auto number = [&random](int from, int to) {
        return std::uniform_int_distribution{from, to}(random);
    };
    int reports[5] = {};
    for (int walk = 0; walk < 2000; ++walk) {
        const Direction direction = number(0, 1) == 0 ? Direction::high : Direction::low;
        const int alarm = number(-20, 20);
        const int clear = alarm + number(-6, 6);
        Model model{alarm, clear, direction, {}};
        Follower follower{{static_cast<float>(alarm) / 2, static_cast<float>(clear) / 2}, direction};
        int value = number(-30, 30);
        for (int step = 0; step < 120; ++step) {
            value += number(-4, 4);
            const Report expected = model(value);
            ASSERT_EQ(follower(static_cast<float>(value) / 2), expected)
                << "walk " << walk << " step " << step << ": " << value << " against " << alarm << ", "
                << clear;
            ASSERT_EQ(follower.state, model.state());
            ++reports[static_cast<int>(expected)];
        }
    }
    for (const int count : reports)
        EXPECT_GT(count, 1000) << "the walks must meet every case";
}
