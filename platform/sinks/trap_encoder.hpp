// SPDX-License-Identifier: GPL-2.0-or-later
// The one function of libtqtrap, which makes notifications with net-snmp.  net-snmp and what it needs take
// two megabytes of memory in every process that has them, so they are a library of their own, which
// trap_message() loads when there is a trap to send.
#pragma once

#include "platform/alarms/alarm.hpp"

#include <string>

// See trap_message(); an empty message is one that cannot be made.
extern "C" void tq_trap_encode(const tq::Alarm &alarm, const std::string &community, unsigned long uptime,
                               std::string &message);
