// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/viewer.hpp"

#include <gtest/gtest.h>

using diagsh::in_view;
using diagsh::scrolled;
using diagsh::ViewKey;
using diagsh::ViewPlace;
using diagsh::WindowSize;

namespace {

constexpr WindowSize window{80, 25}; // 24 lines of text above the status

ViewPlace after(ViewPlace place, ViewKey key)
{
    return scrolled(place, key, window, 100, 155);
}

} // namespace

TEST(Scrolled, pages_stop_at_the_last_full_one)
{
    EXPECT_EQ(after({0, 0}, ViewKey::page_down).top, 24U);
    EXPECT_EQ(after({70, 0}, ViewKey::page_down).top, 76U);
    EXPECT_EQ(after({10, 0}, ViewKey::page_up).top, 0U);
    EXPECT_EQ(after({0, 0}, ViewKey::last).top, 76U);
}

TEST(Scrolled, sideways_goes_by_half_a_window_to_the_last_column)
{
    EXPECT_EQ(after({0, 0}, ViewKey::right).left, 40U);
    EXPECT_EQ(after({0, 40}, ViewKey::right).left, 75U);
    EXPECT_EQ(after({0, 75}, ViewKey::left).left, 35U);
    EXPECT_EQ(after({0, 10}, ViewKey::left).left, 0U);
}

TEST(Scrolled, text_that_fits_stays)
{
    for (const ViewKey key : {ViewKey::down, ViewKey::page_down, ViewKey::right, ViewKey::last}) {
        const ViewPlace place = scrolled({0, 0}, key, window, 24, 80);
        EXPECT_EQ(place.top, 0U);
        EXPECT_EQ(place.left, 0U);
    }
}

TEST(Scrolled, window_that_grew_shows_no_emptiness)
{
    const ViewPlace place = scrolled({76, 75}, ViewKey::other, {120, 50}, 100, 155);
    EXPECT_EQ(place.top, 51U);
    EXPECT_EQ(place.left, 35U);
}

TEST(InView, the_first_columns_stay_and_the_others_move_below_them)
{
    const std::string line = "GPON 0/1  38.02  3.31  14.59";
    EXPECT_EQ(in_view(line, 10, 0, 15), "GPON 0/1  38.02");
    EXPECT_EQ(in_view(line, 10, 7, 15), "GPON 0/1  3.31 ");
    EXPECT_EQ(in_view(line, 10, 13, 15), "GPON 0/1  14.59");
    EXPECT_EQ(in_view(line, 0, 23, 15), "14.59");
    EXPECT_EQ(in_view("GPON", 10, 7, 15), "GPON");
}
