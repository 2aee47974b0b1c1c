// SPDX-License-Identifier: GPL-2.0-or-later
// When a threshold alarm is raised and cleared, and what texts say of thresholds and values.  Pure: no clock,
// no sensor, no database.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace diagd {

enum class Direction : std::uint8_t {
    high, // raised at or above its threshold
    low,  // raised at or below it
};

// The value is unknown until the first report about it.
enum class ThresholdState : std::uint8_t { raised = 0, normal = 1, unknown = 0xFF };

// In the unit of the value.
struct Thresholds {
    float alarm = 0.0F;
    float clear = 0.0F;
};

// What there is to report.
enum class Report : std::uint8_t { nothing, is_above, back_from_above, is_below, back_from_below };

struct Evaluation {
    ThresholdState state;
    Report report;
};

// Raised when the value reaches the alarm threshold, normal when it has passed the clear threshold; in
// between, and once reported, nothing changes.  From the unknown state either is reported, so the first
// normal value is.
//
// The comparisons are those of IEEE 754: no light (-inf dBm) is below every threshold, and a value that is no
// number neither raises nor clears.
[[nodiscard]] constexpr Evaluation evaluate(float value, const Thresholds &thresholds, Direction direction,
                                            ThresholdState state) noexcept
{
    const bool is_high = direction == Direction::high;
    const bool reached = is_high ? value >= thresholds.alarm : value <= thresholds.alarm;
    const bool cleared = is_high ? value < thresholds.clear : value > thresholds.clear;
    if (reached && state != ThresholdState::raised)
        return {ThresholdState::raised, is_high ? Report::is_above : Report::is_below};
    if (cleared && state != ThresholdState::normal)
        return {ThresholdState::normal, is_high ? Report::back_from_above : Report::back_from_below};
    return {state, Report::nothing};
}

// The alarm threshold must not lie on the normal side of the clear threshold; both may be the same.
[[nodiscard]] constexpr bool are_in_order(const Thresholds &thresholds, Direction direction) noexcept
{
    return direction == Direction::high ? !(thresholds.alarm < thresholds.clear)
                                        : !(thresholds.alarm > thresholds.clear);
}

// temp-high, temp-low, cpu-usage-high, mem-usage-high
using BoardThresholds = std::array<Thresholds, 4>;

// From the database's XML text, which has one element a line.  What it does not say is 0.0; what follows the
// end of the thresholds does not count.
[[nodiscard]] BoardThresholds parse_board_thresholds(std::string_view xml);

// Whether an operator's word passes for a number: digits with at most one point, one minus and one plus,
// wherever they stand.  The empty word does.
[[nodiscard]] bool is_threshold_word(std::string_view word) noexcept;

// As much of the text as is a number; 0 when nothing is.
[[nodiscard]] float threshold_value(const char *text) noexcept;

// A reading in tenths as the decimal number "%d.%d" of its whole and its tenths.  Like the displays that show
// it so, it has no sign between -0.9 and -0.1.
[[nodiscard]] float value_from_tenths(int tenths) noexcept;

} // namespace diagd
