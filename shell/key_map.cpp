// SPDX-License-Identifier: GPL-2.0-or-later
// Keys for libfrr's line editing.
#include "shell/key_map.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace diagsh {

namespace {

constexpr std::string_view to_begin = "\x01", to_end = "\x05",
                           word_back = "\x1b"
                                       "b",
                           word_on = "\x1b"
                                     "f";
// Control-D deletes under the cursor, but ends an empty line's session: with a blank before the cursor the
// line is never empty, and the blank goes afterwards.
constexpr std::string_view delete_one = " \x04\b";

// As xterm, the Linux console, VT220 and rxvt send them.
constexpr std::array<std::pair<std::string_view, std::string_view>, 15> keys{{
    {"\x1b[H", to_begin},
    {"\x1bOH", to_begin},
    {"\x1b[1~", to_begin},
    {"\x1b[7~", to_begin},
    {"\x1b[F", to_end},
    {"\x1bOF", to_end},
    {"\x1b[4~", to_end},
    {"\x1b[8~", to_end},
    {"\x1b[3~", delete_one},
    {"\x1b[1;5D", word_back},
    {"\x1b[1;5C", word_on},
    {"\x1b[1;3D", word_back},
    {"\x1b[1;3C", word_on},
    {"\x1b[5D", word_back},
    {"\x1b[5C", word_on},
}};

} // namespace

std::string KeyMap::translate(std::string_view typed)
{
    std::string out;
    for (const char c : typed) {
        m_begun += c;
        const auto *const known =
            std::ranges::find(keys, m_begun, &std::pair<std::string_view, std::string_view>::first);
        const bool may_go_on =
            std::ranges::any_of(keys, [&](const auto &key) { return key.first.starts_with(m_begun); });
        if (known == keys.end() && may_go_on)
            continue;
        out += known != keys.end() ? known->second : m_begun;
        m_begun.clear();
    }
    return out;
}

} // namespace diagsh
