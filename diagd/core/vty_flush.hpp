// SPDX-License-Identifier: GPL-2.0-or-later
// Sending a vty's output before its command returns.
#pragma once

#include "diagd/core/frr.hpp"

namespace diagd {

// libfrr sends what a command prints only when the command is done and the event loop runs again; a command
// that blocks, or ends with the board going down, says its last words through this.
inline void flush_vty(struct vty *vty) noexcept
{
    if (vty->wfd >= 0)
        buffer_flush_available(vty->obuf, vty->wfd);
}

} // namespace diagd
