// SPDX-License-Identifier: GPL-2.0-or-later
// Formatted text.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace module_files {

// snprintf into a string; at most 255 characters.
__attribute__((format(printf, 1, 2))) std::string format(const char *pattern, ...);

// Two digits for each byte.
std::string hex_text(std::span<const std::uint8_t> bytes);

} // namespace module_files
