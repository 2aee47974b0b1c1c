// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm catalogue as the daemon uses it: its texts, and beside each entry what other programs need not
// know.
#pragma once

#include "diagd/core/text.hpp"

#include "tq_api.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace diagd {

enum class AlarmClass : std::uint32_t { alarm, event };
enum class AlarmGroup : std::uint32_t { global, onu, pon, route };

struct AlarmRow {
    std::string_view name;
    AlarmClass class_;
    AlarmGroup group;
    bool is_bulk; // commands for many alarms take it along
};

// By id.
inline constexpr std::array<AlarmRow, TQ_ALARM_COUNT> alarm_rows{{
#define TQ_ROW(id, ID, name, description, class_, type, group, actions, bulk)                                \
    {name, AlarmClass::class_, AlarmGroup::group, bulk},
#include "tq_alarms.def"
}};

// Records come from shared memory, so their ids and levels may be anything: an unknown one has an empty text.
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

// Ids from what an operator types; nothing stands for what is no id.

// In the low 16 bits of what the platform's lookup of a name gives.
[[nodiscard]] std::optional<std::uint16_t> alarm_id_in(int looked_up);

// The same in its low 8 bits.
[[nodiscard]] std::optional<std::uint16_t> short_alarm_id_in(int looked_up);

// In the low 16 bits of a decimal number.
[[nodiscard]] std::optional<std::uint16_t> typed_alarm_id(const char *number);

// Id of a name; one that is not in the catalogue is said on standard error.
[[nodiscard]] std::optional<std::uint16_t> find_alarm(const char *name);

} // namespace diagd
