// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/system_cli/task_parser.hpp"

#include "base/printable.hpp"

#include <algorithm>
#include <charconv>

namespace diagd {

namespace {

// Takes the next line, which ends behind `longest` characters at the latest, off the text.
std::string_view take_line(std::string_view &text, std::size_t longest) noexcept
{
    const std::string_view line = text.substr(0, std::min(longest, text.find('\n')));
    text.remove_prefix(line.size());
    if (line.size() < longest && text.starts_with('\n'))
        text.remove_prefix(1);
    return line;
}

// What stands behind "Key:" and blanks.
std::string value_of(std::string_view line)
{
    const std::size_t colon = line.find(':');
    if (colon == line.npos)
        return {};
    line.remove_prefix(colon + 1);
    const std::size_t begin = line.find_first_not_of(" \t\n\v\f\r");
    return begin == line.npos ? std::string{} : base::printable(line.substr(begin));
}

} // namespace

std::optional<std::uint32_t> parse_task_folder(std::string_view name) noexcept
{
    std::uint32_t number = 0;
    const char *const end = name.data() + name.size();
    const auto result = std::from_chars(name.data(), end, number);
    if (result.ec != std::errc{} || result.ptr != end)
        return std::nullopt;
    return number;
}

std::string parse_task_command(std::string_view cmdline)
{
    cmdline = cmdline.substr(0, cmdline.find('\0'));
    const std::size_t slash = cmdline.rfind('/');
    return base::printable(slash == cmdline.npos ? cmdline : cmdline.substr(slash + 1));
}

TaskStatus parse_task_status(std::string_view status)
{
    const std::string_view name = take_line(status, 79);
    take_line(status, 49); // the mask of file modes
    return {value_of(name), value_of(take_line(status, 49))};
}

} // namespace diagd
