// SPDX-License-Identifier: GPL-2.0-or-later
// Ethernet PHYs on MDIO (IEEE 802.3 clauses 22 and 45).
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/description/board_description.hpp"
#include "sim/boardsim/devices/phy_registers.hpp"

namespace sim {

class PhyChip {
public:
    explicit PhyChip(const board::Phy &identity);

    // As the bus has them; register 0-31, or a clause 45 number.  Register 0x1f is the window of the indirect
    // register whose number is in 0x1e, register 14 that of the clause 45 register chosen through 13. Reading
    // a status register ends its note of a lost link.  Writing bit 15 of a control register resets the chip.
    std::uint16_t read(std::uint32_t reg);
    void write(std::uint32_t reg, std::uint16_t value);
    // As the operator has them: looking changes nothing, and anything may be set.
    [[nodiscard]] std::uint16_t look(std::uint32_t reg) const;
    void set(std::uint32_t reg, std::uint16_t value);
    // The cable, with a partner that can do what this chip can.
    void plug_cable(bool plugged);
    [[nodiscard]] bool link() const { return link_; }
    [[nodiscard]] const board::Phy &identity() const { return identity_; }

private:
    void reset();
    void follow_link();
    // The clause 45 register behind register 14.
    [[nodiscard]] std::uint32_t mmd_register() const;
    [[nodiscard]] unsigned mmd_function() const;

    board::Phy identity_;
    std::map<std::uint32_t, std::uint16_t> registers_;
    std::map<std::uint32_t, std::uint16_t> indirect_;
    std::set<std::uint32_t> lost_; // status registers that still show a link as lost
    std::uint16_t mmd_address_ = 0;
    bool cable_ = true;
    bool link_ = false;
};

class Phys {
public:
    explicit Phys(const board::Board &board);

    // 0 or a negative errno value.  An address without a PHY reads 0xffff, as the pulled-up line does.
    int read(const std::string &interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t &value);
    int write(const std::string &interface, std::uint32_t phy, std::uint32_t reg, std::uint32_t value);
    PhyChip *find(const std::string &interface, std::uint32_t phy);
    [[nodiscard]] const std::vector<PhyChip> &all() const { return chips_; }

private:
    [[nodiscard]] int check(const std::string &interface, std::uint32_t phy, std::uint32_t reg) const;

    std::vector<PhyChip> chips_;
};

} // namespace sim
