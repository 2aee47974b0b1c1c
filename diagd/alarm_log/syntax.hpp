// SPDX-License-Identifier: GPL-2.0-or-later
// Syntax and help of commands, joined at compile time: libfrr wants both as C strings that live as long as
// the process.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
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

// A text while it is joined.  Not std::string: the analysers of the sources cannot evaluate the library's at
// compile time.
class JoinedText {
public:
    constexpr JoinedText() = default;
    constexpr JoinedText(std::string_view text) { append(text); }
    constexpr JoinedText(const char *text) { append(text); }

    constexpr JoinedText &append(std::string_view more)
    {
        for (const char c : more)
            text_[size_++] = c; // past the end nothing compiles
        return *this;
    }
    friend constexpr JoinedText operator+(JoinedText left, const JoinedText &right)
    {
        return left.append({right.text_.data(), right.size_});
    }

    [[nodiscard]] constexpr std::size_t size() const { return size_; }
    [[nodiscard]] constexpr char &back() { return text_[size_ - 1]; }
    [[nodiscard]] constexpr const char *begin() const { return text_.data(); }
    [[nodiscard]] constexpr const char *end() const { return text_.data() + size_; }

private:
    std::array<char, 8192> text_{};
    std::size_t size_ = 0;
};

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
constexpr JoinedText choice_of(std::span<const std::string_view> keywords)
{
    JoinedText syntax = "<";
    for (const std::string_view keyword : keywords)
        syntax.append(keyword).append("|");
    syntax.back() = '>';
    return syntax;
}

// A line for each keyword.
constexpr JoinedText help_of_choice(std::span<const std::string_view> keywords, std::string_view what)
{
    JoinedText help;
    for (const std::string_view keyword : keywords)
        help.append("Specify ").append(keyword).append(" ").append(what).append(".\n");
    return help;
}

} // namespace diagd
