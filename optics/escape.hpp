// SPDX-License-Identifier: GPL-2.0-or-later
// Texts of strangers, made harmless without losing anything of them.
#pragma once

#include <string>
#include <string_view>

namespace optics {

// Printable ASCII as it is; every other byte, and the backslash, as \xNN.
inline std::string escaped(std::string_view text)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7f && c != '\\') {
            result += c;
            continue;
        }
        result += "\\x";
        result += digits[byte >> 4U];
        result += digits[byte & 0x0fU];
    }
    return result;
}

} // namespace optics
