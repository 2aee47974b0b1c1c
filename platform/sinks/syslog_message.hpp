// SPDX-License-Identifier: GPL-2.0-or-later
// An alarm as a syslog message (RFC 5424).
#pragma once

#include "platform/alarms/alarm.hpp"

#include <string>

namespace tq {

// Who sends.
struct SyslogOrigin {
    std::string host;
    std::string program;
    long process;
};

// One message, which fits a datagram of 2048 bytes, the most that every receiver should take (section 6.1):
//
//     <188>1 2026-11-21T11:12:13.000123+01:00 olt diagd 4711 port-updown
//         [alarm@32473 id="8" name="port-updown" class="alarm" pon="3" onu="0"] port 0/3 is down
//
// Facility is local7, MSGID the alarm's name.  `pon` and `onu` are 0 when the program that filed the alarm
// did not say; an alarm that the catalogue does not have carries no name and class.  The text is prefixed
// with a byte order mark when it is UTF-8 beyond ASCII, as section 6.4 demands; ASCII and what is no UTF-8 go
// without it (many receivers show the mark as garbage, and an encoding that is not known must not claim one).
// Control characters become blanks.
std::string syslog_message(const Alarm &alarm, const SyslogOrigin &origin);

} // namespace tq
