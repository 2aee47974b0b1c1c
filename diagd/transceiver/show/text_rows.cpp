// SPDX-License-Identifier: GPL-2.0-or-later
// Text of displays (see text_rows.hpp).
#include "diagd/transceiver/show/text_rows.hpp"

#include "diagd/core/text.hpp"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace diagd {

void append(std::string &out, const char *format, ...)
{
    std::array<char, 512> row{};
    va_list args;
    va_start(args, format);
    std::vsnprintf(row.data(), row.size(), format, args);
    va_end(args);
    out += row.data();
}

void append_line(std::string &out, std::string_view line)
{
    out += line;
    out += line_end;
}

} // namespace diagd
