// SPDX-License-Identifier: GPL-2.0-or-later
// Hot-plug messages, which reach the daemon as the kernel's multicast brings them: cut to its buffer.
#include "diagd/monitors/usb/uevent_parser.hpp"
#include "tests/fuzz/fuzz.hpp"

#include <cstring>

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    diagd::UeventBuffer buffer{};
    std::memcpy(buffer.data(), data, std::min(size, buffer.size()));
    const std::optional<bool> led = diagd::usb_led_after(buffer);
    // What follows the first part has no say.
    const std::size_t first_part = ::strnlen(buffer.data(), buffer.size());
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(first_part), buffer.end(), '\0');
    fuzz::expect(diagd::usb_led_after(buffer) == led, "the variables behind the first part have no say");
    fuzz::expect(!led || ::memmem(buffer.data(), first_part, "usb", 3) != nullptr,
                 "the LED changes for USB devices only");
    return 0;
}
