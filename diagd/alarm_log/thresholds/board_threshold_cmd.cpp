// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that switch the board's threshold alarms on and off.  Switching on does not store the numbers: it
// removes the thresholds that the database has.  Those in force are what a management client puts there.
// Failure policy: numbers that are refused change nothing, except that the older forms have switched their
// action already; when the database refuses the last change of a command, none of them is made.
#include "diagd/alarm_log/actions/action_cmd.hpp"
#include "diagd/alarm_log/actions/alarm_syntax.hpp"
#include "diagd/alarm_log/apply_lock.hpp"
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/alarm_log/thresholds/threshold_syntax.hpp"

#include "tq_alarms.h"

using namespace diagd;

namespace {

constexpr const char *function_name = "cli_threshold_alarm_config";

constexpr auto set_syntax = [] {
    return syntax_with_choice("alarm-log threshold", board_alarm_names, "enable WORD WORD");
};
constexpr auto set_help = [] {
    return help_with_choice("Alarm log.\nThresholds.\n", board_alarm_names, THRESHOLD_ENABLE_HELP);
};
constexpr auto unset_syntax = [] {
    return syntax_with_choice("alarm-log threshold", board_alarm_names, "disable");
};
constexpr auto unset_help = [] {
    return help_with_choice("Alarm log.\nThresholds.\n", board_alarm_names, THRESHOLD_DISABLE_HELP);
};
constexpr auto old_set_syntax = [] {
    return syntax_with_choice("alarm", board_alarm_names, action_syntax() + " enable WORD WORD");
};
constexpr auto old_set_help = [] {
    return help_with_choice("Configuration of alarms.\n", board_alarm_names,
                            action_help() + THRESHOLD_ENABLE_HELP);
};
constexpr auto old_unset_syntax = [] {
    return syntax_with_choice("alarm", board_alarm_names, action_syntax() + " disable");
};
constexpr auto old_unset_help = [] {
    return help_with_choice("Configuration of alarms.\n", board_alarm_names,
                            action_help() + THRESHOLD_DISABLE_HELP);
};

// All four, pending; the result is that of the last.
int switch_all(std::uint16_t id, bool on)
{
    constexpr int natural_size = -1;
    const std::uint8_t value = on ? 1 : 0;
    int code = 0;
    for (const ActionSwitch &one : action_switches)
        code = one.set(id, &g_diagd_db, &value, natural_size, 0);
    return code;
}

void finish(ApplyLock &lock, int last_code)
{
    if (last_code == 0)
        lock.apply();
    else
        lock.discard();
}

void enable(struct vty *vty, const char *name, const char *alarm, const char *clear)
{
    const std::size_t i = index_of(name, board_alarm_names);
    if (!typed_thresholds(vty, alarm, clear, board_alarms[i].direction))
        return;
    ApplyLock lock{function_name};
    switch_all(board_alarms[i].id, true);
    stored_thresholds[i].delete_alarm(&g_diagd_db);
    finish(lock, stored_thresholds[i].delete_clear(&g_diagd_db));
}

// The thresholds of the other alarms stay, for when they are switched on by another way.
void disable(const char *name)
{
    const std::size_t i = index_of(name, board_alarm_names);
    ApplyLock lock{function_name};
    int code = switch_all(board_alarms[i].id, false);
    if (board_alarms[i].id == TQ_ALARM_TEMP_HIGH) {
        constexpr char empty[threshold_text_size] = "";
        db_olt_alarm_log_set_temp_high_alarm_threshold(&g_diagd_db, empty, sizeof empty, 0);
        code = db_olt_alarm_log_set_temp_high_clear_threshold(&g_diagd_db, empty, sizeof empty, 0);
    }
    finish(lock, code);
}

} // namespace

DEFUN(alarm_log_global_threshold_set, alarm_log_global_threshold_set_cmd, static_text<set_syntax>,
      static_text<set_help>)
{
    enable(vty, argv[2]->text, argv[4]->arg, argv[5]->arg);
    return CMD_SUCCESS;
}

DEFUN(alarm_log_global_threshold_unset, alarm_log_global_threshold_unset_cmd, static_text<unset_syntax>,
      static_text<unset_help>)
{
    disable(argv[2]->text);
    return CMD_SUCCESS;
}

DEFUN_HIDDEN(alarm_global_threshold_set, alarm_global_threshold_set_cmd, static_text<old_set_syntax>,
             static_text<old_set_help>)
{
    set_alarm_action(vty, argv[1]->text, argv[2]->text, true);
    enable(vty, argv[1]->text, argv[4]->arg, argv[5]->arg);
    return CMD_SUCCESS;
}

DEFUN_HIDDEN(alarm_global_threshold_unset, alarm_global_threshold_unset_cmd, static_text<old_unset_syntax>,
             static_text<old_unset_help>)
{
    set_alarm_action(vty, argv[1]->text, argv[2]->text, false);
    disable(argv[1]->text);
    return CMD_SUCCESS;
}

namespace {
constexpr InstallRow commands[] = {
    {config_node, &alarm_log_global_threshold_set_cmd},
    {config_node, &alarm_log_global_threshold_unset_cmd},
    {config_node, &alarm_global_threshold_set_cmd},
    {config_node, &alarm_global_threshold_unset_cmd},
};
} // namespace
constinit const CommandTable diagd::board_threshold_commands{commands};
