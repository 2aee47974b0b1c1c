// SPDX-License-Identifier: GPL-2.0-or-later
// Operator text as one word of a shell line.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace base {

// Whether the shell takes this character for nothing but itself, wherever it stands in an argument.
[[nodiscard]] constexpr bool is_plain_to_the_shell(char c) noexcept
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           std::string_view{"%+,-./:=@_"}.find(c) != std::string_view::npos;
}

// What the shell reads as exactly `text`: as it is when that is safe, in single quotes otherwise.
[[nodiscard]] inline std::string shell_word(std::string_view text)
{
    if (!text.empty() && std::ranges::all_of(text, is_plain_to_the_shell))
        return std::string{text};
    std::string word{"'"};
    for (const char c : text) {
        if (c == '\'')
            word += R"('\'')"; // nothing escapes a quote inside quotes
        else
            word += c;
    }
    return word += '\'';
}

} // namespace base
