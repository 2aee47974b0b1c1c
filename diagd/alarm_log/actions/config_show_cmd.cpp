// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that show the configuration of alarms as a table.
// Failure policy: an alarm that cannot be read has no row; a whole table that cannot be read is one line of
// text.
#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include <algorithm>
#include <array>

using namespace diagd;

namespace {

// In the order of the actions.
using Switches = std::array<bool, action_switches.size()>;

// A column for each action, and the end of the line.
template <typename Text>
void print_actions(struct vty *vty, Text text_of)
{
    for (std::size_t i = 0; i < action_switches.size(); ++i) {
        const std::string_view text = text_of(i);
        vty_out(vty, " %-8.*s", print_length(text), text.data());
    }
    vty_out(vty, "\n");
}

void print_header(struct vty *vty)
{
    vty_out(vty, "%-4s %-25s %-30s %-10s %-10s %-8s", "id", "name", "description", "level", "type", "class");
    print_actions(vty, [](std::size_t i) { return action_switches[i].word; });
}

void print_row(struct vty *vty, std::uint16_t id, std::string_view level, const Switches &on)
{
    const std::string_view name = alarm_name(id);
    const std::string_view description = alarm_description(id);
    const std::string_view type = alarm_type_name(id);
    const std::string_view class_name = alarm_class_name(id);
    vty_out(vty, "%-4d %-25.*s %-30.*s %-10.*s %-10.*s %-8.*s", id, print_length(name), name.data(),
            print_length(description), description.data(), print_length(level), level.data(),
            print_length(type), type.data(), print_length(class_name), class_name.data());
    print_actions(vty, [&on](std::size_t i) { return on[i] ? "enable" : "disable"; });
}

void show_alarm(struct vty *vty, std::uint16_t id)
{
    char level[16];
    int length = sizeof level;
    if (db_olt_alarm_log_get_alarm_level(id, &g_diagd_db, level, &length) != 0)
        return;
    Switches on;
    for (std::size_t i = 0; i < on.size(); ++i) {
        std::uint8_t value = 0;
        length = sizeof value;
        if (action_switches[i].get(id, &g_diagd_db, &value, &length) != 0)
            return;
        on[i] = value != 0;
    }
    print_row(vty, id, field_text(level), on);
}

// The group words of the command: what they select.
struct Selection {
    std::string_view word;
    enum class By { class_, group, nothing } by;
    std::uint32_t index;
};
constexpr Selection selections[] = {
    {"alarm", Selection::By::class_, 0}, {"event", Selection::By::class_, 1},
    {"global", Selection::By::group, 0}, {"onu", Selection::By::group, 1},
    {"pon", Selection::By::group, 2},    {"route", Selection::By::group, 3},
    {"all", Selection::By::nothing, 0},
};

bool is_selected(const tq_alarm_info_t &entry, std::string_view word)
{
    for (const Selection &selection : selections) {
        if (selection.word != word)
            continue;
        switch (selection.by) {
        case Selection::By::class_:
            return entry.class_ == selection.index;
        case Selection::By::group:
            return entry.group == selection.index;
        case Selection::By::nothing:
            return true;
        }
    }
    return false;
}

} // namespace

DEFUN(show_alarm_log_cfg_name, show_alarm_log_cfg_name_cmd, "show alarm-log configuration name WORD",
      "Show information.\n"
      "Alarm log.\n"
      "Configuration of alarms and events.\n"
      "Specify by name.\n"
      "Name of the alarm or event.\n")
{
    print_header(vty);
    if (const std::optional<std::uint16_t> id = find_alarm(argv[4]->arg))
        show_alarm(vty, *id);
    return CMD_SUCCESS;
}

DEFUN(show_alarm_log_cfg_id, show_alarm_log_cfg_id_cmd, "show alarm-log configuration id (0-65535)",
      "Show information.\n"
      "Alarm log.\n"
      "Configuration of alarms and events.\n"
      "Specify by id.\n"
      "Id of the alarm or event.\n")
{
    print_header(vty);
    if (const std::optional<std::uint16_t> id = typed_alarm_id(argv[4]->arg))
        show_alarm(vty, *id);
    return CMD_SUCCESS;
}

DEFUN(show_alarm_log_cfg, show_alarm_log_cfg_cmd,
      "show alarm-log <alarm|event|pon|onu|global|route|all> configuration",
      "Show information.\n"
      "Alarm log.\n"
      "Every alarm.\n"
      "Every event.\n"
      "Alarms and events of PON ports.\n"
      "Alarms and events of ONUs.\n"
      "Alarms and events of the whole device.\n"
      "Alarms and events of routing.\n"
      "Every alarm and event.\n"
      "Configuration of alarms and events.\n")
{
    const std::optional<AlarmConfiguration> configuration = read_alarm_configuration();
    if (!configuration) {
        vty_out(vty, "get alarm log list data xml failed!\n");
        return CMD_SUCCESS;
    }
    print_header(vty);
    for (std::uint16_t id = 0; id < TQ_ALARM_COUNT; ++id) {
        const tq_alarm_cfg_t &one = (*configuration)[id];
        if (!is_selected(tq_alarm_log_info[id], argv[2]->text))
            continue;
        Switches on;
        std::ranges::transform(action_switches, on.begin(),
                               [&one](const ActionSwitch &action) { return one.*action.configured != 0; });
        print_row(vty, id, field_text(one.level), on);
    }
    return CMD_SUCCESS;
}

namespace {
constexpr InstallRow commands[] = {
    {config_node, &show_alarm_log_cfg_cmd},
    {config_node, &show_alarm_log_cfg_name_cmd},
    {config_node, &show_alarm_log_cfg_id_cmd},
};
} // namespace
constinit const CommandTable diagd::configuration_show_commands{commands};
