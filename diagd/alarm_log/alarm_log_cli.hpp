// SPDX-License-Identifier: GPL-2.0-or-later
// What the alarm log puts into the command frame.
#pragma once

struct vty;

namespace diagd {

// Its commands, in their order; between them nothing else is installed.
void install_alarm_log_commands() noexcept;

// Writers of the running configuration, for the nodes: the alarm log's settings, and the optical thresholds
// of each PON port.
int alarm_log_config_write(struct vty *vty) noexcept;
int gpon_config_write(struct vty *vty) noexcept;
int xgpon_config_write(struct vty *vty) noexcept;

} // namespace diagd
