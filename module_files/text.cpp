// SPDX-License-Identifier: GPL-2.0-or-later
#include "module_files/text.hpp"

#include <cstdarg>
#include <cstdio>

namespace module_files {

std::string format(const char *pattern, ...)
{
    char text[256];
    va_list args;
    va_start(args, pattern);
    std::vsnprintf(text, sizeof text, pattern, args);
    va_end(args);
    return text;
}

std::string hex_text(std::span<const std::uint8_t> bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += format("%02x", byte);
    return text;
}

} // namespace module_files
