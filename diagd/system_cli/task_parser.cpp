// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/system_cli/task_parser.hpp"

#include "base/utf8.hpp"

#include <algorithm>
#include <charconv>

namespace diagd {

namespace {

// Size of the control character that begins `text`, which is not empty; 0 when it begins with none.  Those of
// C1 (U+0080 to U+009F) count in UTF-8 and as single bytes, since terminals obey either.
std::size_t control_size(std::string_view text) noexcept
{
    const auto c1 = [](char c) { return (static_cast<unsigned char>(c) & 0xE0) == 0x80; };
    const std::size_t length = base::utf8_length(text);
    if (length == 2)
        return text[0] == '\xc2' && c1(text[1]) ? 2 : 0;
    const bool is_control = length == 0 ? c1(text[0]) : text[0] == '\x7f' || (length == 1 && text[0] < ' ');
    return is_control ? 1 : 0;
}

// Programs name themselves and their threads as they like; what they put in must not reach the operator's
// terminal as a control sequence, nor break a row.
std::string shown(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t control = control_size(text);
        const std::size_t size = control != 0 ? control : std::max<std::size_t>(base::utf8_length(text), 1);
        result += control != 0 ? "?" : text.substr(0, size);
        text.remove_prefix(size);
    }
    return result;
}

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
    return begin == line.npos ? std::string{} : shown(line.substr(begin));
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
    return shown(slash == cmdline.npos ? cmdline : cmdline.substr(slash + 1));
}

TaskStatus parse_task_status(std::string_view status)
{
    const std::string_view name = take_line(status, 79);
    take_line(status, 49); // the mask of file modes
    return {value_of(name), value_of(take_line(status, 49))};
}

} // namespace diagd
