// SPDX-License-Identifier: GPL-2.0-or-later
// Vendor texts (see vendor_text.hpp).
#include "vendor_text.hpp"

#include <algorithm>
#include <cstddef>

namespace diagd {
namespace {

using Bytes = std::span<const std::uint8_t>;

bool within(std::uint8_t byte, std::uint8_t low, std::uint8_t high) noexcept
{
    return byte >= low && byte <= high;
}

// Length of the well-formed UTF-8 sequence that begins `bytes` (Unicode table 3-7), 0 when there is none.
std::size_t utf8_length(Bytes bytes) noexcept
{
    const std::uint8_t lead = bytes[0];
    if (lead < 0x80)
        return 1;
    const std::size_t length = within(lead, 0xC2, 0xDF)   ? 2
                               : within(lead, 0xE0, 0xEF) ? 3
                               : within(lead, 0xF0, 0xF4) ? 4
                                                          : 0;
    if (length == 0 || bytes.size() < length)
        return 0;
    // The second byte's range keeps out overlong forms, surrogates and what lies beyond U+10FFFF.
    const std::uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const std::uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (!within(bytes[1], low, high))
        return 0;
    const auto rest = bytes.subspan(2, length - 2);
    return std::ranges::all_of(rest, [](std::uint8_t byte) { return within(byte, 0x80, 0xBF); }) ? length : 0;
}

} // namespace

std::string vendor_text(Bytes field)
{
    std::string text;
    for (Bytes rest = field; !rest.empty() && rest[0] != 0;) {
        const std::size_t length = utf8_length(rest);
        if (length == 0)
            text += "\xEF\xBF\xBD"; // U+FFFD
        else
            text.append(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(length));
        rest = rest.subspan(std::max<std::size_t>(length, 1));
    }
    return text;
}

} // namespace diagd
