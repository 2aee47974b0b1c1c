// SPDX-License-Identifier: GPL-2.0-or-later
// The CPLD: 256 registers, most of them plain cells, and two that front the cages.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "sim/boardsim/devices/cages.hpp"

namespace sim {

class Cpld {
public:
    // Told about every change of a register's value that a write caused.
    using Changed = std::function<void(std::uint8_t reg, std::uint8_t before, std::uint8_t after)>;

    Cpld(const board::Board &board, Cages &cages);

    // Bit p - 1 of a presence register reads 1 only while cage p holds a powered module.
    [[nodiscard]] std::uint8_t read(std::uint8_t reg);
    // From the bus: identity and status registers ignore it, and a presence register switches the supply of
    // the plugged cages only.
    void write(std::uint8_t reg, std::uint8_t value);
    // From the operator: like a write, but identity and status registers take it.
    void set(std::uint8_t reg, std::uint8_t value);

    // Turns the presence registers into cells like the others; they keep the value shown last.
    void set_plain(bool on);
    [[nodiscard]] bool plain() const { return plain_; }
    void on_change(Changed changed) { changed_ = std::move(changed); }
    [[nodiscard]] const std::array<std::uint8_t, 256> &cells() const { return cells_; }
    void restore(const std::array<std::uint8_t, 256> &cells) { cells_ = cells; }

private:
    [[nodiscard]] const board::Cages *presence_row(std::uint8_t reg) const;
    [[nodiscard]] std::uint8_t presence(const board::Cages &row);
    void switch_power(const board::Cages &row, std::uint8_t value);

    const board::Board &board_;
    Cages &cages_;
    std::array<std::uint8_t, 256> cells_{};
    bool plain_ = false;
    Changed changed_;
};

} // namespace sim
