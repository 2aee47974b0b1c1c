// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that switch an action of many alarms in one change of the database, or of any alarm by its name.
// Failure policy: an entry that fails is said in one line and the others go on; what could be set is applied.
#include "diagd/alarm_log/actions/action_cmd.hpp"
#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/actions/alarm_syntax.hpp"
#include "diagd/alarm_log/apply_lock.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/command_tables.hpp"
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
    return [on = is_enable(word)](const tq_alarm_info_t &, std::string_view) { return on; };
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

// Syntax and help, joined from the table of actions.
constexpr auto all_syntax = [] { return "alarm-log <alarm|event> all " SWITCH_SYNTAX " " + action_syntax(); };
constexpr auto all_help = [] {
    return "Alarm log.\n"
           "Configuration of alarms.\n"
           "Configuration of events.\n"
           "Every alarm or event of the class.\n" SWITCH_HELP +
           action_help();
};
constexpr auto old_all_syntax = [] { return "<alarm|event> all " + action_syntax() + " " SWITCH_SYNTAX; };
constexpr auto old_all_help = [] {
    return "Configuration of alarms.\n"
           "Configuration of events.\n"
           "Every alarm or event of the class.\n" +
           action_help() + SWITCH_HELP;
};
constexpr auto name_syntax = [] { return "<alarm|event> name WORD " + action_syntax() + " " SWITCH_SYNTAX; };
constexpr auto name_help = [] {
    return "Configuration of alarms.\n"
           "Configuration of events.\n"
           "Specify by name.\n"
           "Name of the alarm or event.\n" +
           action_help() + SWITCH_HELP;
};
constexpr auto default_syntax = [] { return "alarm-event default " + action_syntax(); };
constexpr auto default_help = [] {
    return "Configuration of alarms and events.\n"
           "Set to the defaults.\n" +
           action_help();
};
constexpr auto config_all_syntax = [] {
    return "alarm-event config_all " + action_syntax() + " " SWITCH_SYNTAX;
};
constexpr auto config_all_help = [] {
    return "Configuration of alarms and events.\n"
           "Every alarm and event.\n" +
           action_help() + SWITCH_HELP;
};

} // namespace

DEFUN(alarm_log_all_action, alarm_log_all_action_cmd, static_text<all_syntax>, static_text<all_help>)
{
    return switch_entries(vty, "alarm_log_all_action", argv[4], entries_of_class(argv[1]),
                          switch_of(argv[3]));
}

DEFUN_HIDDEN(alarm_all_action, alarm_all_action_cmd, static_text<old_all_syntax>, static_text<old_all_help>)
{
    return switch_entries(vty, "alarm_all_action", argv[2], entries_of_class(argv[0]), switch_of(argv[3]));
}

// The name is free text here, so the class must be that of the entry.  Its id is kept in 8 bits only.
DEFUN_HIDDEN(alarm_name_action, alarm_name_action_cmd, static_text<name_syntax>, static_text<name_help>)
{
    char name[32];
    copy_text(name, argv[2]->arg);
    const std::optional<std::uint16_t> id = short_alarm_id_in(get_alarm_id_by_name(name));
    if (!id || tq_alarm_log_info[*id].class_ != class_of(argv[0]->text)) {
        vty_out(vty, "wrong alarm id.%s", line_end);
        return CMD_SUCCESS;
    }
    tell_configuration_failure(vty, set_alarm_action(vty, *id, argv[3]->text, is_enable(argv[4])));
    return CMD_SUCCESS;
}

DEFUN_HIDDEN(alarm_event_default_action, alarm_event_default_action_cmd, static_text<default_syntax>,
             static_text<default_help>)
{
    return switch_entries(vty, "alarm_event_default_action", argv[2], every_entry, default_of);
}

DEFUN_HIDDEN(alarm_event_all_action, alarm_event_all_action_cmd, static_text<config_all_syntax>,
             static_text<config_all_help>)
{
    return switch_entries(vty, "alarm_event_all_action", argv[2], every_entry, switch_of(argv[3]));
}

namespace {
constexpr InstallRow commands[] = {
    {config_node, &alarm_log_all_action_cmd},       {config_node, &alarm_all_action_cmd},
    {config_node, &alarm_name_action_cmd},          {config_node, &alarm_event_all_action_cmd},
    {config_node, &alarm_event_default_action_cmd},
};
} // namespace
constinit const CommandTable diagd::bulk_commands{commands};
