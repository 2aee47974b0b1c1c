// SPDX-License-Identifier: GPL-2.0-or-later
// Switching bits of a port register (see port_switch.hpp).
#include "diagd/cpld/port_switch.hpp"

#include "diagd/board/registers.hpp"

namespace diagd {

bool record_counts(const BoardRecord &record, PortGroup group, RecordTest test) noexcept
{
    const std::uint32_t capability = group == PortGroup::pon ? BOARD_CAPABILITY_PON : BOARD_CAPABILITY_SFP;
    const bool ready = test == RecordTest::in_service || record.word(board_offset_state) == 0;
    return ready && record.in_service() && record.has_capability(capability);
}

bool has_port(const BoardRecord &record, PortGroup group, unsigned k) noexcept
{
    if (group == PortGroup::pon)
        return record.port(PortTable::pon_first, k).in_use != 0 ||
               record.port(PortTable::pon_second, k).in_use != 0;
    const BoardPort port = record.port(PortTable::sfp, k);
    return port.in_use != 0 && port.present;
}

void switch_port(int handle, CpldRegister reg, unsigned port, bool on) noexcept
{
    write_register(handle, reg, with_port_bit(read_register(handle, reg), port, on));
}

void switch_every_port(int handle, CpldRegister reg, PortGroup group, RecordTest test, bool on) noexcept
{
    for_each_board_record([&](const BoardRecord &record) {
        for (unsigned k = 0; k < BOARD_PORT_ENTRIES && record_counts(record, group, test); ++k) {
            if (has_port(record, group, k))
                switch_port(handle, reg, k, on);
        }
        return true;
    });
}

} // namespace diagd
