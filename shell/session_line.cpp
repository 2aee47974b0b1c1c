// SPDX-License-Identifier: GPL-2.0-or-later
// What is typed in a session.
#include "shell/session_line.hpp"

#include "shell/text_lines.hpp"

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>
#include <vector>

namespace diagsh {

namespace {

constexpr std::array<std::pair<std::string_view, Wide>, 2> layouts{{
    {"fold", Wide::fold},
    {"scroll", Wide::scroll},
}};

} // namespace

SessionLine parse_session_line(std::string_view line, Wide wide)
{
    if (const std::size_t bar = line.rfind('|'); bar != std::string_view::npos) {
        const auto *const layout = std::ranges::find(layouts, trimmed(line.substr(bar + 1)),
                                                     &std::pair<std::string_view, Wide>::first);
        if (layout != layouts.end()) {
            wide = layout->second;
            line = line.substr(0, bar);
        }
    }
    line = trimmed(line);
    constexpr std::string_view find = "find ";
    if (line.starts_with(find))
        return {{}, std::string(trimmed(line.substr(find.size()))), wide};
    return {std::string(line), {}, wide};
}

std::string greeting(const SessionState &session, std::string_view state)
{
    std::string text = session.prompt.substr(0, session.prompt.find_first_of("(>#"));
    if (!state.empty())
        text.append(" of ").append(state);
    return text + ", node " + session.node + ".  ? helps, TAB completes, find WORD searches all commands.";
}

bool is_exit(std::string_view command)
{
    constexpr std::size_t shortest = 2;
    return command.size() >= shortest &&
           (std::string_view("exit").starts_with(command) || std::string_view("quit").starts_with(command));
}

bool wants_alarm_name(std::string_view line)
{
    std::istringstream text{std::string(line)};
    std::vector<std::string> words;
    for (std::string word; text >> word;)
        words.push_back(word);
    if (line.ends_with(' '))
        words.emplace_back();
    constexpr std::array<std::string_view, 4> before{"show", "alarm-log", "configuration", "name"};
    return words.size() == before.size() + 1 &&
           std::equal(
               before.begin(), before.end(), words.begin(),
               [](std::string_view whole, const std::string &typed) { return whole.starts_with(typed); });
}

std::size_t help_begins(std::string_view row)
{
    const std::size_t word = std::min(row.find_first_not_of(' '), row.size());
    const std::size_t gap = std::min(row.find("  ", word), row.size());
    return std::min(row.find_first_not_of(' ', gap), row.size());
}

} // namespace diagsh
