// SPDX-License-Identifier: GPL-2.0-or-later
// Actions of alarms, read from their table.
#include "shell/alarm_actions.hpp"

#include "shell/text_lines.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <sstream>
#include <vector>

namespace diagsh {

namespace {

// The words of a line, the last one first.
std::vector<std::string> words_from_end(const std::string &line)
{
    std::istringstream text(line);
    std::vector<std::string> words;
    for (std::string word; text >> word;)
        words.insert(words.begin(), word);
    return words;
}

} // namespace

unsigned count_enabled(std::string_view table, std::string_view action)
{
    unsigned enabled = 0;
    std::optional<std::size_t> place; // from the end
    for (const std::string &line : split_lines(table)) {
        const std::vector<std::string> words = words_from_end(line);
        if (!words.empty() && words.back() == "id") {
            const auto column = std::ranges::find(words, action);
            if (column != words.end())
                place = static_cast<std::size_t>(column - words.begin());
        } else if (place && *place < words.size() && words[*place] == "enable") {
            ++enabled;
        }
    }
    return enabled;
}

} // namespace diagsh
