// SPDX-License-Identifier: GPL-2.0-or-later
// Syntax and help of commands, joined at compile time: libfrr wants both as C strings that live as long as
// the process.
#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

#define LEVEL_SYNTAX "<debug|info|notice|warning|major|critical|alert|emerg>"

// Help of "level" and of the keywords.
#define LEVEL_HELP                                                                                           \
    "Specify log level.\n"                                                                                   \
    "Specify log debug level.\n"                                                                             \
    "Specify log info level.\n"                                                                              \
    "Specify log notice level.\n"                                                                            \
    "Specify log warning level.\n"                                                                           \
    "Specify log major level.\n"                                                                             \
    "Specify log critical level.\n"                                                                          \
    "Specify log alert level.\n"                                                                             \
    "Specify log emerg level.\n"

namespace diagd {

// The text that `make` returns, as a C string in static storage.
template <auto make>
inline constexpr auto static_text_storage = [] {
    std::array<char, make().size() + 1> text{};
    std::ranges::copy(make(), text.begin());
    return text;
}();
template <auto make>
inline constexpr const char *static_text = static_text_storage<make>.data();

// "<a|b|c>"
constexpr std::string choice_of(std::span<const std::string_view> keywords)
{
    std::string syntax = "<";
    for (const std::string_view keyword : keywords)
        syntax.append(keyword).append("|");
    syntax.back() = '>';
    return syntax;
}

// A line for each keyword.
constexpr std::string help_of_choice(std::span<const std::string_view> keywords, std::string_view what)
{
    std::string help;
    for (const std::string_view keyword : keywords)
        help.append("Specify ").append(keyword).append(" ").append(what).append(".\n");
    return help;
}

} // namespace diagd
