// SPDX-License-Identifier: GPL-2.0-or-later
// Message text of a test record: the command line has no quoting, so a blank is typed as an underscore and an
// underscore as backslash underscore.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace diagd {

// At most 319 characters of the decoded text.
[[nodiscard]] inline std::string decode_debug_message(std::string_view typed)
{
    constexpr std::size_t max_length = 319;

    std::string text;
    for (std::size_t i = 0; i < typed.size() && text.size() < max_length; ++i) {
        if (typed[i] == '\\' && i + 1 < typed.size() && typed[i + 1] == '_') {
            text += '_';
            ++i;
        } else {
            text += typed[i] == '_' ? ' ' : typed[i];
        }
    }
    return text;
}

} // namespace diagd
