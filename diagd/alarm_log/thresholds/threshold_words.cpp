// SPDX-License-Identifier: GPL-2.0-or-later
// The two numbers of a threshold command.
#include "diagd/alarm_log/thresholds/threshold_words.hpp"

#include "diagd/alarm_log/thresholds/threshold_parser.hpp"
#include "diagd/core/text.hpp"

namespace diagd {

std::optional<Thresholds> typed_thresholds(struct vty *vty, const char *alarm, const char *clear,
                                           Direction direction)
{
    if (!is_threshold_word(alarm) || !is_threshold_word(clear)) {
        vty_out(vty, "wrong threshold value.%s", line_end);
        return std::nullopt;
    }
    const Thresholds thresholds{threshold_value(alarm), threshold_value(clear)};
    if (are_in_order(thresholds, direction))
        return thresholds;
    if (direction == Direction::high)
        vty_out(vty, "Msg:argc set threshold can not be smaller than clean threshold error!%s", line_end);
    else
        vty_out(vty, "Msg:argc set threshold can not be bigger than clean threshold error!%s", line_end);
    return std::nullopt;
}

} // namespace diagd
