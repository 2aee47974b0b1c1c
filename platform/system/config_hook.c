// SPDX-License-Identifier: GPL-2.0-or-later
// In C: libfrr's hooks are macros for it.
#include <zebra.h>

#include "platform/system/config_hook.h"
#include <libfrr.h>

static void (*config_read)(void);

static int on_config_read(struct thread_master *master)
{
    (void)master;
    config_read();
    return 0;
}

void tq_config_hook_register(void (*done)(void))
{
    config_read = done;
    hook_register(frr_config_post, on_config_read);
}
