// SPDX-License-Identifier: GPL-2.0-or-later
// CPLD images in /tmp: their names, whether a file there may be used, and the shell lines that fetch it.
#pragma once

#include "base/shell_word.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace diagd {

// The programmer's line ("jtag /tmp/NAME") has 80 bytes with its end; all others have room for longer names.
inline constexpr std::size_t image_name_size = 80 - sizeof "jtag /tmp/";

// Whether an image may have this name.  It goes into shell lines, among them patterns and options of
// programs: letters, digits and "._+-", neither hidden nor like an option.
[[nodiscard]] inline bool is_image_name(std::string_view name) noexcept
{
    const auto allowed = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' ||
               c == '_' || c == '+' || c == '-';
    };
    return !name.empty() && name.size() <= image_name_size && name[0] != '-' && name[0] != '.' &&
           std::ranges::all_of(name, allowed);
}

// Where an image lies before it is programmed.
[[nodiscard]] inline std::string image_path(const std::string &name)
{
    return "/tmp/" + name;
}

// What is at a path that anybody may have put something at.
enum class PathHolder {
    nobody,
    ours,  // a regular file of root's or the daemon's, with one link
    others // anything else: root would write or program what somebody else has chosen
};

// Looks without following links.  Whoever finds `others` leaves it alone; the log says so.  Between this look
// and the use of the path /tmp's sticky bit keeps everybody from exchanging a file of ours, and the kernel's
// protected_symlinks from leading a write through a link put there meanwhile.
[[nodiscard]] PathHolder holder_of(const std::string &path) noexcept;

// The lines that fetch image `name`, which is_image_name has accepted.
[[nodiscard]] inline std::string tftp_line(const std::string &name, const std::string &server)
{
    return "/usr/bin/tftp -l " + image_path(name) + " -r " + name + " -g " + base::shell_word(server);
}

[[nodiscard]] inline std::string ftp_line(const std::string &name, const std::string &server,
                                          const std::string &user, const std::string &password)
{
    return "/usr/bin/ftpget -u " + base::shell_word(user) + " -p " + base::shell_word(password) + ' ' +
           base::shell_word(server) + ' ' + image_path(name) + ' ' + name;
}

// The first match on any stick; none at all is no failure of the line.
[[nodiscard]] inline std::string usb_line(const std::string &name)
{
    return "find /mnt/s* -name '" + name + "'|head -n 1|xargs -i cp {} " + image_path(name);
}

} // namespace diagd
