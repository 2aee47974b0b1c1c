// SPDX-License-Identifier: GPL-2.0-or-later
// libutil_i2c: raw access to I2C devices.
//
// Failure policy: a device that does not acknowledge, or hardware that does not answer, gives -1 with errno
// within about a second; the caller's buffer is then undefined.  Nothing is retried.
#include "util_i2c.h"

#include "platform/board/c_api.hpp"
#include "platform/trace/tq_trace.hpp"

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace {

std::uint8_t i2c_debug = 0;

bool usable(const std::uint8_t *buf, int len)
{
    return len >= 0 && static_cast<std::size_t>(len) <= board::Bus::max_transfer &&
           (buf != nullptr || len == 0);
}

int read_device(int handle, std::uint8_t address, std::uint8_t reg, std::uint8_t *buf, int len)
{
    if (!usable(buf, len))
        return board::fail(EINVAL);
    if (len == 0)
        return 0;
    const std::span data(buf, static_cast<std::size_t>(len));
    const int result =
        board::on_bus([&](const board::Bus &bus) { return bus.read(handle, address, reg, data); });
    board::debug_line(i2c_debug,
                      "i2c read handle %d slave 0x%02x register 0x%02x length %d first 0x%02x ret %d", handle,
                      address, reg, len, result == 0 ? buf[0] : 0, result);
    return result;
}

int write_device(int handle, std::uint8_t address, std::uint8_t reg, const std::uint8_t *buf, int len)
{
    if (!usable(buf, len))
        return board::fail(EINVAL);
    if (len == 0)
        return 0;
    const std::span data(buf, static_cast<std::size_t>(len));
    const int result =
        board::on_bus([&](const board::Bus &bus) { return bus.write(handle, address, reg, data); });
    board::debug_line(i2c_debug,
                      "i2c write handle %d slave 0x%02x register 0x%02x length %d first 0x%02x ret %d",
                      handle, address, reg, len, buf[0], result);
    return result;
}

std::size_t shown(int len)
{
    return len > 0 ? static_cast<std::size_t>(len) : 0;
}

} // namespace

EXPORT int misc_i2c_device_init(int bus_number)
{
    return tq::traced(
        __func__,
        [&] {
            const int result = board::on_bus(
                [&](const board::Bus &bus) { return bus.open(bus_number, board::HandleKind::raw); });
            board::debug_line(i2c_debug, "i2c open bus %d ret %d", bus_number, result);
            return result;
        },
        tq::arg("bus", bus_number));
}

EXPORT int misc_i2c_read(int handle, uint8_t addr7, uint8_t reg, uint8_t *buf, int len, int zero)
{
    return tq::traced(
        __func__, [&] { return read_device(handle, addr7, reg, buf, len); }, tq::arg("h", handle),
        tq::hex("addr", addr7), tq::arg("reg", reg), tq::arg("len", len), tq::arg("zero", zero),
        tq::out_bytes("data", buf, shown(len)));
}

EXPORT int misc_i2c_write(int handle, uint8_t addr7, uint8_t reg, uint8_t *buf, int len, int zero)
{
    return tq::traced(
        __func__, [&] { return write_device(handle, addr7, reg, buf, len); }, tq::arg("h", handle),
        tq::hex("addr", addr7), tq::arg("reg", reg), tq::arg("len", len), tq::arg("zero", zero),
        tq::bytes("data", buf, shown(len)));
}

EXPORT int misc_i2c_debug_get(void)
{
    return tq::traced(__func__, [] { return board::get_debug(i2c_debug); });
}

EXPORT int misc_i2c_debug_set(int on)
{
    return tq::traced(
        __func__, [&] { return board::set_debug(i2c_debug, on); }, tq::arg("on", on));
}
