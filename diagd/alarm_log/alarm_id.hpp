// SPDX-License-Identifier: GPL-2.0-or-later
// Ids of alarms, 0..105, from what an operator types.  Nothing stands for what is no id.
#pragma once

#include <cstdint>
#include <optional>

namespace diagd {

// In the low 16 bits of what the platform's lookup of a name gives.
[[nodiscard]] std::optional<std::uint16_t> alarm_id_in(int looked_up);

// The same in its low 8 bits.
[[nodiscard]] std::optional<std::uint16_t> short_alarm_id_in(int looked_up);

// In the low 16 bits of a decimal number.
[[nodiscard]] std::optional<std::uint16_t> typed_alarm_id(const char *number);

// Id of a name; one that is not in the catalogue is said on standard error.
[[nodiscard]] std::optional<std::uint16_t> find_alarm(const char *name);

} // namespace diagd
