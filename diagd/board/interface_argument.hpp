// SPDX-License-Identifier: GPL-2.0-or-later
// Interfaces as operators name them in commands: a word for the kind, then the position.
#pragma once

#include "diagd/board/slot_port.hpp"
#include "diagd/core/frr.hpp"

#include <optional>
#include <string>
#include <string_view>

// Help of the token "<S/P>".
#define SLOT_PORT_STR "PON interface number,slot:<0>,port:<1-x>,x is 2,4,or 8.\n"

namespace diagd {

struct InterfaceArgument {
    PortKind kind;
    SlotPort position;
};

// Kind of the words "gigabitEthernet", "gpon" and "xgpon"; none of any other.
[[nodiscard]] PortKind port_kind(std::string_view word) noexcept;

// "GE slot/port", "GPON slot/port" or "XGPON slot/port".
[[nodiscard]] std::string port_name(const InterfaceArgument &interface);

// The interface that a command's kind word and "<S/P>" name.  When the board has no such port, says so to the
// operator and is empty.
[[nodiscard]] std::optional<InterfaceArgument> find_interface(struct vty *vty, std::string_view kind_word,
                                                              std::string_view position);

} // namespace diagd
