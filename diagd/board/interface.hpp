// SPDX-License-Identifier: GPL-2.0-or-later
// Interfaces of the board: their kinds and positions, how they are called, typed and listed.
// Failure policy: a board without records has no interfaces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct vty;

// Help of the token "<S/P>".
#define SLOT_PORT_STR "PON interface number,slot:<0>,port:<1-x>,x is 2,4,or 8.\n"

namespace diagd {

// Kinds of ports, and so classes of the optics in them; the numbers are those of the box's sessions and of
// other programs.
enum class PortKind : std::uint8_t { none = 0, gigabit_ethernet = 1, gpon = 2, xgpon = 3 };

// Place of a PON kind in tables of both.
[[nodiscard]] constexpr std::size_t pon_index(PortKind kind) noexcept
{
    return kind == PortKind::xgpon ? 1 : 0;
}

struct Interface {
    PortKind kind = PortKind::none;
    int slot = 0;
    int port = 0;
};

// Kind of the words "gigabitEthernet", "gpon" and "xgpon"; none of any other.
[[nodiscard]] PortKind port_kind(std::string_view word) noexcept;

// What the command parser accepted as "<S/P>": digits, slash, digits.  A number beyond int becomes the
// largest int, which names no port; text of another form leaves zeroes.
[[nodiscard]] Interface parse_interface(PortKind kind, std::string_view position) noexcept;

// "GE slot/port", "GPON slot/port" or "XGPON slot/port".
[[nodiscard]] std::string interface_name(const Interface &interface);
// The same with a word that a display has for all PON ports.
[[nodiscard]] std::string interface_name(const Interface &interface, const char *pon_word);

// The interfaces of the first board in service with PON ports, in port order, then the same of the first with
// gigabit Ethernet ports.  A PON port is listed when either kind's table has it in use, with the slot and the
// kind of the first that has; a gigabit Ethernet port when it is in use and present.
[[nodiscard]] std::vector<Interface> list_interfaces();

// Whether the board has that port: its kind's own table has it in use, in that slot.
[[nodiscard]] bool is_slot_support_port(const Interface &interface) noexcept;

// The interface that a command's kind word and "<S/P>" name.  When the board has no such port, says so to the
// operator and is empty.
[[nodiscard]] std::optional<Interface> find_interface(struct vty *vty, std::string_view kind_word,
                                                      std::string_view position);

} // namespace diagd
