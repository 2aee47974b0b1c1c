// SPDX-License-Identifier: GPL-2.0-or-later
// Threshold commands: their syntax and help, and the two numbers of every one that enables an alarm.
#pragma once

#include "diagd/alarm_log/syntax.hpp"
#include "diagd/alarm_log/thresholds/thresholds.hpp"
#include "diagd/core/command.hpp"

#include <optional>

#define THRESHOLD_ENABLE_HELP                                                                                \
    "Enable the alarm.\n"                                                                                    \
    "Value from which the alarm is raised.\n"                                                                \
    "Value past which the alarm is cleared.\n"
#define THRESHOLD_DISABLE_HELP "Disable the alarm.\n"

namespace diagd {

// The numbers that an operator typed; nothing, once he was told why, when they are none or in the wrong
// order.
inline std::optional<Thresholds> typed_thresholds(struct vty *vty, const char *alarm, const char *clear,
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

// "before <a|b|c> after" as syntax, "before", a line for each word and "after" as help.
constexpr JoinedText syntax_with_choice(const JoinedText &before, std::span<const std::string_view> names,
                                        const JoinedText &after)
{
    return before + " " + choice_of(names) + " " + after;
}

constexpr JoinedText help_with_choice(const JoinedText &before, std::span<const std::string_view> names,
                                      const JoinedText &after)
{
    return before + help_of_choice(names, "alarm") + after;
}

} // namespace diagd
