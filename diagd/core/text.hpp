// SPDX-License-Identifier: GPL-2.0-or-later
// Text in fixed-size fields, and the line end of the daemon's displays.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

namespace diagd {

// Ends a line of the daemon's own displays, always passed as the trailing "%s"; the alarm-log displays end
// lines with "\n".
inline constexpr const char *line_end = "\r\n";

// Text of a fixed-size field, which need not be terminated.
[[nodiscard]] inline std::string_view field_text(std::span<const char> field) noexcept
{
    return {field.data(), strnlen(field.data(), field.size())};
}

// Fills a field with at most its size of `text`, zero bytes behind; not terminated when the text fills it.
inline void fill_field(std::span<char> field, std::string_view text) noexcept
{
    const std::size_t length = std::min(text.size(), field.size());
    std::copy_n(text.data(), length, field.data());
    std::fill(field.begin() + static_cast<std::ptrdiff_t>(length), field.end(), '\0');
}

// The same, always terminated: text that is too long is cut.
inline void copy_text(std::span<char> buffer, std::string_view text) noexcept
{
    if (buffer.empty())
        return;
    fill_field(buffer, text.substr(0, buffer.size() - 1));
}

// Precision argument of "%.*s".
[[nodiscard]] inline int print_length(std::string_view text) noexcept
{
    return static_cast<int>(text.size());
}

} // namespace diagd
