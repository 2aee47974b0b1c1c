// SPDX-License-Identifier: GPL-2.0-or-later
// Ethernet PHYs on MDIO (IEEE 802.3 clauses 22 and 45).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "board_description.hpp"

namespace sim {

// Bit 30 of a register number marks a clause 45 one.
inline constexpr std::uint32_t phy_clause45 = 1U << 30;

class PhyChip {
public:
    explicit PhyChip(const board::Phy &identity);

    // Register 0-31, or a clause 45 number.  Register 0x1f is the window of the indirect register whose
    // number is in 0x1e.
    [[nodiscard]] std::uint16_t read(std::uint32_t reg) const;
    // Writing bit 15 of register 0 resets the chip; identity registers ignore writes.
    void write(std::uint32_t reg, std::uint16_t value);
    // The operator may set anything.
    void set(std::uint32_t reg, std::uint16_t value);
    [[nodiscard]] const board::Phy &identity() const { return identity_; }

private:
    void reset();

    board::Phy identity_;
    std::array<std::uint16_t, 32> registers_{};
    std::map<std::uint32_t, std::uint16_t> indirect_;
    std::map<std::uint32_t, std::uint16_t> clause45_;
};

class Phys {
public:
    explicit Phys(const board::Board &board);

    // 0 or a negative errno value.  An address without a PHY reads 0xffff, as the pulled-up line does.
    int read(const std::string &interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t &value) const;
    int write(const std::string &interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t value);
    PhyChip *find(const std::string &interface, std::uint32_t phy);
    [[nodiscard]] const std::vector<PhyChip> &all() const { return chips_; }

private:
    [[nodiscard]] int check(const std::string &interface, std::uint32_t phy, std::uint32_t reg) const;

    std::vector<PhyChip> chips_;
};

} // namespace sim
