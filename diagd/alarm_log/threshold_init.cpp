// SPDX-License-Identifier: GPL-2.0-or-later
// Alarm log defaults.  Alarms keep what the database has for them.
int initial_alarm_log_config()
{
    return 0;
}
