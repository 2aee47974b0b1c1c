// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/devices/cages.hpp"

#include <cerrno>

namespace sim {

int Module::read(std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data) const
{
    const auto device = live.devices.find(address);
    if (dead || device == live.devices.end())
        return -ENXIO;
    for (std::uint8_t &byte : data)
        byte = device->second.read(reg++);
    return 0;
}

int Module::write(std::uint8_t address, std::uint8_t reg, std::span<const std::uint8_t> data)
{
    const auto device = live.devices.find(address);
    if (dead || device == live.devices.end())
        return -ENXIO;
    for (const std::uint8_t byte : data)
        device->second.write(reg++, byte);
    return 0;
}

bool Cage::visible() const
{
    if (presence != Presence::real)
        return presence == Presence::stuck_on;
    return module && powered;
}

// With plain registers nothing switches the supply, so every plugged module has it.
Module *Cage::answering(bool gated)
{
    if (!module || (gated && !powered))
        return nullptr;
    return &*module;
}

void Cage::set_power(bool on)
{
    if (!module)
        return;
    if (on && !powered)
        module->power_up();
    powered = on;
}

void Cage::plug(ModuleImage image)
{
    module.emplace(std::move(image));
    powered = true;
}

void Cage::unplug()
{
    module.reset();
    powered = false;
}

std::string Cage::name() const
{
    return (kind == CageKind::pon ? "pon " : "ge ") + std::to_string(port);
}

Cages::Cages(const board::Board &board) : board_(board)
{
    for (int port = 1; port <= board.pon.count; ++port)
        cages_.push_back({.kind = CageKind::pon, .port = port, .module = {}});
    for (int port = 1; port <= board.ge.count; ++port)
        cages_.push_back({.kind = CageKind::ge, .port = port, .module = {}});
}

Cage *Cages::find(CageKind kind, int port)
{
    for (Cage &cage : cages_)
        if (cage.kind == kind && cage.port == port)
            return &cage;
    return nullptr;
}

Cage *Cages::on_channel(int channel)
{
    const int pon = channel - board_.pon.first_channel;
    if (pon >= 0 && pon < board_.pon.count)
        return find(CageKind::pon, pon + 1);
    const int ge = channel - board_.ge.first_channel;
    return ge >= 0 && ge < board_.ge.count ? find(CageKind::ge, ge + 1) : nullptr;
}

} // namespace sim
