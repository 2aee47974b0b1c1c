// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's privilege set.
#include "diagd/core/privileges.hpp"

#include "base/box_identity.hpp"

#include <iterator>

static zebra_capabilities_t _caps_p[] = {ZCAP_NET_RAW, ZCAP_BIND, ZCAP_SYS_ADMIN};

struct zebra_privs_t diagd_privs = {
    .caps_p = _caps_p,
    .caps_i = nullptr,
    .cap_num_p = std::size(_caps_p),
    .cap_num_i = 0,
    .user = base::daemon_user,
    .group = base::box_group,
    .vty_group = base::box_group,
};
