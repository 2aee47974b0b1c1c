// SPDX-License-Identifier: GPL-2.0-or-later
// What a hot-plug message of the kernel means for the USB LED.  Its first, zero-terminated part is
// "ACTION@DEVICE_PATH"; variables follow (Linux, lib/kobject_uevent.c).
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace diagd {

inline constexpr std::size_t uevent_buffer_size = 1024;
using UeventBuffer = std::array<char, uevent_buffer_size>; // zero where no message is

// Whether the LED is to be lit; empty when the message is not about USB.  The words are looked for anywhere
// in the first part: any event of a USB device that is no "add", and every path with "add" in it, counts as
// such.
[[nodiscard]] constexpr std::optional<bool> usb_led_after(const UeventBuffer &message) noexcept
{
    const auto end = std::find(message.begin(), message.end(), '\0');
    const std::string_view header{message.begin(), end};
    if (header.find("usb") == std::string_view::npos)
        return std::nullopt;
    return header.find("add") != std::string_view::npos;
}

} // namespace diagd
