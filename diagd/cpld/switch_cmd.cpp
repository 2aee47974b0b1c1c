// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that switch LEDs, fans, and ports by hand.  They write the register and nothing else: the fan
// monitor keeps its own settings, and writes them over these at its next pass.
// Failure policy: a CPLD that cannot be opened makes the command a warning, without a word.
#include "diagd/cpld/cpld_cmd.hpp"

#include "diagd/board/registers.hpp"
#include "diagd/board/session.hpp"
#include "diagd/cpld/port_switch.hpp"

#include <cstdlib>
#include <string_view>

using diagd::BoardSession;
using diagd::CpldRegister;
using diagd::PortGroup;
using diagd::SessionPolicy;

namespace {

int set_register(const char *reason, CpldRegister reg, std::uint8_t value) noexcept
{
    const BoardSession board{reason, SessionPolicy::release_then_lower};
    if (!board)
        return CMD_WARNING;
    diagd::write_register(board.handle(), reg, value);
    return CMD_SUCCESS;
}

bool is_word(const struct cmd_token *token, std::string_view word) noexcept
{
    return token->text == word;
}

// The tail of a command's arguments: on or off, then perhaps the port; without it every port is meant.
int set_ports(const char *reason, CpldRegister reg, PortGroup group, int argc,
              struct cmd_token *argv[]) noexcept
{
    constexpr int state_at = 2;
    constexpr int port_at = 3;

    const bool on = is_word(argv[state_at], "on");
    const BoardSession board{reason, SessionPolicy::release_then_lower};
    if (!board)
        return CMD_WARNING;
    if (argc > port_at)
        diagd::switch_port(board.handle(), reg,
                           static_cast<unsigned>(std::strtoul(argv[port_at]->arg, nullptr, 10)), on);
    else
        diagd::switch_every_port(board.handle(), reg, group, diagd::RecordTest::in_service_and_ready, on);
    return CMD_SUCCESS;
}

} // namespace

int diagd::switch_system_led_on() noexcept
{
    return set_register("cpld_system_led_on", CpldRegister::system_led, 1);
}

DEFUN(system_led, system_led_cmd, "system led on",
      "system config.\n"
      "system led config.\n"
      "system led enable.\n")
{
    return diagd::switch_system_led_on();
}

DEFUN(usb_led, usb_led_cmd, "usb led <on|off>",
      "usb config.\n"
      "usb led.\n"
      "usb led on.\n"
      "usb led off.\n")
{
    return set_register("usb_led", CpldRegister::usb_led, is_word(argv[2], "on") ? 1 : 0);
}

DEFUN(pon_led, pon_led_cmd, "pon led <on|off> [(1-8)]",
      "pon config.\n"
      "pon led.\n"
      "pon led on.\n"
      "pon led off.\n"
      "pon index.\n")
{
    return set_ports("pon_led", CpldRegister::pon_led, PortGroup::pon, argc, argv);
}

DEFUN(pon_power_config, pon_power_config_cmd, "pon power <on|off> [(1-8)]",
      "pon config.\n"
      "pon power.\n"
      "pon power on.\n"
      "pon power off.\n"
      "pon index.\n")
{
    return set_ports("pon_power_config", CpldRegister::pon_power, PortGroup::pon, argc, argv);
}

DEFUN(pon_tx_config, pon_tx_config_cmd, "pon tx <on|off> [(1-8)]",
      "pon config.\n"
      "pon tx.\n"
      "pon tx on.\n"
      "pon tx off.\n"
      "pon index.\n")
{
    return set_ports("pon_tx_config", CpldRegister::pon_transmitter, PortGroup::pon, argc, argv);
}

DEFUN(sfp_power_config, sfp_power_config_cmd, "sfp power <on|off> [(1-6)]",
      "sfp config.\n"
      "sfp power.\n"
      "sfp power on.\n"
      "sfp power off.\n"
      "sfp index.\n")
{
    return set_ports("sfp_power_config", CpldRegister::sfp_power, PortGroup::sfp, argc, argv);
}

DEFUN(fan_mode, fan_mode_cmd, "fan mode <open|close>",
      "fan config.\n"
      "fan mode.\n"
      "fan open.\n"
      "fan close.\n")
{
    return set_register("fan_mode", CpldRegister::fan_power, is_word(argv[2], "open") ? 1 : 0);
}

DEFUN(fan_speed, fan_speed_cmd, "fan speed <low|medium|high>",
      "fan config.\n"
      "fan speed.\n"
      "fan speed low.\n"
      "fan speed medium.\n"
      "fan speed high.\n")
{
    const std::uint8_t speed = is_word(argv[2], "low") ? 1 : is_word(argv[2], "medium") ? 2 : 3;
    return set_register("fan_speed", CpldRegister::fan_speed, speed);
}
