// SPDX-License-Identifier: GPL-2.0-or-later
// Numbers as operators type them (decimal or 0x), and formatted text.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace sim {

// snprintf into a string; at most 255 characters.
__attribute__((format(printf, 1, 2))) std::string format(const char *pattern, ...);

// Two digits for each byte.
std::string hex_text(std::span<const std::uint8_t> bytes);

// Throws std::invalid_argument with a line that names the text and the range.
long parse_number(const std::string &text, long min, long max);
double parse_real(const std::string &text, double min, double max);

} // namespace sim
