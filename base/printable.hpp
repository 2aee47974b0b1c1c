// SPDX-License-Identifier: GPL-2.0-or-later
// Texts from outside, as an operator's terminal may have them.  Whoever fills a module's memory, files an
// alarm or names a program chooses the bytes; a terminal obeys some of them, and a telnet client others.
#pragma once

#include "base/utf8.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace base {

struct Character {
    std::size_t size; // bytes
    bool is_utf8;     // otherwise it is a byte that belongs to no well-formed sequence
    bool is_obeyed;   // by a terminal
};

// The character that begins `text`, which is not empty.  Obeyed are the controls of C0 but the tab, DEL and
// the controls of C1, U+0080 to U+009F.  What is no UTF-8 is judged byte by byte: terminals obey C1 as single
// bytes, too, and with 0xFF telnet begins a command.
[[nodiscard]] constexpr Character first_character(std::string_view text) noexcept
{
    const auto is_c1 = [](std::uint8_t byte) { return byte >= 0x80 && byte <= 0x9F; };
    const auto first = static_cast<std::uint8_t>(text[0]);
    switch (const std::size_t length = utf8_length(text)) {
    case 0:
        return {1, false, is_c1(first) || first == 0xFF};
    case 1:
        return {1, true, (first < 0x20 && first != '\t') || first == 0x7F};
    case 2:
        return {2, true, first == 0xC2 && is_c1(static_cast<std::uint8_t>(text[1]))};
    default:
        return {length, true, false};
    }
}

// The text with "?" for each character that a terminal would obey, so that it keeps its width.
[[nodiscard]] inline std::string printable(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const auto is_plain = [](char c) { return c >= ' ' && c <= '~'; };
        const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(text, is_plain) - text.begin());
        shown += text.substr(0, plain); // most texts are nothing else, and listings are long
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const Character next = first_character(text);
        shown += next.is_obeyed ? "?" : text.substr(0, next.size);
        text.remove_prefix(next.size);
    }
    return shown;
}

// A JSON document whose control characters below U+0020 are escaped already, as JSON itself asks for: DEL and
// the controls of C1 are escaped in the same way, and U+FFFD stands for each byte that is no UTF-8.
[[nodiscard]] inline std::string printable_json(std::string_view document)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string shown;
    shown.reserve(document.size());
    while (!document.empty()) {
        const Character next = first_character(document);
        const auto last = static_cast<std::uint8_t>(document[next.size - 1]);
        if (!next.is_utf8)
            shown += "\xEF\xBF\xBD";
        else if (last == 0x7F || (next.is_obeyed && next.size == 2))
            shown.append("\\u00").append({digits[last >> 4], digits[last & 0xF]});
        else
            shown += document.substr(0, next.size);
        document.remove_prefix(next.size);
    }
    return shown;
}

} // namespace base
