// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/devices/phys.hpp"

#include <algorithm>
#include <cerrno>

namespace sim {

namespace {

// Functions of register 13.
constexpr unsigned mmd_set_address = 0;
constexpr unsigned mmd_step_on_both = 2; // and 3: on writes only

constexpr std::uint16_t no_device = 0xffff; // nothing drives the line

bool is_clause45(std::uint32_t reg)
{
    return (reg & phy_clause45) != 0;
}

std::uint32_t device_of(std::uint32_t reg)
{
    return reg >> 16 & 0x1f;
}

bool is_control(std::uint32_t reg)
{
    return reg == phy::control || (is_clause45(reg) && (reg & 0xffff) == 0 && device_of(reg) <= 7);
}

bool is_read_only(std::uint32_t reg)
{
    if (!is_clause45(reg))
        return std::ranges::find(phy::read_only, reg) != phy::read_only.end();
    const std::uint32_t number = reg & 0xffff;
    return (device_of(reg) <= 7 && number >= 1 && number <= 6) || reg == phy_clause45_register(7, 19);
}

} // namespace

PhyChip::PhyChip(const board::Phy &identity) : identity_(identity)
{
    reset();
}

void PhyChip::reset()
{
    registers_.clear();
    indirect_.clear();
    lost_.clear();
    mmd_address_ = 0;
    for (const phy::Value &entry : phy::power_on)
        registers_[entry.number] = entry.value;
    const auto id1 = static_cast<std::uint16_t>(identity_.oui >> 6);
    const auto id2 =
        static_cast<std::uint16_t>((identity_.oui & 0x3f) << 10 | identity_.model << 4U | identity_.revision);
    registers_[phy::id1] = id1;
    registers_[phy::id2] = id2;
    for (const std::uint32_t device : phy::standard_devices) {
        registers_[phy_clause45_register(device, phy::id1)] = id1;
        registers_[phy_clause45_register(device, phy::id2)] = id2;
    }
    link_ = !cable_; // so that every register follows
    follow_link();
    lost_.clear();
    for (const phy::LinkValue &status : phy::status_values)
        registers_[status.number] = link_ ? status.up : status.down;
    for (const board::PhyRegister &entry : identity_.registers)
        registers_[entry.number] = entry.value;
    for (const board::PhyRegister &entry : identity_.indirect)
        indirect_[entry.number] = entry.value;
}

void PhyChip::follow_link()
{
    const bool link = cable_ && (registers_[phy::control] & phy::control_power_down) == 0;
    if (link == link_)
        return;
    link_ = link;
    for (const phy::LinkValue &entry : phy::link_values)
        registers_[entry.number] = link ? entry.up : entry.down;
    for (const phy::LinkValue &entry : phy::status_values) {
        if (!link)
            lost_.insert(entry.number);
        registers_[entry.number] = static_cast<std::uint16_t>(
            link ? entry.up & ~(lost_.contains(entry.number) ? phy::link_up : 0) : entry.down);
    }
}

void PhyChip::plug_cable(bool plugged)
{
    cable_ = plugged;
    follow_link();
}

unsigned PhyChip::mmd_function() const
{
    return look(phy::mmd_access) >> 14U;
}

std::uint32_t PhyChip::mmd_register() const
{
    return phy_clause45_register(look(phy::mmd_access) & 0x1fU, mmd_address_);
}

std::uint16_t PhyChip::look(std::uint32_t reg) const
{
    const auto cell = [](const auto &map, std::uint32_t number, std::uint16_t missing) {
        const auto found = map.find(number);
        return found != map.end() ? found->second : missing;
    };
    if (is_clause45(reg))
        return cell(registers_, reg, (phy::devices >> device_of(reg) & 1U) != 0 ? 0 : no_device);
    if (reg == phy::indirect_data)
        return cell(indirect_, look(phy::indirect_address), 0);
    if (reg == phy::mmd_data)
        return mmd_function() == mmd_set_address ? mmd_address_ : look(mmd_register());
    return cell(registers_, reg, 0);
}

std::uint16_t PhyChip::read(std::uint32_t reg)
{
    if (reg == phy::mmd_data && mmd_function() != mmd_set_address) {
        const std::uint16_t value = read(mmd_register());
        if (mmd_function() == mmd_step_on_both)
            ++mmd_address_;
        return value;
    }
    const std::uint16_t value = look(reg);
    if (link_ && lost_.erase(reg) != 0)
        registers_[reg] |= phy::link_up;
    return value;
}

void PhyChip::set(std::uint32_t reg, std::uint16_t value)
{
    if (reg == phy::indirect_data)
        indirect_[look(phy::indirect_address)] = value;
    else if (reg == phy::mmd_data && mmd_function() == mmd_set_address)
        mmd_address_ = value;
    else
        registers_[reg == phy::mmd_data ? mmd_register() : reg] = value;
}

void PhyChip::write(std::uint32_t reg, std::uint16_t value)
{
    if (reg == phy::mmd_data && mmd_function() != mmd_set_address) {
        write(mmd_register(), value);
        if (mmd_function() >= mmd_step_on_both)
            ++mmd_address_;
    } else if (is_control(reg) && (value & phy::control_reset) != 0) {
        reset();
    } else if (reg == phy::control) {
        set(reg, value & phy::control_kept);
        follow_link();
    } else if (!is_read_only(reg)) {
        set(reg, value);
    }
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

int Phys::read(const std::string &interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t &value)
{
    if (const int error = check(interface, phy, reg); error < 0)
        return error;
    PhyChip *chip = find(interface, phy);
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
