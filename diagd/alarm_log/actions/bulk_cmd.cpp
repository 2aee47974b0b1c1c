// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that switch an action of many alarms in one change of the database.
// Failure policy: an entry that fails is said in one line and the others go on; what could be set is applied.
#include "diagd/alarm_log/actions/action_cmd.hpp"
#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/actions/alarm_grammar.hpp"
#include "diagd/alarm_log/alarm_id.hpp"
#include "diagd/alarm_log/apply_lock.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/export/alarm_log_commands.hpp"
#include "diagd/core/text.hpp"

#include "tq_errno.h"

#include <string>

using namespace diagd;

namespace {

const auto every_entry = [](const tq_alarm_info_t &) { return true; };

auto entries_of_class(const struct cmd_token *word)
{
    return [wanted = class_of(word->text)](const tq_alarm_info_t &entry) { return entry.class_ == wanted; };
}

auto switch_of(const struct cmd_token *word)
{
    return [on = std::string_view{word->text} == "enable"](const tq_alarm_info_t &, std::string_view) {
        return on;
    };
}

// Switches the action of each entry that is `selected(entry)` to `value(entry, action)`.  An entry is found
// by its name, as an operator would: of two with one name the first is changed.
template <typename Selected, typename Value>
int switch_entries(struct vty *vty, const char *function, const struct cmd_token *action_word,
                   Selected selected, Value value)
{
    const std::string_view action = action_word->text;
    ApplyLock lock{function};
    for (std::uint16_t id = 0; id < TQ_ALARM_COUNT; ++id) {
        const tq_alarm_info_t &entry = tq_alarm_log_info[id];
        if (!alarm_rows[id].is_bulk || !selected(entry))
            continue;
        const std::optional<std::uint16_t> found = find_alarm(std::string{field_text(entry.name)}.c_str());
        tell_configuration_failure(vty, found ? switch_pending(*found, action, value(entry, action))
                                              : static_cast<int>(TQ_ERR_NOT_FOUND));
    }
    lock.apply();
    return CMD_SUCCESS;
}

} // namespace

DEFUN(alarm_log_all_action, alarm_log_all_action_cmd,
      "alarm-log <alarm|event> all " SWITCH_WORDS " " ACTION_WORDS,
      "Alarm log.\n"
      "Configuration of alarms.\n"
      "Configuration of events.\n"
      "Every alarm or event of the class.\n" SWITCH_STR ACTION_STR)
{
    return switch_entries(vty, "alarm_log_all_action", argv[4], entries_of_class(argv[1]),
                          switch_of(argv[3]));
}

DEFUN_HIDDEN(alarm_all_action, alarm_all_action_cmd, "<alarm|event> all " ACTION_WORDS " " SWITCH_WORDS,
             "Configuration of alarms.\n"
             "Configuration of events.\n"
             "Every alarm or event of the class.\n" ACTION_STR SWITCH_STR)
{
    return switch_entries(vty, "alarm_all_action", argv[2], entries_of_class(argv[0]), switch_of(argv[3]));
}

DEFUN_HIDDEN(alarm_event_default_action, alarm_event_default_action_cmd, "alarm-event default " ACTION_WORDS,
             "Configuration of alarms and events.\n"
             "Set to the defaults.\n" ACTION_STR)
{
    return switch_entries(vty, "alarm_event_default_action", argv[2], every_entry, default_of);
}

DEFUN_HIDDEN(alarm_event_all_action, alarm_event_all_action_cmd,
             "alarm-event config_all " ACTION_WORDS " " SWITCH_WORDS,
             "Configuration of alarms and events.\n"
             "Every alarm and event.\n" ACTION_STR SWITCH_STR)
{
    return switch_entries(vty, "alarm_event_all_action", argv[2], every_entry, switch_of(argv[3]));
}
