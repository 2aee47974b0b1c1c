// SPDX-License-Identifier: GPL-2.0-or-later
// Registers of the Ethernet PHYs, read and written by hand when a board is brought up or looked into.  The
// PHYs are on no bus that the board's semaphore guards.
// Failure policy: a PHY that cannot be read shows 0, one that cannot be identified shows nothing; a failed
// write is not reported.
#include "diagd/core/command.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/text.hpp"
#include "diagd/registers_cli/phy_register.hpp"

#include "util_phy.h"

#include <cstring>
#include <string_view>

using diagd::line_end;
using diagd::Privileges;

namespace {

constexpr const char *access_interface = "aux"; // the name by which the PHY library knows the MDIO bus

std::optional<std::uint32_t> find_hex(int argc, struct cmd_token *argv[], const char *name) noexcept
{
    const auto number = diagd::find_hex(argc, argv, name);
    return number ? std::optional{static_cast<std::uint32_t>(*number)} : std::nullopt;
}

// The keyword of a mode, which the operator may have shortened; direct access when there is none.
std::string_view mode_word(int argc, struct cmd_token *argv[], int at) noexcept
{
    return argc > at ? argv[at]->text : "ieee";
}

std::uint32_t read_register(std::uint32_t phy, std::uint32_t reg) noexcept
{
    std::uint32_t value = 0;
    misc_phy_read(access_interface, phy, reg, &value);
    return value;
}

} // namespace

DEFUN(debug_phy_read, debug_phy_read_cmd, "phy read PHY_ID_HEX REG_HEX [<ieee|rdb|clause45 DEVAD>]",
      "PHY configuration commands\n"
      "Read PHY information.\n"
      "Specify phy id.\n"
      "Specify get phy reg.\n"
      "IEEE Registers.\n"
      "RDB Registers.\n"
      "Clause 45 Registers.\n"
      "Device Address.\n")
{
    constexpr int mode_at = 4;

    const auto phy = find_hex(argc, argv, "PHY_ID_HEX");
    auto reg = find_hex(argc, argv, "REG_HEX");
    if (!phy || !reg)
        return CMD_ERR_INCOMPLETE;
    const std::string_view mode = mode_word(argc, argv, mode_at);
    std::uint32_t value = 0;

    Privileges raised{"debug_phy_read"};
    if (mode == "ieee") {
        value = read_register(*phy, *reg);
    } else if (mode == "rdb") {
        misc_phy_write(access_interface, *phy, diagd::phy_indirect_address, *reg);
        value = read_register(*phy, diagd::phy_indirect_value);
    } else if (mode == "clause45") {
        reg = diagd::clause45_register(find_hex(argc, argv, "DEVAD").value_or(0), *reg);
        value = read_register(*phy, *reg);
    }
    raised.lower();

    vty_out(vty, "phy 0x%x register 0x%x value 0x%x%s", *phy, *reg, value, line_end);
    return CMD_SUCCESS;
}

DEFUN(debug_phy_write, debug_phy_write_cmd, "phy write PHY_ID_HEX REG_HEX VALUE_HEX",
      "PHY configuration commands\n"
      "Write PHY.\n"
      "Specify phy id.\n"
      "Specify set phy reg.\n"
      "Specify phy reg value.\n")
{
    const auto phy = find_hex(argc, argv, "PHY_ID_HEX");
    const auto reg = find_hex(argc, argv, "REG_HEX");
    const auto value = find_hex(argc, argv, "VALUE_HEX");
    if (!phy || !reg || !value)
        return CMD_SUCCESS;
    const Privileges raised{"debug_phy_write"};
    misc_phy_write(access_interface, *phy, *reg, *value);
    return CMD_SUCCESS;
}

DEFUN(debug_phy_info, debug_phy_info_cmd, "phy info PHY_ID_HEX",
      "PHY configuration commands\n"
      "Show PHY information.\n"
      "Specify phy id.\n")
{
    const auto phy = find_hex(argc, argv, "PHY_ID_HEX");
    if (!phy)
        return CMD_SUCCESS;
    std::uint32_t oui = 0;
    std::uint8_t model = 0;
    std::uint8_t revision = 0;
    Privileges raised{"debug_phy_info"};
    const int result = misc_phy_info(access_interface, *phy, &oui, &model, &revision);
    raised.lower();
    if (result == 0)
        vty_out(vty, "PHY 0x%02X: OUI = 0x%04X, Model = 0x%02X, Rev = 0x%02X\n", *phy, oui, model, revision);
    return CMD_SUCCESS;
}

DEFUN(debug_phy_reset, debug_phy_reset_cmd, "phy reset PHY_ID_HEX",
      "PHY configuration commands\n"
      "Reset PHY.\n"
      "Specify phy id.\n")
{
    const auto phy = find_hex(argc, argv, "PHY_ID_HEX");
    if (!phy)
        return CMD_SUCCESS;
    const Privileges raised{"debug_phy_reset"};
    misc_phy_reset(access_interface, *phy);
    return CMD_SUCCESS;
}

// The standard's registers only: what lies behind rdb and clause 45 numbers is too much for a dump, and
// reading some of it changes it.
DEFUN(debug_phy_dump, debug_phy_dump_cmd, "phy dump PHY_ID_HEX [<ieee|rdb|clause45>]",
      "PHY configuration commands\n"
      "Dump PHY information.\n"
      "Specify phy id.\n"
      "IEEE Registers.\n"
      "RDB Registers.\n"
      "Clause 45 Registers.\n")
{
    constexpr int mode_at = 3;

    const auto phy = find_hex(argc, argv, "PHY_ID_HEX");
    if (!phy)
        return CMD_WARNING_CONFIG_FAILED;
    const std::string_view mode = mode_word(argc, argv, mode_at);
    if (mode != "ieee" && mode != "rdb" && mode != "clause45")
        return CMD_WARNING;
    vty_out(vty, "PHY 0x%x%s", *phy, line_end);
    if (mode != "ieee")
        return CMD_SUCCESS;

    Privileges raised{"debug_phy_dump"};
    vty_out(vty, "00: ");
    for (std::uint32_t reg = 0; reg < diagd::phy_standard_registers; ++reg)
        vty_out(vty, "0x%.4x ", read_register(*phy, reg));
    raised.lower();
    vty_out(vty, "%s", line_end);
    return CMD_SUCCESS;
}

DEFUN(debug_phy, debug_phy_cmd, "[no] debug phy",
      "Negate a command or set its defaults\n"
      "Debugging functions\n"
      "PHY DEBUG\n")
{
    const Privileges raised{"debug_phy"};
    misc_phy_debug_set(std::strcmp(argv[0]->text, "no") == 0 ? 0 : 1);
    return CMD_SUCCESS;
}

namespace {

constexpr diagd::InstallRow commands[] = {
    {diagd::diagnose_node, &debug_phy_read_cmd}, {diagd::diagnose_node, &debug_phy_write_cmd},
    {diagd::diagnose_node, &debug_phy_info_cmd}, {diagd::diagnose_node, &debug_phy_reset_cmd},
    {diagd::diagnose_node, &debug_phy_dump_cmd}, {diagd::diagnose_node, &debug_phy_cmd},
};

} // namespace

int phy_cmd_init()
{
    diagd::install_table(commands);
    return 0;
}
