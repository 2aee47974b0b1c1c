// SPDX-License-Identifier: GPL-2.0-or-later
// Numbers as operators type them (decimal or 0x), and formatted text.
#pragma once

#include <string>

#include "module_files/text.hpp"

namespace sim {

using module_files::format;
using module_files::hex_text;

// Throws std::invalid_argument with a line that names the text and the range.
long parse_number(const std::string &text, long min, long max);
double parse_real(const std::string &text, double min, double max);

} // namespace sim
