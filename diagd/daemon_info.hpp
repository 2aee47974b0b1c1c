// SPDX-License-Identifier: GPL-2.0-or-later
// What libfrr is told about the daemon: names, vty port, signals, privileges.
#pragma once

#include "diagd/core/frr.hpp"

extern struct frr_daemon_info diagd_di;
