// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that switch the actions of one alarm, and that set its level.  The older forms have the action
// before enable or disable. Failure policy: a switch that fails is said twice, by name and as a failed
// configuration; those before it stay changed, those after it are not tried.
#include "diagd/alarm_log/actions/action_cmd.hpp"

#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/actions/alarm_syntax.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include "tq_api.h"
#include "tq_errno.h"

namespace diagd {

static_assert(TQ_ERR_NOT_FOUND == -2, "the code of a name that is not in the catalogue");

int set_alarm_action(struct vty *vty, std::uint16_t id, std::string_view action, bool on)
{
    const ActionResult result = switch_now(id, action, on);
    if (result.code != 0)
        vty_out(vty, "set alarm log %.*s failed : %s\n", print_length(result.failed), result.failed.data(),
                tq_strerror(result.code));
    return result.code;
}

int set_alarm_action(struct vty *vty, const char *name, std::string_view action, bool on)
{
    const std::optional<std::uint16_t> id = find_alarm(name);
    return id ? set_alarm_action(vty, *id, action, on) : TQ_ERR_NOT_FOUND;
}

void tell_configuration_failure(struct vty *vty, int code)
{
    if (code != 0)
        vty_out(vty, "set alarm log configuration failed : %s\n", tq_strerror(code));
}

} // namespace diagd

using namespace diagd;

// alarm-log CLASS NAME SWITCH ACTION
DEFUN(alarm_log_global_alarm_action, alarm_log_global_alarm_action_cmd, switch_syntax<global_alarms>,
      switch_help<global_alarms>)
{
    tell_configuration_failure(vty, set_alarm_action(vty, argv[2]->text, argv[4]->text, is_enable(argv[3])));
    return CMD_SUCCESS;
}
ALIAS(alarm_log_global_alarm_action, alarm_log_pon_alarm_action_cmd, switch_syntax<pon_alarms>,
      switch_help<pon_alarms>)
ALIAS(alarm_log_global_alarm_action, alarm_log_onu_alarm_action_cmd, switch_syntax<onu_alarms>,
      switch_help<onu_alarms>)
ALIAS(alarm_log_global_alarm_action, alarm_log_routing_alarm_action_cmd, switch_syntax<routing_alarms>,
      switch_help<routing_alarms>)
ALIAS(alarm_log_global_alarm_action, alarm_log_global_event_action_cmd, switch_syntax<global_events>,
      switch_help<global_events>)
ALIAS(alarm_log_global_alarm_action, alarm_log_pon_event_action_cmd, switch_syntax<pon_events>,
      switch_help<pon_events>)
ALIAS(alarm_log_global_alarm_action, alarm_log_onu_event_action_cmd, switch_syntax<onu_events>,
      switch_help<onu_events>)
ALIAS(alarm_log_global_alarm_action, alarm_log_routing_event_action_cmd, switch_syntax<routing_events>,
      switch_help<routing_events>)

// CLASS NAME ACTION SWITCH
DEFUN_HIDDEN(alarm_global_alarm_action, alarm_global_alarm_action_cmd,
             old_switch_syntax<global_alarms_without_threshold>,
             old_switch_help<global_alarms_without_threshold>)
{
    tell_configuration_failure(vty, set_alarm_action(vty, argv[1]->text, argv[2]->text, is_enable(argv[3])));
    return CMD_SUCCESS;
}
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_pon_alarm_action_cmd, old_switch_syntax<pon_alarms>,
             old_switch_help<pon_alarms>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_onu_alarm_action_cmd, old_switch_syntax<onu_alarms>,
             old_switch_help<onu_alarms>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_routing_alarm_action_cmd, old_switch_syntax<routing_alarms>,
             old_switch_help<routing_alarms>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_global_event_action_cmd, old_switch_syntax<global_events>,
             old_switch_help<global_events>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_pon_event_action_cmd, old_switch_syntax<pon_events>,
             old_switch_help<pon_events>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_onu_event_action_cmd, old_switch_syntax<onu_events>,
             old_switch_help<onu_events>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_routing_event_action_cmd, old_switch_syntax<routing_events>,
             old_switch_help<routing_events>)

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
      level_syntax<global_alarms_without_threshold>, level_help<global_alarms_without_threshold>)
{
    tell_configuration_failure(vty, set_level(vty, argv[2]->text, argv[4]->text));
    return CMD_SUCCESS;
}
ALIAS(alarm_log_global_alarm_level, alarm_log_pon_alarm_level_cmd, level_syntax<pon_alarms>,
      level_help<pon_alarms>)
ALIAS(alarm_log_global_alarm_level, alarm_log_onu_alarm_level_cmd, level_syntax<onu_alarms>,
      level_help<onu_alarms>)
ALIAS(alarm_log_global_alarm_level, alarm_log_routing_alarm_level_cmd, level_syntax<routing_alarms>,
      level_help<routing_alarms>)
ALIAS(alarm_log_global_alarm_level, alarm_log_global_event_level_cmd, level_syntax<global_events>,
      level_help<global_events>)
ALIAS(alarm_log_global_alarm_level, alarm_log_pon_event_level_cmd, level_syntax<pon_events>,
      level_help<pon_events>)
ALIAS(alarm_log_global_alarm_level, alarm_log_onu_event_level_cmd, level_syntax<onu_events>,
      level_help<onu_events>)
ALIAS(alarm_log_global_alarm_level, alarm_log_routing_event_level_cmd, level_syntax<routing_events>,
      level_help<routing_events>)

namespace {
// A group's commands stand together.
constexpr InstallRow commands[] = {
    {config_node, &alarm_log_global_alarm_action_cmd},  {config_node, &alarm_global_alarm_action_cmd},
    {config_node, &alarm_log_global_alarm_level_cmd},   {config_node, &alarm_log_global_event_action_cmd},
    {config_node, &alarm_global_event_action_cmd},      {config_node, &alarm_log_global_event_level_cmd},
    {config_node, &alarm_log_pon_alarm_action_cmd},     {config_node, &alarm_pon_alarm_action_cmd},
    {config_node, &alarm_log_pon_alarm_level_cmd},      {config_node, &alarm_log_pon_event_action_cmd},
    {config_node, &alarm_pon_event_action_cmd},         {config_node, &alarm_log_pon_event_level_cmd},
    {config_node, &alarm_log_onu_alarm_action_cmd},     {config_node, &alarm_onu_alarm_action_cmd},
    {config_node, &alarm_log_onu_alarm_level_cmd},      {config_node, &alarm_log_onu_event_action_cmd},
    {config_node, &alarm_onu_event_action_cmd},         {config_node, &alarm_log_onu_event_level_cmd},
    {config_node, &alarm_log_routing_alarm_action_cmd}, {config_node, &alarm_routing_alarm_action_cmd},
    {config_node, &alarm_log_routing_alarm_level_cmd},  {config_node, &alarm_log_routing_event_action_cmd},
    {config_node, &alarm_routing_event_action_cmd},     {config_node, &alarm_log_routing_event_level_cmd},
};
} // namespace
constinit const CommandTable diagd::action_commands{commands};
