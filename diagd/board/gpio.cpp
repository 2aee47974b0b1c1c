// SPDX-License-Identifier: GPL-2.0-or-later
// The board's GPIO device; the failure policy stands in gpio.hpp.
#include "diagd/board/gpio.hpp"

#include "base/fd.hpp"
#include "diagd/core/privileges.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>

#include <cerrno>

namespace diagd {

namespace {

constexpr unsigned pon_chip_reset_gpio = 1;
constexpr unsigned system_reset_gpio = 8;
// The board resets somewhere among these writes.
constexpr int system_reset_writes = 100'000;

void log_open_failure(int error) noexcept
{
    zlog_err("open %s failed: %s", gpio_device, safe_strerror(error));
}

bool issue(const base::Fd &device, GpioRequest request, unsigned gpio, unsigned value) noexcept
{
    if (request_gpio(device, request, gpio, value))
        return true;
    if (request == GpioRequest::get)
        zlog_err("get gpio %d fail: %s", static_cast<int>(gpio), safe_strerror(errno));
    else
        zlog_err("set gpio %d fail: %s", static_cast<int>(gpio), safe_strerror(errno));
    return false;
}

} // namespace

base::Fd open_gpio() noexcept
{
    return base::Fd{::open(gpio_device, O_RDWR | O_CLOEXEC)};
}

bool request_gpio(const base::Fd &device, GpioRequest request, unsigned gpio, unsigned value) noexcept
{
    std::uint32_t word = gpio_word(gpio, value);
    return ::ioctl(device.get(), static_cast<unsigned long>(request), &word) >= 0;
}

void pon_chip_reset() noexcept
{
    const Privileges raised{"pon_chip_reset"};
    base::Fd device = open_gpio();
    if (!device) {
        log_open_failure(errno);
        return;
    }
    if (!issue(device, GpioRequest::get, pon_chip_reset_gpio, 1))
        return;
    if (!issue(device, GpioRequest::set, pon_chip_reset_gpio, 0))
        return;
    // Left open for good: the line must keep its level, whatever the driver does when its last user closes.
    device.release();
}

void system_gpio_reset() noexcept
{
    base::Fd device{with_privileges("system_gpio_reset", [] { return open_gpio().release(); })};
    if (!device) {
        log_open_failure(errno);
        return;
    }
    if (!issue(device, GpioRequest::get, system_reset_gpio, 1))
        return;
    for (int i = 0; i < system_reset_writes; ++i) {
        if (!issue(device, GpioRequest::set, system_reset_gpio, 1))
            return;
    }
    // Left open for good: the reset is under way, and closing must not call it off.
    device.release();
}

} // namespace diagd
