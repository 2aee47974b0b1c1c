// SPDX-License-Identifier: GPL-2.0-or-later
// When a threshold alarm is raised and cleared.  Pure: no clock, no sensor.
#pragma once

#include <cstdint>

namespace diagd {

enum class Direction : std::uint8_t {
    high, // raised at or above its threshold
    low,  // raised at or below it
};

// The value is unknown until the first report about it.
enum class AlarmState : std::uint8_t { raised = 0, normal = 1, unknown = 0xFF };

// In the unit of the value.
struct Thresholds {
    float alarm = 0.0F;
    float clear = 0.0F;
};

// What there is to report.
enum class Report : std::uint8_t { nothing, is_above, back_from_above, is_below, back_from_below };

struct Verdict {
    AlarmState state;
    Report report;
};

// Raised when the value reaches the alarm threshold, normal when it has passed the clear threshold; in
// between, and once reported, nothing changes.  From the unknown state either is reported, so the first
// normal value is.
//
// The comparisons are those of IEEE 754: no light (-inf dBm) is below every threshold, and a value that is no
// number neither raises nor clears.
[[nodiscard]] constexpr Verdict judge(float value, const Thresholds &thresholds, Direction direction,
                                      AlarmState state) noexcept
{
    const bool is_high = direction == Direction::high;
    const bool reached = is_high ? value >= thresholds.alarm : value <= thresholds.alarm;
    const bool cleared = is_high ? value < thresholds.clear : value > thresholds.clear;
    if (reached && state != AlarmState::raised)
        return {AlarmState::raised, is_high ? Report::is_above : Report::is_below};
    if (cleared && state != AlarmState::normal)
        return {AlarmState::normal, is_high ? Report::back_from_above : Report::back_from_below};
    return {state, Report::nothing};
}

// The alarm threshold must not lie on the normal side of the clear threshold; both may be the same.
[[nodiscard]] constexpr bool are_in_order(const Thresholds &thresholds, Direction direction) noexcept
{
    return direction == Direction::high ? !(thresholds.alarm < thresholds.clear)
                                        : !(thresholds.alarm > thresholds.clear);
}

} // namespace diagd
