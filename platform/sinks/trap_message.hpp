// SPDX-License-Identifier: GPL-2.0-or-later
// An alarm as an SNMPv2c notification, oltAlarm of platform/mibs/OLT-ALARM-MIB.txt.
#pragma once

#include "platform/alarms/alarm.hpp"

#include <string>

namespace tq {

// Longest community that SNMP libraries take.
inline constexpr std::size_t max_community = 255;

// The message, ready to be sent; empty when it cannot be made, with the reason in errno.  A text of more than
// 1023 bytes is cut.  `community` is at most that long; `uptime` in hundredths of a second.  One caller at a
// time: the encoder numbers its messages.
std::string trap_message(const Alarm &alarm, const std::string &community, unsigned long uptime);

} // namespace tq
