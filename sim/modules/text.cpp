// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/modules/text.hpp"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace sim {

namespace {

[[noreturn]] void refuse(const std::string &text, const std::string &why)
{
    throw std::invalid_argument("\"" + text + "\" " + why);
}

} // namespace

long parse_number(const std::string &text, long min, long max)
{
    const char *digits = text.c_str();
    const bool hex = text.find("0x") <= 1 || text.find("0X") <= 1;
    char *end = nullptr;
    errno = 0;
    const long number = std::strtol(digits, &end, hex ? 16 : 10);
    if (end == digits || *end != '\0' || errno != 0)
        refuse(text, "is not a number");
    if (number < min || number > max)
        refuse(text, "is not in " + std::to_string(min) + ".." + std::to_string(max));
    return number;
}

double parse_real(const std::string &text, double min, double max)
{
    char *end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0' || !std::isfinite(number))
        refuse(text, "is not a number");
    if (number < min || number > max)
        refuse(text, format("is not in %g..%g", min, max));
    return number;
}

} // namespace sim
