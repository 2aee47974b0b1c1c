// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that switch the actions of one alarm.  The older forms have the action before enable or disable.
// Failure policy: a switch that fails is said twice, by name and as a failed configuration; those before it
// stay changed, those after it are not tried.
#include "diagd/alarm_log/actions/action_cmd.hpp"

#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/actions/alarm_grammar.hpp"
#include "diagd/alarm_log/alarm_id.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/export/alarm_log_commands.hpp"
#include "diagd/core/text.hpp"

#include "tq_api.h"
#include "tq_errno.h"

namespace diagd {

static_assert(TQ_ERR_NOT_FOUND == -2, "the code of a name that is not in the catalogue");

static int switch_and_tell(struct vty *vty, std::uint16_t id, std::string_view action, bool on)
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
    return id ? switch_and_tell(vty, *id, action, on) : TQ_ERR_NOT_FOUND;
}

void tell_configuration_failure(struct vty *vty, int code)
{
    if (code != 0)
        vty_out(vty, "set alarm log configuration failed : %s\n", tq_strerror(code));
}

} // namespace diagd

using namespace diagd;

static bool is_enable(const struct cmd_token *token)
{
    return std::string_view{token->text} == "enable";
}

// alarm-log CLASS NAME SWITCH ACTION
DEFUN(alarm_log_global_alarm_action, alarm_log_global_alarm_action_cmd, action_words<global_alarms>,
      action_help<global_alarms>)
{
    tell_configuration_failure(vty, set_alarm_action(vty, argv[2]->text, argv[4]->text, is_enable(argv[3])));
    return CMD_SUCCESS;
}
ALIAS(alarm_log_global_alarm_action, alarm_log_pon_alarm_action_cmd, action_words<pon_alarms>,
      action_help<pon_alarms>)
ALIAS(alarm_log_global_alarm_action, alarm_log_onu_alarm_action_cmd, action_words<onu_alarms>,
      action_help<onu_alarms>)
ALIAS(alarm_log_global_alarm_action, alarm_log_routing_alarm_action_cmd, action_words<routing_alarms>,
      action_help<routing_alarms>)
ALIAS(alarm_log_global_alarm_action, alarm_log_global_event_action_cmd, action_words<global_events>,
      action_help<global_events>)
ALIAS(alarm_log_global_alarm_action, alarm_log_pon_event_action_cmd, action_words<pon_events>,
      action_help<pon_events>)
ALIAS(alarm_log_global_alarm_action, alarm_log_onu_event_action_cmd, action_words<onu_events>,
      action_help<onu_events>)
ALIAS(alarm_log_global_alarm_action, alarm_log_routing_event_action_cmd, action_words<routing_events>,
      action_help<routing_events>)

// CLASS NAME ACTION SWITCH
DEFUN_HIDDEN(alarm_global_alarm_action, alarm_global_alarm_action_cmd,
             old_action_words<global_alarms_without_threshold>,
             old_action_help<global_alarms_without_threshold>)
{
    tell_configuration_failure(vty, set_alarm_action(vty, argv[1]->text, argv[2]->text, is_enable(argv[3])));
    return CMD_SUCCESS;
}
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_pon_alarm_action_cmd, old_action_words<pon_alarms>,
             old_action_help<pon_alarms>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_onu_alarm_action_cmd, old_action_words<onu_alarms>,
             old_action_help<onu_alarms>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_routing_alarm_action_cmd, old_action_words<routing_alarms>,
             old_action_help<routing_alarms>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_global_event_action_cmd, old_action_words<global_events>,
             old_action_help<global_events>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_pon_event_action_cmd, old_action_words<pon_events>,
             old_action_help<pon_events>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_onu_event_action_cmd, old_action_words<onu_events>,
             old_action_help<onu_events>)
ALIAS_HIDDEN(alarm_global_alarm_action, alarm_routing_event_action_cmd, old_action_words<routing_events>,
             old_action_help<routing_events>)

// The name is free text here, so the class must be that of the entry.  Its id is kept in 8 bits only.
DEFUN_HIDDEN(alarm_name_action, alarm_name_action_cmd,
             "<alarm|event> name WORD " ACTION_WORDS " " SWITCH_WORDS,
             "Configuration of alarms.\n"
             "Configuration of events.\n"
             "Specify by name.\n"
             "Name of the alarm or event.\n" ACTION_STR SWITCH_STR)
{
    char name[32];
    copy_text(name, argv[2]->arg);
    const std::optional<std::uint16_t> id = short_alarm_id_in(get_alarm_id_by_name(name));
    if (!id || tq_alarm_log_info[*id].class_ != class_of(argv[0]->text)) {
        vty_out(vty, "wrong alarm id.%s", line_end);
        return CMD_SUCCESS;
    }
    tell_configuration_failure(vty, switch_and_tell(vty, *id, argv[3]->text, is_enable(argv[4])));
    return CMD_SUCCESS;
}
