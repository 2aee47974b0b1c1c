// SPDX-License-Identifier: GPL-2.0-or-later
// The fans' commands and their lines of the running configuration.
// Failure policy: a speed that cannot be written because the CPLD does not open changes nothing and returns a
// warning without a word.
#include "diagd/monitors/fan/fan.hpp"

#include "diagd/board/lm75.hpp"
#include "diagd/board/registers.hpp"
#include "diagd/board/session.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"

#include "util_cpld.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using diagd::config_node;
using diagd::line_end;
using std::memory_order_relaxed;

namespace {

constexpr const char *ruler = " --------------------------------------------";

const char *mode_text(const diagd::FanWord &word)
{
    return fan_mode_str_get(word.load(memory_order_relaxed));
}

const char *speed_text(const diagd::FanWord &word)
{
    return fan_speed_str_get(word.load(memory_order_relaxed));
}

unsigned open_temperature()
{
    return static_cast<unsigned>(fan_temperature_get());
}

int fan_config_write(struct vty *vty) noexcept
{
    const std::int32_t mode = fan_master.mode.load(memory_order_relaxed);
    vty_out(vty, "!%s", line_end);
    if (fan_temperature_get() != diagd::default_temperature)
        vty_out(vty, "fan temperature %u%s", open_temperature() / 10, line_end);
    // Closed fans are not kept over a restart, on purpose: a board must not boot into overheating.
    if (mode != diagd::fan_close && mode != diagd::fan_auto)
        vty_out(vty, "fan mode %s%s", fan_mode_str_get(mode), line_end);
    if (fan_master.speed.load(memory_order_relaxed) != diagd::speed_auto)
        vty_out(vty, "fan speed %s%s", speed_text(fan_master.speed), line_end);
    return 0;
}

struct NamedSpeed {
    const char *name;
    diagd::FanSpeed speed;
};
constexpr std::array named_speeds{
    NamedSpeed{"low", diagd::speed_low},
    NamedSpeed{"medium", diagd::speed_medium},
    NamedSpeed{"high", diagd::speed_high},
    NamedSpeed{"auto", diagd::speed_auto},
};

diagd::FanSpeed speed_of(const struct cmd_token *token)
{
    for (const NamedSpeed &entry : named_speeds)
        if (std::strcmp(token->text, entry.name) == 0)
            return entry.speed;
    return diagd::speed_auto; // the command's syntax lets no other word through
}

void show_fan_json(struct vty *vty)
{
    const diagd::Json json = diagd::json_new_object();
    json_object_int_add(json.get(), "fanTemperature", fan_temperature_get() / 10);
    json_object_string_add(json.get(), "fanMode", mode_text(fan_master.mode));
    json_object_string_add(json.get(), "fanSpeed", speed_text(fan_master.speed));
    json_object_string_add(json.get(), "currentFanMode", mode_text(fan_master.state));
    json_object_string_add(json.get(), "currentFanSpeed", speed_text(fan_master.current_speed));
    diagd::json_print(vty, json);
}

} // namespace

DEFUN(fan_temperature_ctrl, fan_temperature_ctrl_cmd, "fan temperature (20-80)",
      "Specify olt fan management.\n"
      "Specify the temperature the fans to work.\n"
      "Specify temperature value.\n")
{
    fan_temperature_set(static_cast<unsigned>(std::strtoul(argv[2]->arg, nullptr, 10)));
    return CMD_SUCCESS;
}

DEFUN(fan_mode_ctrl, fan_mode_ctrl_cmd, "fan mode <auto|open|close>",
      "Specify olt fan management.\n"
      "Specify fan working mode.\n"
      "Specify auto mode.\n"
      "Open the fan.\n"
      "Close the fan.\n")
{
    if (std::strcmp(argv[2]->text, "auto") == 0)
        fan_mode_set(diagd::fan_auto);
    else if (std::strcmp(argv[2]->text, "open") == 0)
        fan_mode_set(diagd::fan_open);
    else
        fan_mode_set(diagd::fan_close);
    return CMD_SUCCESS;
}

DEFUN(fan_speed_ctrl, fan_speed_ctrl_cmd, "fan speed <low|medium|high|auto>",
      "fan config.\n"
      "fan speed.\n"
      "fan speed low.\n"
      "fan speed medium.\n"
      "fan speed high.\n"
      "fan speed auto.\n")
{
    const diagd::FanSpeed speed = speed_of(argv[2]);
    const diagd::BoardSession board{"fan_speed_ctrl", diagd::SessionPolicy::release_then_lower};
    if (!board)
        return CMD_WARNING;
    // The register takes the code of "auto", too; the monitor's next pass replaces it with a level.
    diagd::write_register(board.handle(), diagd::CpldRegister::fan_speed, static_cast<std::uint8_t>(speed));
    fan_master.speed.store(speed, memory_order_relaxed);
    if (speed != diagd::speed_auto)
        fan_master.current_speed.store(speed, memory_order_relaxed);
    return CMD_SUCCESS;
}

DEFUN(show_temperature, show_temperature_cmd, "show temperature [json]",
      "Show running system information\n"
      "Device temperature\n"
      "JavaScript Object Notation\n")
{
    const int temperature = lm75_temperature_get();
    char text[32];
    std::snprintf(text, sizeof text, "%d.%d", temperature / 10, std::abs(temperature % 10));
    if (!use_json(argc, argv)) {
        vty_out(vty, " Current temperature: %s .C%s", text, line_end);
        return CMD_SUCCESS;
    }
    const diagd::Json json = diagd::json_new_object();
    json_object_string_add(json.get(), "temperature", text);
    diagd::json_print(vty, json);
    return CMD_SUCCESS;
}

DEFUN(show_fan, show_fan_cmd, "show fan [json]",
      "Show running system information\n"
      "Specify fan information\n"
      "JavaScript Object Notation\n")
{
    if (use_json(argc, argv)) {
        show_fan_json(vty);
        return CMD_SUCCESS;
    }
    vty_out(vty, " Chassis Fans State Information%s", line_end);
    vty_out(vty, "%s%s", ruler, line_end);
    vty_out(vty, " FAN state: %s%s", mode_text(fan_master.mode), line_end);
    vty_out(vty, " Current FAN state: %s%s", mode_text(fan_master.state), line_end);
    vty_out(vty, " FAN speed: %s%s", speed_text(fan_master.speed), line_end);
    vty_out(vty, " Current FAN speed: %s%s", speed_text(fan_master.current_speed), line_end);
    const int temperature = lm75_temperature_get();
    vty_out(vty, " Current temperature:%d.%d .C%s", temperature / 10, std::abs(temperature % 10), line_end);
    vty_out(vty, " Open fan temperature:%u.%u .C%s", open_temperature() / 10, open_temperature() % 10,
            line_end);
    vty_out(vty, "%s%s", ruler, line_end);
    return CMD_SUCCESS;
}

DEFUN(show_fan_running_config, show_fan_running_config_cmd, "show running-config fan",
      "Show running system information\n"
      "running configuration (same as write terminal)\n"
      "fan\n")
{
    fan_config_write(vty);
    return CMD_SUCCESS;
}

namespace {

// Never entered: it exists to write its part of the running configuration.
struct cmd_node fan_cmd_node = {
    .name = "fan",
    .node = diagd::fan_node,
    .prompt = "",
    .config_write = fan_config_write,
};

constexpr diagd::InstallRow commands[] = {
    {config_node, &fan_temperature_ctrl_cmd},
    {config_node, &fan_mode_ctrl_cmd},
    {config_node, &fan_speed_ctrl_cmd},
    {config_node, &show_temperature_cmd},
    {config_node, &show_fan_cmd},
    {config_node, &show_fan_running_config_cmd},
};

} // namespace

int fan_cmd_init()
{
    install_node(&fan_cmd_node);
    diagd::install_table(commands);
    return 0;
}
