// SPDX-License-Identifier: GPL-2.0-or-later
// Texts of the alarm catalogue.  Records come from shared memory, so their ids and levels may be anything: an
// unknown one has an empty text.
#pragma once

#include "diagd/core/text.hpp"

#include "tq_api.h"

#include <cstdint>
#include <string_view>

namespace diagd {

[[nodiscard]] inline std::string_view alarm_name(std::uint16_t id) noexcept
{
    return id < TQ_ALARM_COUNT ? field_text(tq_alarm_log_info[id].name) : std::string_view{};
}

[[nodiscard]] inline std::string_view alarm_description(std::uint16_t id) noexcept
{
    return id < TQ_ALARM_COUNT ? field_text(tq_alarm_log_info[id].description) : std::string_view{};
}

[[nodiscard]] inline std::string_view alarm_level_name(std::uint8_t level) noexcept
{
    return level < TQ_ALARM_LEVEL_COUNT ? field_text(tq_alarm_log_level[level]) : std::string_view{};
}

// The catalogue itself is the platform's and whole: `id` is below TQ_ALARM_COUNT.
[[nodiscard]] inline std::string_view alarm_type_name(std::uint16_t id) noexcept
{
    return field_text(tq_alarm_log_type[tq_alarm_log_info[id].type]);
}

[[nodiscard]] inline std::string_view alarm_class_name(std::uint16_t id) noexcept
{
    return field_text(tq_alarm_log_class[tq_alarm_log_info[id].class_]);
}

// Class that the word "alarm" or "event" means.
[[nodiscard]] inline std::uint32_t class_of(std::string_view word) noexcept
{
    return word == "event" ? 1 : 0;
}

} // namespace diagd
