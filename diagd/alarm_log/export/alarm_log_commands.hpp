// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm-log commands, for the install order.
#pragma once

#include "frr.hpp"

extern const struct cmd_element show_alarm_log_cmd;
extern const struct cmd_element show_alarm_log_head_cmd;
extern const struct cmd_element show_alarm_log_tail_cmd;
extern const struct cmd_element clear_alarm_log_cmd;
extern const struct cmd_element clear_syslog_cmd;
extern const struct cmd_element alarm_log_debug_cmd;
