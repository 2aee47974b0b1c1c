// SPDX-License-Identifier: GPL-2.0-or-later
// Commands of an interface node for the optical thresholds of its port.  They live in memory; the running
// configuration keeps them.
// Failure policy: numbers that are refused change nothing.  An interface that this box cannot have takes the
// commands without effect and shows every alarm disabled.
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/alarm_log/thresholds/threshold_syntax.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

using namespace diagd;

namespace {

constexpr auto &names = pon_alarm_names_with_threshold;

constexpr auto enable_syntax = [] {
    return syntax_with_choice("alarm-log threshold", names, "enable WORD WORD");
};
constexpr auto enable_help = [] {
    return help_with_choice("Alarm log.\nThresholds.\n", names, THRESHOLD_ENABLE_HELP);
};
constexpr auto disable_syntax = [] { return syntax_with_choice("alarm-log threshold", names, "disable"); };
constexpr auto disable_help = [] {
    return help_with_choice("Alarm log.\nThresholds.\n", names, THRESHOLD_DISABLE_HELP);
};
constexpr auto no_enable_syntax = [] {
    return syntax_with_choice("no alarm-log threshold", names, "enable WORD WORD");
};
constexpr auto no_enable_help = [] {
    return help_with_choice("Negate a command or set its defaults\nAlarm log.\nThresholds.\n", names,
                            THRESHOLD_ENABLE_HELP);
};
constexpr auto old_enable_syntax = [] {
    return syntax_with_choice("alarm pon optical", pon_optical_names, "enable WORD WORD");
};
constexpr auto old_enable_help = [] {
    return help_with_choice("Configuration of alarms.\nAlarms of PON ports.\nAlarms of optical modules.\n",
                            pon_optical_names, THRESHOLD_ENABLE_HELP);
};
constexpr auto old_disable_syntax = [] {
    return syntax_with_choice("alarm pon optical", pon_optical_names, "disable");
};
constexpr auto old_disable_help = [] {
    return help_with_choice("Configuration of alarms.\nAlarms of PON ports.\nAlarms of optical modules.\n",
                            pon_optical_names, THRESHOLD_DISABLE_HELP);
};

// Of the session's interface; null when there can be none of its number.
PonPortThresholds *port_thresholds(const struct vty *vty)
{
    if (vty->slot != 0 || vty->port < 1 || vty->port > static_cast<int>(pon_port_count))
        return nullptr;
    const PortKind kind = vty->node == xgpon_node ? PortKind::xgpon : PortKind::gpon;
    return &thresholds_of(kind)[static_cast<std::size_t>(vty->port - 1)];
}

void enable(struct vty *vty, std::size_t alarm, const char *alarm_word, const char *clear_word)
{
    const std::optional<Thresholds> typed =
        typed_thresholds(vty, alarm_word, clear_word, pon_alarms_with_threshold[alarm].direction);
    if (!typed)
        return;
    if (PonPortThresholds *const port = port_thresholds(vty))
        (*port)[alarm] = {.enabled = 1, .alarm = typed->alarm, .clear = typed->clear};
}

// The numbers stay.
void disable(const struct vty *vty, std::size_t alarm)
{
    if (PonPortThresholds *const port = port_thresholds(vty))
        (*port)[alarm].enabled = 0;
}

void show_text(struct vty *vty, const PonPortThresholds &port)
{
    for (std::size_t i = 0; i < port.size(); ++i) {
        const char *const name = pon_alarms_with_threshold[i].name;
        if (port[i].enabled != 0)
            vty_out(vty, "%-20s: enable %s %s %s", name, ThresholdText{port[i].alarm}.c_str(),
                    ThresholdText{port[i].clear}.c_str(), line_end);
        else
            vty_out(vty, "%-20s: disable %s", name, line_end);
    }
}

void show_json(struct vty *vty, const PonPortThresholds &port)
{
    Json array = json_new_array();
    for (std::size_t i = 0; i < port.size(); ++i) {
        Json alarm = json_new_object();
        json_object_int_add(alarm.get(), "name", static_cast<std::int64_t>(i));
        json_object_int_add(alarm.get(), "enable", port[i].enabled);
        const auto add = [&](const char *key, float threshold) {
            if (port[i].enabled != 0)
                json_object_string_add(alarm.get(), key, ThresholdText{threshold}.c_str());
            else
                json_object_int_add(alarm.get(), key, whole_threshold(threshold));
        };
        add("set_thr_str", port[i].alarm);
        add("clear_thr_str", port[i].clear);
        json_object_array_add(array.get(), alarm.release());
    }
    const Json json = json_new_object();
    json_object_object_add(json.get(), "pon_optical_alarm", array.release());
    json_print(vty, json);
}

} // namespace

DEFUN(alarm_log_pon_threshold_enable, alarm_log_pon_threshold_enable_cmd, static_text<enable_syntax>,
      static_text<enable_help>)
{
    enable(vty, index_of(argv[2]->text, names), argv[4]->arg, argv[5]->arg);
    return CMD_SUCCESS;
}

DEFUN(alarm_log_pon_threshold_disable, alarm_log_pon_threshold_disable_cmd, static_text<disable_syntax>,
      static_text<disable_help>)
{
    disable(vty, index_of(argv[2]->text, names));
    return CMD_SUCCESS;
}

DEFUN_HIDDEN(cli_pon_alarm_disable, cli_pon_alarm_disable_cmd, static_text<old_disable_syntax>,
             static_text<old_disable_help>)
{
    disable(vty, index_of(argv[3]->text, pon_optical_names));
    return CMD_SUCCESS;
}

DEFUN_HIDDEN(cli_pon_alarm_enable, cli_pon_alarm_enable_cmd, static_text<old_enable_syntax>,
             static_text<old_enable_help>)
{
    enable(vty, index_of(argv[3]->text, pon_optical_names), argv[5]->arg, argv[6]->arg);
    return CMD_SUCCESS;
}

// Whatever the numbers are.
DEFUN(alarm_log_no_pon_threshold_enable, alarm_log_no_pon_threshold_enable_cmd, static_text<no_enable_syntax>,
      static_text<no_enable_help>)
{
    disable(vty, index_of(argv[3]->text, names));
    return CMD_SUCCESS;
}

DEFUN(alarm_log_pon_threshold_show, alarm_log_pon_threshold_show_cmd,
      "show alarm-log threshold configuration [json]",
      "Show information.\n"
      "Alarm log.\n"
      "Thresholds.\n"
      "Configuration of the interface.\n"
      "JavaScript Object Notation\n")
{
    static constexpr PonPortThresholds none{};
    const PonPortThresholds *const port = port_thresholds(vty);
    if (use_json(argc, argv))
        show_json(vty, port != nullptr ? *port : none);
    else
        show_text(vty, port != nullptr ? *port : none);
    return CMD_SUCCESS;
}

namespace {
// Each command goes into both interface nodes.
constexpr InstallRow commands[] = {
    {gpon_node, &alarm_log_pon_threshold_enable_cmd},
    {xgpon_node, &alarm_log_pon_threshold_enable_cmd},
    {gpon_node, &alarm_log_pon_threshold_disable_cmd},
    {xgpon_node, &alarm_log_pon_threshold_disable_cmd},
    {gpon_node, &cli_pon_alarm_disable_cmd},
    {xgpon_node, &cli_pon_alarm_disable_cmd},
    {gpon_node, &cli_pon_alarm_enable_cmd},
    {xgpon_node, &cli_pon_alarm_enable_cmd},
    {gpon_node, &alarm_log_no_pon_threshold_enable_cmd},
    {xgpon_node, &alarm_log_no_pon_threshold_enable_cmd},
    {gpon_node, &alarm_log_pon_threshold_show_cmd},
    {xgpon_node, &alarm_log_pon_threshold_show_cmd},
};
} // namespace
constinit const CommandTable diagd::pon_threshold_commands{commands};
