// SPDX-License-Identifier: GPL-2.0-or-later
// Completions as they are shown.
#include "shell/line_editor.hpp"

#include "shell/layout.hpp"

#include <algorithm>

namespace diagsh {

std::string in_columns(const std::vector<std::string> &words, std::size_t width)
{
    std::size_t widest = 0;
    for (const std::string &word : words)
        widest = std::max(widest, columns_of(word));
    constexpr std::size_t gap = 2;
    const std::size_t cell = widest + gap;
    const std::size_t in_a_row = std::max<std::size_t>((width + gap) / cell, 1);
    std::string text;
    for (std::size_t at = 0; at < words.size(); ++at) {
        text += words[at];
        if (at + 1 == words.size() || (at + 1) % in_a_row == 0)
            text += '\n';
        else
            text.append(cell - columns_of(words[at]), ' ');
    }
    return text;
}

std::string common_start(const std::vector<std::string> &words)
{
    if (words.empty())
        return {};
    std::string start = words.front();
    for (const std::string &word : words) {
        const auto [end, other] = std::ranges::mismatch(start, word);
        start.erase(end, start.end());
    }
    return start;
}

} // namespace diagsh
