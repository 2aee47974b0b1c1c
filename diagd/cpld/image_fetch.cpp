// SPDX-License-Identifier: GPL-2.0-or-later
// Fetching a CPLD image; the failure policy stands in image_fetch.hpp.
#include "diagd/cpld/image_fetch.hpp"

#include "base/fd.hpp"
#include "diagd/core/alarm_record.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/core/text.hpp"
#include "diagd/cpld/image_file.hpp"
#include "diagd/cpld/shell_runner.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <string>

using diagd::line_end;

namespace {

using namespace std::chrono_literals;

constexpr int failed = -1;

// No fetch that works comes near them.  A search of the sticks writes no file for most of its time.
constexpr auto longest_fetch = 10min;
constexpr auto longest_standstill = 60s;

// Of the alarm catalogue.

void file_outcome(const std::string &file, bool good) noexcept
{
    const std::string message = "download " + file + (good ? " success" : " fail");
    diagd::file_alarm(good ? TQ_ALARM_DOWNLOAD_FILE_SUCCESS : TQ_ALARM_DOWNLOAD_FILE_FAILED,
                      diagd::AlarmState::event, message.c_str());
}

int fetch_from_server(struct vty *vty, const std::string &file, const char *server,
                      const std::string &line) noexcept
{
    vty_out(vty, "%sTrying to download %s from server %s, please wait...%s", line_end, file.c_str(), server,
            line_end);
    diagd::flush_vty(vty);
    const std::string path = diagd::image_path(file);
    int status = failed;
    if (diagd::holder_of(path) != diagd::PathHolder::others)
        status = diagd::run_dropping_output(
            line, {.total = longest_fetch, .file = path, .standstill = longest_standstill});
    file_outcome(file, status == 0);
    return status;
}

int missing_argument(struct vty *vty) noexcept
{
    vty_out(vty, "tftp_server or file is NULL%s", line_end);
    return failed;
}

void say_cannot_open(struct vty *vty, const std::string &path) noexcept
{
    vty_out(vty, "\r\nError: Open %s fail !%s", path.c_str(), line_end);
}

// Whether the programmer will get an image; says what is wrong with one that was copied.
bool is_usable(struct vty *vty, const std::string &path) noexcept
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return false;
    if (status.st_size == 0)
        vty_out(vty, "\r\nError: wrong file size !%s", line_end);
    else if (!base::Fd{::open(path.c_str(), O_RDONLY | O_CLOEXEC)})
        say_cannot_open(vty, path);
    else
        return true;
    diagd::run_dropping_output("rm " + path);
    return false;
}

} // namespace

int diagd::fetch_by_tftp(struct vty *vty, const char *server, const char *file) noexcept
{
    if (server == nullptr || file == nullptr)
        return missing_argument(vty);
    return fetch_from_server(vty, file, server, tftp_line(file, server));
}

int diagd::fetch_by_ftp(struct vty *vty, const char *server, const char *file, const char *user,
                        const char *password) noexcept
{
    if (server == nullptr || file == nullptr || user == nullptr || password == nullptr)
        return missing_argument(vty);
    return fetch_from_server(vty, file, server, ftp_line(file, server, user, password));
}

int diagd::fetch_by_usb(struct vty *vty, const char *file) noexcept
{
    if (file == nullptr) {
        vty_out(vty, "Error: file is NULL%s", line_end);
        return failed;
    }
    const std::string path = image_path(file);
    switch (holder_of(path)) {
    case PathHolder::nobody:
        break;
    case PathHolder::ours:
        vty_out(vty, "File %s is already exist%s", path.c_str(), line_end);
        return 0;
    case PathHolder::others:
        say_cannot_open(vty, path);
        file_outcome(file, false);
        return failed;
    }
    vty_out(vty, "Trying to download %s from usb, please wait...%s", file, line_end);
    flush_vty(vty);
    const bool copied = run_dropping_output(usb_line(file), {.total = longest_fetch}) == 0;
    if (!copied)
        run_dropping_output("rm " + path);
    const bool good = copied && is_usable(vty, path);
    file_outcome(file, good);
    return good ? 0 : failed;
}
