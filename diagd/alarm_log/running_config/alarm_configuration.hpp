// SPDX-License-Identifier: GPL-2.0-or-later
// Level and actions of every alarm, as the database has them.
#pragma once

#include "tq_types.h"

#include <array>
#include <optional>

namespace diagd {

// By alarm id.  What the database does not say stays without a level and switched off.
using AlarmConfiguration = std::array<tq_alarm_cfg_t, TQ_ALARM_COUNT>;

// Nothing when the database cannot be read.
[[nodiscard]] std::optional<AlarmConfiguration> read_alarm_configuration();

} // namespace diagd
