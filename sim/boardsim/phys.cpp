// SPDX-License-Identifier: GPL-2.0-or-later
#include "phys.hpp"

#include <algorithm>
#include <cerrno>

namespace sim {

namespace {

constexpr std::uint32_t control = 0;
constexpr std::uint32_t status = 1;
constexpr std::uint32_t id1 = 2;
constexpr std::uint32_t id2 = 3;
constexpr std::uint32_t indirect_address = 0x1e;
constexpr std::uint32_t indirect_data = 0x1f;
constexpr std::uint16_t control_reset = 1 << 15;
constexpr std::uint16_t control_default = 0x1140; // autonegotiation, full duplex, 1000 Mb/s
constexpr std::uint16_t status_default = 0x796d;  // all 10/100 modes, autonegotiation done, link up

} // namespace

PhyChip::PhyChip(const board::Phy &identity) : identity_(identity)
{
    reset();
}

void PhyChip::reset()
{
    registers_.fill(0);
    indirect_.clear();
    clause45_.clear();
    registers_[control] = control_default;
    registers_[status] = status_default;
    registers_[id1] = static_cast<std::uint16_t>(identity_.oui >> 6);
    registers_[id2] =
        static_cast<std::uint16_t>((identity_.oui & 0x3f) << 10 | identity_.model << 4U | identity_.revision);
    registers_[4] = 0x0de1; // advertised abilities
    registers_[5] = 0xcde1; // the same of the partner
    registers_[9] = 0x0300; // 1000BASE-T advertised
    registers_[10] = 0x3c00;
}

std::uint16_t PhyChip::read(std::uint32_t reg) const
{
    const auto cell = [](const auto &map, std::uint32_t number) {
        const auto found = map.find(number);
        return found != map.end() ? found->second : std::uint16_t{0};
    };
    if ((reg & phy_clause45) != 0)
        return cell(clause45_, reg);
    return reg == indirect_data ? cell(indirect_, registers_[indirect_address]) : registers_[reg];
}

void PhyChip::set(std::uint32_t reg, std::uint16_t value)
{
    if ((reg & phy_clause45) != 0)
        clause45_[reg] = value;
    else if (reg == indirect_data)
        indirect_[registers_[indirect_address]] = value;
    else
        registers_[reg] = value;
}

void PhyChip::write(std::uint32_t reg, std::uint16_t value)
{
    if (reg == control && (value & control_reset) != 0)
        reset();
    else if (reg != status && reg != id1 && reg != id2)
        set(reg, value);
}

Phys::Phys(const board::Board &board)
{
    for (const board::Phy &phy : board.phys)
        chips_.emplace_back(phy);
}

PhyChip *Phys::find(const std::string &interface, std::uint32_t phy)
{
    const auto chip = std::find_if(chips_.begin(), chips_.end(), [&](const PhyChip &candidate) {
        return candidate.identity().interface == interface && candidate.identity().address == phy;
    });
    return chip != chips_.end() ? &*chip : nullptr;
}

int Phys::check(const std::string &interface, std::uint32_t phy, std::uint32_t reg) const
{
    const bool known = std::any_of(chips_.begin(), chips_.end(), [&](const PhyChip &chip) {
        return chip.identity().interface == interface;
    });
    if (!known)
        return -ENODEV;
    return phy > 31 || (reg > 31 && (reg & phy_clause45) == 0) ? -EINVAL : 0;
}

int Phys::read(const std::string &interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t &value) const
{
    if (const int error = check(interface, phy, reg); error < 0)
        return error;
    const PhyChip *chip = const_cast<Phys *>(this)->find(interface, phy);
    value = chip != nullptr ? chip->read(reg) : 0xffff;
    return 0;
}

int Phys::write(const std::string &interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t value)
{
    if (const int error = check(interface, phy, reg); error < 0)
        return error;
    if (PhyChip *chip = find(interface, phy); chip != nullptr)
        chip->write(reg, static_cast<std::uint16_t>(value));
    return 0;
}

} // namespace sim
