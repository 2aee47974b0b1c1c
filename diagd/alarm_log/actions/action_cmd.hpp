// SPDX-License-Identifier: GPL-2.0-or-later
// Switching actions on behalf of an operator.
#pragma once

#include "diagd/core/frr.hpp"

#include <cstdint>
#include <string_view>

namespace diagd {

// Switches the action of the alarm of that name at once.  A switch that the database refuses is said on the
// vty, a name that is not in the catalogue on standard error.  0, or a platform error code.
int set_alarm_action(struct vty *vty, const char *name, std::string_view action, bool on);

// The same for the alarm of that id.
int set_alarm_action(struct vty *vty, std::uint16_t id, std::string_view action, bool on);

// The keyword that switches on.
[[nodiscard]] inline bool is_enable(const struct cmd_token *token)
{
    return std::string_view{token->text} == "enable";
}

// Says on the vty that the configuration failed, unless `code` is 0.
void tell_configuration_failure(struct vty *vty, int code);

} // namespace diagd
