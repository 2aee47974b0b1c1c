// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/devices/cpld.hpp"

namespace sim {

Cpld::Cpld(const board::Board &board, Cages &cages) : board_(board), cages_(cages)
{
    cells_[board.cpld.logic_version_register] = board.cpld.logic_version;
    cells_[board.cpld.device_type_register] = board.cpld.device_type;
    cells_[board.cpld.power_register] = board.cpld.power_status;
}

const board::Cages *Cpld::presence_row(std::uint8_t reg) const
{
    if (plain_)
        return nullptr;
    if (reg == board_.pon.presence_register)
        return &board_.pon;
    return reg == board_.ge.presence_register ? &board_.ge : nullptr;
}

std::uint8_t Cpld::presence(const board::Cages &row)
{
    unsigned bits = 0;
    for (int port = 1; port <= row.count; ++port)
        if (cages_.on_channel(row.first_channel + port - 1)->visible())
            bits |= 1U << (port - 1);
    return static_cast<std::uint8_t>(bits);
}

void Cpld::switch_power(const board::Cages &row, std::uint8_t value)
{
    for (int port = 1; port <= row.count; ++port)
        cages_.on_channel(row.first_channel + port - 1)->set_power((value >> (port - 1) & 1) != 0);
}

std::uint8_t Cpld::read(std::uint8_t reg)
{
    const board::Cages *row = presence_row(reg);
    return row != nullptr ? presence(*row) : cells_[reg];
}

void Cpld::write(std::uint8_t reg, std::uint8_t value)
{
    const board::Cpld &fixed = board_.cpld;
    if (reg != fixed.logic_version_register && reg != fixed.device_type_register &&
        reg != fixed.power_register)
        set(reg, value);
}

void Cpld::set(std::uint8_t reg, std::uint8_t value)
{
    const std::uint8_t before = read(reg);
    if (const board::Cages *row = presence_row(reg); row != nullptr)
        switch_power(*row, value);
    else
        cells_[reg] = value;
    const std::uint8_t after = read(reg);
    if (changed_ && before != after)
        changed_(reg, before, after);
}

void Cpld::set_plain(bool on)
{
    if (on && !plain_)
        for (const std::uint8_t reg : {board_.pon.presence_register, board_.ge.presence_register})
            cells_[reg] = read(reg);
    plain_ = on;
}

} // namespace sim
