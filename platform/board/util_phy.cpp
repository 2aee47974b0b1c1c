// SPDX-License-Identifier: GPL-2.0-or-later
// libutil_phy: Ethernet PHY registers over MDIO (IEEE 802.3 clause 22).
//
// Failure policy: an unknown interface or hardware that does not answer gives -1 with errno within about a
// second and leaves the caller's values untouched.  As on the bus itself, registers of an address without a
// PHY read 0xffff; only misc_phy_info calls that a failure.
#include "util_phy.h"

#include <time.h>

#include "platform/board/c_api.hpp"
#include "platform/trace/tq_trace.hpp"

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace {

std::uint8_t phy_debug = 0;

constexpr std::uint32_t control_register = 0;
constexpr std::uint32_t control_reset = 1U << 15; // clears itself when the reset is done
constexpr int reset_polls = 50;
constexpr long reset_poll_ns = 10'000'000; // the standard allows a reset half a second

int read_register(const char *interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t *value)
{
    if (interface == nullptr || value == nullptr)
        return board::fail(EINVAL);
    const int result =
        board::on_bus([&](const board::Bus &bus) { return bus.phy_read(interface, phy, reg, *value); });
    board::debug_line(phy_debug, "phy read %s phy 0x%x register 0x%x value 0x%x ret %d", interface, phy, reg,
                      result == 0 ? *value : 0, result);
    return result;
}

int write_register(const char *interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t value)
{
    if (interface == nullptr)
        return board::fail(EINVAL);
    const int result =
        board::on_bus([&](const board::Bus &bus) { return bus.phy_write(interface, phy, reg, value); });
    board::debug_line(phy_debug, "phy write %s phy 0x%x register 0x%x value 0x%x ret %d", interface, phy, reg,
                      value, result);
    return result;
}

// Registers 2 and 3 hold bits 3-24 of the organisation identifier, six bits of model, four of revision.
int identify(const char *interface, std::uint32_t phy, std::uint32_t *oui, std::uint8_t *model,
             std::uint8_t *rev)
{
    if (oui == nullptr || model == nullptr || rev == nullptr)
        return board::fail(EINVAL);
    std::uint32_t id1 = 0;
    std::uint32_t id2 = 0;
    if (read_register(interface, phy, 2, &id1) < 0 || read_register(interface, phy, 3, &id2) < 0)
        return -1;
    if (id1 == 0xffff && id2 == 0xffff)
        return board::fail(ENODEV);
    *oui = id1 << 6 | id2 >> 10;
    *model = static_cast<std::uint8_t>(id2 >> 4 & 0x3f);
    *rev = static_cast<std::uint8_t>(id2 & 0x0f);
    return 0;
}

int reset(const char *interface, std::uint32_t phy)
{
    std::uint32_t control = 0;
    if (write_register(interface, phy, control_register, control_reset) < 0)
        return -1;
    for (int poll = 0; poll < reset_polls; ++poll) {
        if (read_register(interface, phy, control_register, &control) < 0)
            return -1;
        if ((control & control_reset) == 0)
            return 0;
        if (control == 0xffff)
            return board::fail(ENODEV);
        const timespec pause{0, reset_poll_ns};
        ::nanosleep(&pause, nullptr);
    }
    return board::fail(ETIMEDOUT);
}

} // namespace

EXPORT int misc_phy_read(const char *ifname, uint32_t phy, uint32_t reg, uint32_t *value)
{
    return tq::traced(
        __func__, [&] { return read_register(ifname, phy, reg, value); }, tq::token("if", ifname),
        tq::arg("phy", phy), tq::hex("reg", reg), tq::out("val", value));
}

EXPORT int misc_phy_write(const char *ifname, uint32_t phy, uint32_t reg, uint32_t value)
{
    return tq::traced(
        __func__, [&] { return write_register(ifname, phy, reg, value); }, tq::token("if", ifname),
        tq::arg("phy", phy), tq::hex("reg", reg), tq::hex("val", value));
}

EXPORT int misc_phy_info(const char *ifname, uint32_t phy, uint32_t *oui, uint8_t *model, uint8_t *rev)
{
    return tq::traced(
        __func__, [&] { return identify(ifname, phy, oui, model, rev); }, tq::token("if", ifname),
        tq::arg("phy", phy), tq::out("oui", oui), tq::out("model", model), tq::out("rev", rev));
}

EXPORT int misc_phy_reset(const char *ifname, uint32_t phy)
{
    return tq::traced(
        __func__, [&] { return reset(ifname, phy); }, tq::token("if", ifname), tq::arg("phy", phy));
}

EXPORT int misc_phy_debug_get(void)
{
    return tq::traced(__func__, [] { return board::get_debug(phy_debug); });
}

EXPORT int misc_phy_debug_set(int on)
{
    return tq::traced(
        __func__, [&] { return board::set_debug(phy_debug, on); }, tq::arg("on", on));
}
