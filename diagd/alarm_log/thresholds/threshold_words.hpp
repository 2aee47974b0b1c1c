// SPDX-License-Identifier: GPL-2.0-or-later
// Threshold commands: their words and help, and the two numbers of every one that enables an alarm.
#pragma once

#include "diagd/alarm_log/actions/alarm_grammar.hpp"
#include "diagd/alarm_log/thresholds/threshold_alarms.hpp"
#include "diagd/core/frr.hpp"

#include <optional>

#define THRESHOLD_VALUES_STR                                                                                 \
    "Enable the alarm.\n"                                                                                    \
    "Value from which the alarm is raised.\n"                                                                \
    "Value past which the alarm is cleared.\n"
#define THRESHOLD_DISABLE_STR "Disable the alarm.\n"

namespace diagd {

// The numbers that an operator typed; nothing, once he was told why, when they are none or in the wrong
// order.
std::optional<Thresholds> typed_thresholds(struct vty *vty, const char *alarm, const char *clear,
                                           Direction direction);

// "before <a|b|c> after" as grammar, "before", a line for each word and "after" as help.
constexpr std::string words_with_choice(std::string_view before, std::span<const std::string_view> names,
                                        std::string_view after)
{
    return std::string{before} + " " + choice_of({"alarm", names}) + " " + std::string{after};
}

constexpr std::string help_with_choice(std::string_view before, std::span<const std::string_view> names,
                                       std::string_view after)
{
    std::string help{before};
    for (const std::string_view name : names)
        help.append("Specify ").append(name).append(" alarm.\n");
    return help.append(after);
}

} // namespace diagd
