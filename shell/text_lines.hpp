// SPDX-License-Identifier: GPL-2.0-or-later
// Text as lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

// The lines of `text` without their ends, "\n" or "\r\n"; a last line need not be ended.
inline std::vector<std::string> split_lines(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        while (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.emplace_back(line);
    }
    return lines;
}

// `text` without blanks at its ends.
inline std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace diagsh
