// SPDX-License-Identifier: GPL-2.0-or-later
// A view of text that is larger than the terminal, scrolled both ways by keys.
#pragma once

#include "shell/terminal.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace diagsh {

enum class ViewEnd { closed, leave };

// Shows `lines` on the terminal's other screen until a key ends it, and gives the screen back.
ViewEnd view(Terminal &terminal, const std::vector<std::string> &lines);

// What of `line` is in `width` columns of a view that begins at column `left`: the first `label` columns
// stay.
std::string in_view(const std::string &line, std::size_t label, std::size_t left, std::size_t width);

// What the view shows: pure, for the keys and the rows.
struct ViewPlace {
    std::size_t top = 0;  // first line
    std::size_t left = 0; // first column
};

enum class ViewKey { up, down, left, right, page_up, page_down, first, last, close, leave, other };

// Where the view is after `key`: never beyond the text, which has `rows` lines and `columns` columns.
ViewPlace scrolled(ViewPlace place, ViewKey key, WindowSize window, std::size_t rows, std::size_t columns);

} // namespace diagsh
