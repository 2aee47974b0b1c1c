// SPDX-License-Identifier: GPL-2.0-or-later
// Syslog's severity of each alarm level: alarm levels rise with severity, those of syslog fall, and syslog
// has no "major".
#pragma once

#include "tq_types.h"

#include <array>
#include <syslog.h>

namespace tq {

inline constexpr std::array<int, TQ_ALARM_LEVEL_COUNT> syslog_severity = {
    LOG_DEBUG, LOG_INFO, LOG_NOTICE, LOG_WARNING, LOG_ERR, LOG_CRIT, LOG_ALERT, LOG_EMERG,
};

} // namespace tq
