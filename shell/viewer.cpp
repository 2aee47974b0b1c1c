// SPDX-License-Identifier: GPL-2.0-or-later
// The scrolling view.
#include "shell/viewer.hpp"

#include "shell/layout.hpp"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace diagsh {

namespace {

// ECMA-48 and the alternate screen of xterm, which every terminal in use today has.
constexpr std::string_view other_screen = "\x1b[?1049h", own_screen = "\x1b[?1049l";
constexpr std::string_view home_and_clear = "\x1b[H\x1b[2J", reverse = "\x1b[7m", plain = "\x1b[m";

constexpr std::array<std::pair<std::string_view, ViewKey>, 10> sequences{{
    {"A", ViewKey::up},
    {"B", ViewKey::down},
    {"C", ViewKey::right},
    {"D", ViewKey::left},
    {"H", ViewKey::first},
    {"F", ViewKey::last},
    {"1~", ViewKey::first},
    {"4~", ViewKey::last},
    {"5~", ViewKey::page_up},
    {"6~", ViewKey::page_down},
}};

constexpr std::array<std::pair<char, ViewKey>, 12> letters{{
    {'k', ViewKey::up},
    {'j', ViewKey::down},
    {'\r', ViewKey::down},
    {'\n', ViewKey::down},
    {'h', ViewKey::left},
    {'l', ViewKey::right},
    {'b', ViewKey::page_up},
    {' ', ViewKey::page_down},
    {'g', ViewKey::first},
    {'G', ViewKey::last},
    {'q', ViewKey::close},
    {key::interrupt, ViewKey::close},
}};

ViewKey read_view_key(Terminal &terminal)
{
    const char first = terminal.read_key().value_or(key::leave);
    if (first == key::leave)
        return ViewKey::leave;
    if (first != key::escape) {
        const auto *const letter = std::ranges::find(letters, first, &std::pair<char, ViewKey>::first);
        return letter == letters.end() ? ViewKey::other : letter->second;
    }
    terminal.read_key(); // '[' or 'O'
    std::string sequence;
    do
        sequence += terminal.read_key().value_or('~');
    while (sequence.back() >= '0' && sequence.back() <= ';');
    const auto *const known =
        std::ranges::find(sequences, sequence, &std::pair<std::string_view, ViewKey>::first);
    return known == sequences.end() ? ViewKey::other : known->second;
}

std::size_t moved(std::size_t from, std::size_t by, bool forward, std::size_t last)
{
    return forward ? std::min(from + by, last) : from - std::min(from, by);
}

void draw(const std::vector<std::string> &lines, ViewPlace place, WindowSize window, std::size_t columns)
{
    const std::vector<std::size_t> labels = label_columns(lines, window.columns);
    const std::size_t shown = std::min<std::size_t>(window.rows - 1U, lines.size() - place.top);
    std::string screen(home_and_clear);
    for (std::size_t row = 0; row < shown; ++row)
        screen.append(in_view(lines[place.top + row], labels[place.top + row], place.left, window.columns))
            .append("\n");
    screen.append(window.rows - 1U - shown, '\n');
    const std::string status = "lines " + std::to_string(place.top + 1) + "-" +
                               std::to_string(place.top + shown) + " of " + std::to_string(lines.size()) +
                               ", columns " + std::to_string(place.left + 1) + "-" +
                               std::to_string(std::min<std::size_t>(place.left + window.columns, columns)) +
                               " of " + std::to_string(columns) + "; arrows, Space, b scroll, q ends";
    screen.append(reverse).append(columns_in(status, 0, window.columns - 1U)).append(plain);
    write_all(STDOUT_FILENO, screen);
}

} // namespace

std::string in_view(const std::string &line, std::size_t label, std::size_t left, std::size_t width)
{
    std::string shown(columns_in(line, 0, label));
    return shown.append(columns_in(line, left + label, width - label));
}

ViewPlace scrolled(ViewPlace place, ViewKey key, WindowSize window, std::size_t rows, std::size_t columns)
{
    const std::size_t page = std::max(window.rows - 1, 1);
    const std::size_t sideways = std::max(window.columns / 2, 1);
    const std::size_t last_top = rows > page ? rows - page : 0;
    const std::size_t last_left = columns > window.columns ? columns - window.columns : 0;
    switch (key) {
    case ViewKey::up:
    case ViewKey::down:
        return {moved(place.top, 1, key == ViewKey::down, last_top), place.left};
    case ViewKey::page_up:
    case ViewKey::page_down:
        return {moved(place.top, page, key == ViewKey::page_down, last_top), place.left};
    case ViewKey::left:
    case ViewKey::right:
        return {place.top, moved(place.left, sideways, key == ViewKey::right, last_left)};
    case ViewKey::first:
        return {0, 0};
    case ViewKey::last:
        return {last_top, place.left};
    default: // a window that has grown leaves less to scroll
        return {std::min(place.top, last_top), std::min(place.left, last_left)};
    }
}

ViewEnd view(Terminal &terminal, const std::vector<std::string> &lines)
{
    std::size_t columns = 0;
    for (const std::string &line : lines)
        columns = std::max(columns, columns_of(line));
    write_all(STDOUT_FILENO, other_screen);
    ViewPlace place;
    ViewKey key = ViewKey::other;
    while (key != ViewKey::close && key != ViewKey::leave) {
        place = scrolled(place, key, terminal_size(), lines.size(), columns);
        draw(lines, place, terminal_size(), columns);
        const Terminal::Event event = terminal.wait(-1);
        key = event == Terminal::Event::keys  ? read_view_key(terminal)
              : event == Terminal::Event::end ? ViewKey::leave
                                              : ViewKey::other; // drawn again
    }
    // A terminal without another screen keeps the text.
    write_all(STDOUT_FILENO, std::string("\r\x1b[K").append(own_screen));
    return key == ViewKey::leave ? ViewEnd::leave : ViewEnd::closed;
}

} // namespace diagsh
