// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/physics/drift.hpp"

#include <algorithm>
#include <cmath>

namespace sim {

namespace {

constexpr double step_ms = 1000;
constexpr std::uint8_t monitoring_type = 92; // SFF-8472 A0h; bit 6: diagnostics are there
constexpr std::uint8_t monitoring_present = 1 << 6;

std::uint16_t word(const ModuleDevice &device, std::uint8_t reg)
{
    return static_cast<std::uint16_t>(device.lower[reg] << 8 | device.lower[reg + 1U]);
}

void put_word(ModuleDevice &device, std::uint8_t reg, double value, double min, double max)
{
    const auto raw = static_cast<std::uint16_t>(std::lround(std::clamp(value, min, max)));
    device.lower[reg] = static_cast<std::uint8_t>(raw >> 8);
    device.lower[reg + 1U] = static_cast<std::uint8_t>(raw);
}

void add_celsius(const ModuleDevice &stored, ModuleDevice &live, std::uint8_t reg, double celsius)
{
    const double raw = static_cast<std::int16_t>(word(stored, reg)) + celsius * 256;
    const auto bits = static_cast<std::uint16_t>(
        static_cast<std::int16_t>(std::lround(std::clamp(raw, -32768.0, 32767.0))));
    live.lower[reg] = static_cast<std::uint8_t>(bits >> 8);
    live.lower[reg + 1U] = static_cast<std::uint8_t>(bits);
}

void scale(const ModuleDevice &stored, ModuleDevice &live, std::uint8_t reg, double factor)
{
    put_word(live, reg, word(stored, reg) * factor, 0, 65535);
}

} // namespace

double Drift::walk(double value, double stride, double bound)
{
    const double unit =
        static_cast<double>(random_() - random_.min()) / static_cast<double>(random_.max() - random_.min());
    // The pull towards the middle keeps it from resting at a bound.
    return std::clamp(value * 0.95 + (2 * unit - 1) * stride, -bound, bound);
}

void Drift::apply(Module &module, const Movement &movement)
{
    for (const auto &[address, stored] : module.stored.devices) {
        ModuleDevice &live = module.live.devices.at(address);
        if (address == address_a0 && is_qsfp_identifier(stored.lower[0])) { // SFF-8636 lower memory
            add_celsius(stored, live, 22, movement.celsius);
            scale(stored, live, 26, movement.voltage);
            for (std::uint8_t lane = 0; lane < 4; ++lane) {
                scale(stored, live, static_cast<std::uint8_t>(34 + 2 * lane), movement.power);
                scale(stored, live, static_cast<std::uint8_t>(42 + 2 * lane), movement.bias);
                scale(stored, live, static_cast<std::uint8_t>(50 + 2 * lane), movement.power);
            }
        } else if (address == address_a2 || address == address_b2) { // SFF-8472 A2h
            const auto identity = module.stored.devices.find(static_cast<std::uint8_t>(address - 1));
            if (identity == module.stored.devices.end() ||
                (identity->second.lower[monitoring_type] & monitoring_present) == 0)
                continue;
            add_celsius(stored, live, 96, movement.celsius);
            scale(stored, live, 98, movement.voltage);
            scale(stored, live, 100, movement.bias);
            scale(stored, live, 102, movement.power);
            scale(stored, live, 104, movement.power);
        }
    }
}

void Drift::step()
{
    board_celsius_ = walk(board_celsius_, 0.12, 1.0);
    // The sensor has steps of an eighth of a degree.
    board_.lm75.set_offset(static_cast<int>(std::lround(board_celsius_ * 8)) * 32);
    for (Cage &cage : board_.cages.all()) {
        if (!cage.module) {
            movements_.erase(&cage);
            continue;
        }
        Movement &movement = movements_[&cage];
        movement.celsius = walk(movement.celsius, 0.15, 1.5);
        movement.power = 1 + walk(movement.power - 1, 0.004, 0.03);
        movement.bias = 1 + walk(movement.bias - 1, 0.003, 0.02);
        movement.voltage = 1 + walk(movement.voltage - 1, 0.0005, 0.004);
        apply(*cage.module, movement);
    }
}

void Drift::start()
{
    timer_.start(step_ms, [this] {
        step();
        start();
    });
}

void Drift::stop()
{
    if (timer_.runs())
        settle();
    timer_.stop();
}

void Drift::settle()
{
    board_.lm75.set_offset(0);
    for (Cage &cage : board_.cages.all())
        if (cage.module)
            apply(*cage.module, Movement{});
    movements_.clear();
    board_celsius_ = 0;
}

} // namespace sim
