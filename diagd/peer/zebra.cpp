// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's zebra client.  It only sends, so no callbacks are installed; libfrr connects and reconnects by
// itself, and a zebra that is away costs the daemon nothing.
#include "frr.hpp"
#include "privileges.hpp"

namespace {
constexpr int zebra_route_type = 32; // who we are towards zebra
}

struct zclient *zclient;

int diag_zclient_init(struct thread_master *master)
{
    zclient = zclient_new(master, &zclient_options_default, nullptr, 0);
    zclient_init(zclient, zebra_route_type, 0, &diagd_privs);
    return 0;
}
