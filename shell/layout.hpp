// SPDX-License-Identifier: GPL-2.0-or-later
// Output that is wider than the terminal, laid out to be read.  Pure.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

// Columns that `text` takes on a terminal: one for each character, for what the daemon shows has neither tabs
// nor wide characters.
std::size_t columns_of(std::string_view text);

// The characters of `text` from column `first` on, at most `count`.
std::string_view columns_in(std::string_view text, std::size_t first, std::size_t count);

// `lines` in at most `width` columns.  Lines between blank ones are taken for one table: where all of them
// have a blank in the same column, it is shown in parts, one below the other, each with the first column of
// the table again.  Other lines are continued, indented, behind a blank.
std::vector<std::string> fold(const std::vector<std::string> &lines, std::size_t width);

// For each of `lines` the columns that say what its row is about, when it is of a table wider than `width`:
// the first column of the table, with the blanks behind it.  0 for any other line.
std::vector<std::size_t> label_columns(const std::vector<std::string> &lines, std::size_t width);

// One line, broken at blanks; continuations begin with `indent` blanks.
std::vector<std::string> fold_line(std::string_view line, std::size_t width, std::size_t indent);

} // namespace diagsh
