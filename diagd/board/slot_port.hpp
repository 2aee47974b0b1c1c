// SPDX-License-Identifier: GPL-2.0-or-later
// Port kinds and interface positions: slot, slash, port.
#pragma once

#include <charconv>
#include <limits>
#include <string_view>

namespace diagd {

enum class PortKind : int { none = 0, gigabit_ethernet = 1, gpon = 2, xgpon = 3 };

struct SlotPort {
    int slot = 0;
    int port = 0;
};

// Parses what the command parser accepted as "<S/P>": digits, slash, digits.  A number beyond int becomes the
// largest int, which names no port; text of another form leaves zeroes.
[[nodiscard]] inline SlotPort parse_slot_port(std::string_view text) noexcept
{
    const auto number = [](std::string_view digits) {
        int value = 0;
        const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        return result.ec == std::errc::result_out_of_range ? std::numeric_limits<int>::max() : value;
    };
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos)
        return {number(text), 0};
    return {number(text.substr(0, slash)), number(text.substr(slash + 1))};
}

} // namespace diagd
