// SPDX-License-Identifier: GPL-2.0-or-later
// Sessions of operators, as libfrr announces them.  In C and apart from the rest: libfrr's headers bring
// another libyang than sysrepo's.
#include <zebra.h>

#include "platform/database/api/vty_hooks.h"
#include "vty.h"

static void (*session_opened)(struct vty *vty);
static void (*session_closed)(struct vty *vty);

static int on_open(struct vty *vty)
{
    session_opened(vty);
    return 0;
}

static int on_close(struct vty *vty)
{
    session_closed(vty);
    return 0;
}

void tq_vty_hooks_register(void (*opened)(struct vty *vty), void (*closed)(struct vty *vty))
{
    const bool is_first = !session_opened;

    session_opened = opened;
    session_closed = closed;
    if (is_first) {
        hook_register(vty_session_open, on_open);
        hook_register(vty_session_close, on_close);
    }
}
