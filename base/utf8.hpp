// SPDX-License-Identifier: GPL-2.0-or-later
// Well-formed UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace base {

// What well-formed sequences that begin with this byte look like (Unicode table 3-7).
struct Utf8Lead {
    std::size_t length;     // of the sequence, 0 when none begins so
    std::uint8_t low, high; // range of its second byte: keeps out overlong forms, surrogates and what lies
                            // beyond U+10FFFF
};

constexpr Utf8Lead utf8_lead(std::uint8_t lead) noexcept
{
    const std::size_t length = lead < 0x80                    ? 1
                               : lead >= 0xC2 && lead <= 0xDF ? 2
                               : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    return {length,
            static_cast<std::uint8_t>(lead == 0xE0   ? 0xA0
                                      : lead == 0xF0 ? 0x90
                                                     : 0x80),
            static_cast<std::uint8_t>(lead == 0xED   ? 0x9F
                                      : lead == 0xF4 ? 0x8F
                                                     : 0xBF)};
}

// Bytes from the second on that fit the lead byte, no more than there are and than belong to it.
constexpr std::size_t utf8_trail(std::string_view text, const Utf8Lead &lead) noexcept
{
    std::size_t count = 1;
    for (; count < lead.length && count < text.size(); ++count) {
        const auto byte = static_cast<std::uint8_t>(text[count]);
        if (byte < (count == 1 ? lead.low : 0x80) || byte > (count == 1 ? lead.high : 0xBF))
            break;
    }
    return count;
}

// Length of the well-formed sequence that begins `text`, which is not empty; 0 when there is none.
constexpr std::size_t utf8_length(std::string_view text) noexcept
{
    const Utf8Lead lead = utf8_lead(static_cast<std::uint8_t>(text[0]));
    return lead.length != 0 && utf8_trail(text, lead) == lead.length ? lead.length : 0;
}

// `text`, which is not empty, is nothing but the beginning of a well-formed sequence that was cut off.
constexpr bool utf8_is_cut(std::string_view text) noexcept
{
    const Utf8Lead lead = utf8_lead(static_cast<std::uint8_t>(text[0]));
    return text.size() < lead.length && utf8_trail(text, lead) == text.size();
}

} // namespace base
