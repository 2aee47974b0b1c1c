// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that set the level of one alarm.
#include "diagd/alarm_log/actions/action_cmd.hpp"
#include "diagd/alarm_log/actions/alarm_grammar.hpp"
#include "diagd/alarm_log/alarm_id.hpp"
#include "diagd/alarm_log/export/alarm_log_commands.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include "tq_api.h"
#include "tq_errno.h"

using namespace diagd;

static int set_level(struct vty *vty, const char *name, const char *keyword)
{
    const std::optional<std::uint16_t> id = find_alarm(name);
    if (!id)
        return TQ_ERR_NOT_FOUND;
    constexpr int longest_keyword = 8; // "critical", which needs no terminator
    char level[16];
    copy_text(level, keyword);
    const int code = db_olt_alarm_log_set_alarm_level(*id, &g_diagd_db, level, longest_keyword, 1);
    if (code != 0)
        vty_out(vty, "set alarm log level failed : %s\n", tq_strerror(code));
    return code;
}

// alarm-log CLASS NAME level LEVEL
DEFUN(alarm_log_global_alarm_level, alarm_log_global_alarm_level_cmd,
      level_words<global_alarms_without_threshold>, level_help<global_alarms_without_threshold>)
{
    tell_configuration_failure(vty, set_level(vty, argv[2]->text, argv[4]->text));
    return CMD_SUCCESS;
}
ALIAS(alarm_log_global_alarm_level, alarm_log_pon_alarm_level_cmd, level_words<pon_alarms>,
      level_help<pon_alarms>)
ALIAS(alarm_log_global_alarm_level, alarm_log_onu_alarm_level_cmd, level_words<onu_alarms>,
      level_help<onu_alarms>)
ALIAS(alarm_log_global_alarm_level, alarm_log_routing_alarm_level_cmd, level_words<routing_alarms>,
      level_help<routing_alarms>)
ALIAS(alarm_log_global_alarm_level, alarm_log_global_event_level_cmd, level_words<global_events>,
      level_help<global_events>)
ALIAS(alarm_log_global_alarm_level, alarm_log_pon_event_level_cmd, level_words<pon_events>,
      level_help<pon_events>)
ALIAS(alarm_log_global_alarm_level, alarm_log_onu_event_level_cmd, level_words<onu_events>,
      level_help<onu_events>)
ALIAS(alarm_log_global_alarm_level, alarm_log_routing_event_level_cmd, level_words<routing_events>,
      level_help<routing_events>)
