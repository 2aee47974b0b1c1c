// SPDX-License-Identifier: GPL-2.0-or-later
// From text to thresholds and values.  Pure: no database, no session.
#pragma once

#include "diagd/alarm_log/thresholds/threshold_judge.hpp"

#include <array>
#include <string_view>

namespace diagd {

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
