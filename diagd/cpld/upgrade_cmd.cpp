// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that replace, restore or erase the CPLD's logic.  They keep the whole daemon waiting until it is
// done; what the operator is to know before a wait is sent before it.
// Failure policy: an image that cannot be fetched is not programmed, which the alarm log says; what comes of
// the programming is the programmer's to tell.
#include "diagd/cpld/cpld_cmd.hpp"

#include "base/fd.hpp"
#include "diagd/board/registers.hpp"
#include "diagd/board/session.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"
#include "diagd/cpld/image_fetch.hpp"
#include "diagd/cpld/image_file.hpp"
#include "diagd/cpld/image_program.hpp"
#include "diagd/cpld/shell_runner.hpp"

#include <fcntl.h>

#include <string>

using diagd::line_end;

namespace {

constexpr const char *backup_image = "/media/app/K7200Q4_CPLD_1200HC_BACKUP.jed";
constexpr const char *restored_image = "tmp/cpld_backup.jed"; // the box starts the daemon in the root folder

// `fetch` takes the file's name and returns 0 when it is there.
template <class Fetch>
int upgrade(struct vty *vty, const char *source, const char *file, Fetch fetch) noexcept
{
    if (!diagd::is_image_name(file)) {
        vty_out(vty, "wrong file name.%s", line_end);
        return CMD_SUCCESS;
    }
    vty_out(vty, "Start to upgarde CPLD from %s...%s", source, line_end);
    if (fetch(file) != 0)
        return CMD_SUCCESS;
    diagd::flush_vty(vty);
    diagd::program_image(diagd::image_path(file));
    return CMD_SUCCESS;
}

int cannot_open_backup(struct vty *vty, const char *path) noexcept
{
    vty_out(vty, "Can't open CPLD Backup file: %s%s", path, line_end);
    return CMD_WARNING;
}

} // namespace

#define CPLD_UPGRADE_STR                                                                                     \
    "CPLD configuration.\n"                                                                                  \
    "CPLD upgrade.\n"

DEFUN(cpld_upgrade_tftp, cpld_upgrade_tftp_cmd, "cpld upgrade tftp FILENAME <A.B.C.D|X:X::X:X>",
      CPLD_UPGRADE_STR "CPLD upgrade by tftp.\n"
                       "CPLD upgrade filename.\n"
                       "tftp server ip address.\n"
                       "tftp server ipv6 address.\n")
{
    return upgrade(vty, "tftp", argv[3]->arg,
                   [&](const char *file) { return diagd::fetch_by_tftp(vty, argv[4]->arg, file); });
}

DEFUN(cpld_upgrade_ftp, cpld_upgrade_ftp_cmd,
      "cpld upgrade ftp FILENAME <A.B.C.D|X:X::X:X> USERNAME PASSWORD",
      CPLD_UPGRADE_STR "CPLD upgrade by ftp.\n"
                       "CPLD upgrade filename.\n"
                       "ftp server ip address.\n"
                       "ftp server ipv6 address.\n"
                       "ftp username.\n"
                       "ftp password.\n")
{
    return upgrade(vty, "ftp", argv[3]->arg, [&](const char *file) {
        return diagd::fetch_by_ftp(vty, argv[4]->arg, file, argv[5]->arg, argv[6]->arg);
    });
}

DEFUN(cpld_upgrade_by_usb, cpld_upgrade_by_usb_cmd, "cpld upgrade usb FILENAME",
      CPLD_UPGRADE_STR "CPLD upgrade by usb.\n"
                       "CPLD upgrade filename.\n")
{
    return upgrade(vty, "usb", argv[3]->arg,
                   [&](const char *file) { return diagd::fetch_by_usb(vty, file); });
}

DEFUN(cpld_restore, cpld_restore_cmd, "cpld restore",
      "CPLD configuration.\n"
      "CPLD restore from backup file.\n")
{
    vty_out(vty, "Start to restore CPLD from backup file...%s", line_end);
    if (!base::Fd{::open(backup_image, O_RDONLY | O_CLOEXEC)})
        return cannot_open_backup(vty, backup_image);
    if (diagd::holder_of(restored_image) == diagd::PathHolder::others)
        return cannot_open_backup(vty, restored_image);
    diagd::flush_vty(vty);
    diagd::run_to_its_end(std::string{"cp "} + backup_image + ' ' + restored_image);
    diagd::program_image(restored_image);
    return CMD_SUCCESS;
}

// The logic does not run again before it is programmed, so register 0 stays.  The programmer needs no board:
// others may have it meanwhile.
DEFUN_HIDDEN(cpld_erase, cpld_erase_cmd, "cpld erase",
             "CPLD configuration.\n"
             "CPLD erase.\n")
{
    vty_out(vty, "Start to erase CPLD...%s", line_end);
    diagd::flush_vty(vty);
    diagd::run_dropping_output(diagd::permit_programmer_line);
    {
        const diagd::BoardSession board{"cpld_erase", diagd::SessionPolicy::release_then_lower};
        if (!board)
            return CMD_WARNING;
        diagd::write_register(board.handle(), diagd::CpldRegister::logic_run, 0);
    }
    diagd::run_dropping_output("jtag /tmp 1");
    return CMD_SUCCESS;
}
