// SPDX-License-Identifier: GPL-2.0-or-later
// Raw I2C devices, read and written by hand when a board is brought up or looked into.  The monitors' traffic
// on the same buses is not held off: a transaction is whole, a row of them is not.
// Failure policy: a bus that cannot be opened makes the command a warning, without a word; a device that does
// not answer shows 0; a failed write is not reported.
#include "base/fd.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/text.hpp"

#include "util_i2c.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

using diagd::find_decimal;
using diagd::find_hex;
using diagd::line_end;

namespace {

constexpr long buffer_size = 1024;
constexpr long bytes_per_line = 16;

// `reason` names the operation for the privilege raise; it must be a literal.
base::Fd open_bus(const char *reason, long bus) noexcept
{
    return base::Fd{
        diagd::with_privileges(reason, [bus] { return misc_i2c_device_init(static_cast<int>(bus)); })};
}

} // namespace

DEFUN(debug_i2c_read, debug_i2c_read_cmd, "i2c (0-3) read SLAVE_ADDR_HEX REG_ADDR_HEX [LENGTH_DEC]",
      "Misc I2C command\n"
      "I2C bus.\n"
      "I2C read.\n"
      "I2C slave address.\n"
      "Register address.\n"
      "Length.\n")
{
    const auto bus = find_decimal(argc, argv, "(0-3)");
    const auto slave = find_hex(argc, argv, "SLAVE_ADDR_HEX");
    const auto reg = find_hex(argc, argv, "REG_ADDR_HEX");
    if (!bus || !slave || !reg)
        return CMD_SUCCESS;
    const long asked = find_decimal(argc, argv, "LENGTH_DEC").value_or(1);
    const long length = std::clamp(asked, 0L, buffer_size);
    if (length < asked)
        zlog_warn("i2c read: length %ld is capped at %ld", asked, length);

    const base::Fd handle = open_bus("debug_i2c_read", *bus);
    if (!handle)
        return CMD_WARNING;
    std::array<std::uint8_t, buffer_size> data{};
    misc_i2c_read(handle.get(), static_cast<std::uint8_t>(*slave), static_cast<std::uint8_t>(*reg),
                  data.data(), static_cast<int>(length), 0);

    vty_out(vty, "%s", line_end);
    for (long k = 0; k < length; ++k) {
        if (k % bytes_per_line == 0)
            vty_out(vty, "%s", line_end);
        vty_out(vty, "0x%.4x ", data[static_cast<std::size_t>(k)]);
    }
    vty_out(vty, "%s", line_end);
    return CMD_SUCCESS;
}

DEFUN(debug_i2c_write, debug_i2c_write_cmd, "i2c (0-3) write SLAVE_ADDR_HEX REG_ADDR_HEX VALUE_HEX",
      "Misc I2C command\n"
      "I2C bus.\n"
      "I2C write.\n"
      "I2C slave address.\n"
      "Register address.\n"
      "Register value.\n")
{
    const auto bus = find_decimal(argc, argv, "(0-3)");
    const auto slave = find_hex(argc, argv, "SLAVE_ADDR_HEX");
    const auto reg = find_hex(argc, argv, "REG_ADDR_HEX");
    const auto value = find_hex(argc, argv, "VALUE_HEX");
    if (!bus || !slave || !reg || !value)
        return CMD_SUCCESS;

    const base::Fd handle = open_bus("debug_i2c_write", *bus);
    if (!handle)
        return CMD_WARNING;
    auto byte = static_cast<std::uint8_t>(*value);
    misc_i2c_write(handle.get(), static_cast<std::uint8_t>(*slave), static_cast<std::uint8_t>(*reg), &byte, 1,
                   0);
    return CMD_SUCCESS;
}

DEFUN(debug_i2c, debug_i2c_cmd, "[no] debug i2c",
      "Negate a command or set its defaults\n"
      "Debugging functions\n"
      "I2C DEBUG\n")
{
    const diagd::Privileges raised{"debug_i2c"};
    misc_i2c_debug_set(std::strcmp(argv[0]->text, "no") == 0 ? 0 : 1);
    return CMD_SUCCESS;
}

namespace {

constexpr diagd::InstallRow commands[] = {
    {diagd::diagnose_node, &debug_i2c_read_cmd},
    {diagd::diagnose_node, &debug_i2c_write_cmd},
    {diagd::diagnose_node, &debug_i2c_cmd},
};

} // namespace

int i2c_cmd_init()
{
    diagd::install_table(commands);
    return 0;
}
