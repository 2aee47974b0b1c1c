// SPDX-License-Identifier: GPL-2.0-or-later
// libutil_cpld: registers of the CPLD and the module channels behind it.
//
// Failure policy: a call that the hardware does not answer returns -1 with errno within about a second and
// leaves the caller's value untouched; nothing is retried.
#include "util_cpld.h"

#include <unistd.h>

#include <climits>

#include "base/fd.hpp"
#include "platform/board/c_api.hpp"
#include "platform/trace/tq_trace.hpp"

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT std::uint8_t cpld_debug;
std::uint8_t cpld_debug = 0;

namespace {

using board::on_bus;

int read_byte(int handle, std::uint8_t reg, std::uint8_t *value)
{
    if (value == nullptr)
        return board::fail(EINVAL);
    const int result = on_bus([&](const board::Bus &bus) { return bus.cpld_read(handle, reg, *value); });
    board::debug_line(cpld_debug, "cpld read handle %d register 0x%02x value 0x%02x ret %d", handle, reg,
                      result == 0 ? *value : 0, result);
    return result;
}

int write_byte(int handle, std::uint8_t reg, std::uint8_t value)
{
    const int result = on_bus([&](const board::Bus &bus) { return bus.cpld_write(handle, reg, value); });
    board::debug_line(cpld_debug, "cpld write handle %d register 0x%02x value 0x%02x ret %d", handle, reg,
                      value, result);
    return result;
}

int open_handle(int bus_number)
{
    const int result =
        on_bus([&](const board::Bus &bus) { return bus.open(bus_number, board::HandleKind::cpld); });
    board::debug_line(cpld_debug, "cpld open bus %d ret %d", bus_number, result);
    return result;
}

// Reads the register that the board's description names.
int read_described(int handle, std::uint8_t board::Cpld::*reg, std::uint8_t *value)
{
    std::string error;
    const board::Board *board = board::this_board(error);
    return board != nullptr ? read_byte(handle, board->cpld.*reg, value) : board::fail(ENODEV);
}

int init(std::uint8_t *bus, std::uint8_t *address, int max_bus)
{
    std::string error;
    const board::Board *board = board::this_board(error);
    if (bus == nullptr || address == nullptr)
        return board::fail(EINVAL);
    if (board == nullptr || board->cpld.bus >= max_bus)
        return board::fail(ENODEV);
    *bus = static_cast<std::uint8_t>(board->cpld.bus);
    *address = board->cpld.address;
    return 0;
}

int set_operation(int on)
{
    std::string error;
    const board::Board *board = board::this_board(error);
    if (board == nullptr)
        return board::fail(ENODEV);
    const base::Fd handle(open_handle(board->cpld.bus));
    if (!handle)
        return -1;
    return write_byte(handle.get(), board->cpld.operation_register, on != 0 ? 1 : 0);
}

} // namespace

EXPORT int misc_cpld_i2c_init(uint8_t *bus, uint8_t *addr, int max_bus)
{
    return tq::traced(
        __func__, [&] { return init(bus, addr, max_bus); }, tq::arg("n", max_bus), tq::out("bus", bus),
        tq::out("addr", addr));
}

EXPORT int misc_cpld_i2c_open(int bus)
{
    return tq::traced(
        __func__, [&] { return open_handle(bus); }, tq::arg("bus", bus));
}

EXPORT int misc_cpld_i2c_close(int handle)
{
    return tq::traced(
        __func__, [&] { return ::close(handle); }, tq::arg("h", handle));
}

EXPORT int misc_cpld_i2c_read_byte(int handle, uint8_t reg, uint8_t *value)
{
    return tq::traced(
        __func__, [&] { return read_byte(handle, reg, value); }, tq::arg("h", handle), tq::arg("reg", reg),
        tq::out("val", value));
}

EXPORT int misc_cpld_i2c_set_byte(int handle, uint8_t reg, uint8_t value)
{
    return tq::traced(
        __func__, [&] { return write_byte(handle, reg, value); }, tq::arg("h", handle), tq::arg("reg", reg),
        tq::hex("val", value));
}

EXPORT int misc_cpld_i2c_power_state_get(int handle, uint8_t *state)
{
    return tq::traced(
        __func__, [&] { return read_described(handle, &board::Cpld::power_register, state); },
        tq::arg("h", handle), tq::out("state", state));
}

EXPORT int misc_cpld_i2c_logic_version_get(int handle, uint8_t *version)
{
    return tq::traced(
        __func__, [&] { return read_described(handle, &board::Cpld::logic_version_register, version); },
        tq::arg("h", handle), tq::out("version", version));
}

EXPORT int misc_cpld_i2c_device_type_get(int handle, uint8_t *type)
{
    return tq::traced(
        __func__, [&] { return read_described(handle, &board::Cpld::device_type_register, type); },
        tq::arg("h", handle), tq::out("type", type));
}

EXPORT int misc_cpld_oper_set(int on)
{
    return tq::traced(
        __func__, [&] { return set_operation(on); }, tq::arg("on", on));
}

EXPORT int misc_cpld_channel_select(int handle, int channel)
{
    return tq::traced(
        __func__,
        [&] {
            const int result = on_bus([&](const board::Bus &bus) { return bus.select(handle, channel); });
            board::debug_line(cpld_debug, "cpld select handle %d channel %d ret %d", handle, channel, result);
            return result;
        },
        tq::arg("h", handle), tq::arg("channel", channel));
}

EXPORT int misc_cpld_channel_select_end(int handle)
{
    return tq::traced(
        __func__,
        [&] {
            const int result = on_bus([&](const board::Bus &bus) { return bus.deselect(handle); });
            board::debug_line(cpld_debug, "cpld select end handle %d ret %d", handle, result);
            return result;
        },
        tq::arg("h", handle));
}

EXPORT int misc_cpld_debug_get(void)
{
    return tq::traced(__func__, [] { return board::get_debug(cpld_debug); });
}

EXPORT int misc_cpld_debug_set(int on)
{
    return tq::traced(
        __func__, [&] { return board::set_debug(cpld_debug, on); }, tq::arg("on", on));
}
