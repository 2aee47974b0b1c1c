// SPDX-License-Identifier: GPL-2.0-or-later
// Putting the text of a display together.
#pragma once

#include <string>
#include <string_view>

namespace diagd {

// Appends one formatted row, of at most 511 characters: the widest rows take less than half.
[[gnu::format(printf, 2, 3)]] void append(std::string &out, const char *format, ...);

// Appends a line and its end.
void append_line(std::string &out, std::string_view line);

} // namespace diagd
