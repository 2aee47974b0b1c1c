// SPDX-License-Identifier: GPL-2.0-or-later
// Command nodes.  The numbers are shared with the box's vty shell; the diagnostics node belongs to the
// platform's libfrr, which installs it, the daemon only installs commands into it.
#pragma once

#include "diagd/core/frr.hpp"

namespace diagd {

inline constexpr auto config_node = CONFIG_NODE;
inline constexpr auto fan_node = static_cast<enum node_type>(97);
inline constexpr auto gpon_node = static_cast<enum node_type>(124);
inline constexpr auto xgpon_node = static_cast<enum node_type>(125);
inline constexpr auto diagnose_node = static_cast<enum node_type>(133);
inline constexpr auto alarm_log_node = static_cast<enum node_type>(155);
static_assert(config_node == 4);

} // namespace diagd
