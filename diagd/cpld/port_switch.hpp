// SPDX-License-Identifier: GPL-2.0-or-later
// Switching bits of a port register, for one port or for every port that the board records name.
#pragma once

#include "diagd/board/records.hpp"
#include "diagd/board/registers.hpp"

#include <cstdint>

namespace diagd {

enum class PortGroup {
    pon, // in either PON table
    sfp, // in the SFP table, and present
};

// Which records count: those of a board in service; commands want, too, that it takes register commands.
enum class RecordTest { in_service, in_service_and_ready };

// `value` with the bit of port `port` set or cleared.  Bits are counted from port 1 on modulo 32, so that
// port 0 has bit 31; what lies outside the 8 bits of a register has no effect.
[[nodiscard]] constexpr std::uint8_t with_port_bit(std::uint8_t value, unsigned port, bool on) noexcept
{
    const std::uint32_t bit = std::uint32_t{1} << ((port - 1) & 31);
    return static_cast<std::uint8_t>(on ? value | bit : value & ~bit);
}

// Whether the record carries ports of the group and passes the test.
[[nodiscard]] bool record_counts(const BoardRecord &record, PortGroup group, RecordTest test) noexcept;
// Whether entry k (0 to 31) of the record is a port of the group.
[[nodiscard]] bool has_port(const BoardRecord &record, PortGroup group, unsigned k) noexcept;

// Reads the register, switches the port's bit and writes it back.
void switch_port(int handle, CpldRegister reg, unsigned port, bool on) noexcept;
// The same for every port of the group in every record that counts: one read and one write per port.
void switch_every_port(int handle, CpldRegister reg, PortGroup group, RecordTest test, bool on) noexcept;

} // namespace diagd
