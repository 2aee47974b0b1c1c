// SPDX-License-Identifier: GPL-2.0-or-later
// Fetching a CPLD image into /tmp.  The outcome is filed as an alarm record; the vty has been told what it
// waits for before the wait begins.
//
// Failure policy: what somebody else has put at the image's path is neither written nor used nor removed, and
// the fetch fails.  One whose file does not grow for a minute, and any after ten minutes, is ended and fails.
//
// A fetch returns 0 when the image is there.  Arguments are as an operator types them, NULL when missing; a
// file name must have passed is_image_name.
#pragma once

struct vty;

namespace diagd {

// Otherwise: -1 with an argument missing, or the program's wait status.
int fetch_by_tftp(struct vty *vty, const char *server, const char *file) noexcept;
int fetch_by_ftp(struct vty *vty, const char *server, const char *file, const char *user,
                 const char *password) noexcept;
// Takes the first file of that name on any stick.  One that lies in /tmp already is good enough, and nobody
// looks at the sticks.  Otherwise: -1.
int fetch_by_usb(struct vty *vty, const char *file) noexcept;

} // namespace diagd
