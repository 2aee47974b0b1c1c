// SPDX-License-Identifier: GPL-2.0-or-later
// Registers of the simulated PHYs, as IEEE 802.3 has them.
#include "sim/boardsim/devices/phys.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using sim::phy_clause45_register;

constexpr std::uint16_t link_bit = 1 << 2;
constexpr std::uint16_t negotiated_bit = 1 << 5;

class Phy : public testing::Test {
protected:
    sim::Phys phys{board::load(OLT8_JSON)};
    sim::PhyChip &chip = *phys.find("aux", 1);

    // Through registers 13 and 14, as clause 22 gets at the registers of clause 45.
    void choose(std::uint16_t device, std::uint16_t reg, std::uint16_t function)
    {
        chip.write(13, device);
        chip.write(14, reg);
        chip.write(13, static_cast<std::uint16_t>(function << 14 | device));
    }
};

TEST_F(Phy, has_the_standards_registers_after_power_on)
{
    EXPECT_EQ(chip.read(0), 0x1140) << "autonegotiation, full duplex, 1000 Mb/s";
    EXPECT_EQ(chip.read(1), 0x796d) << "negotiated, link, extended status";
    EXPECT_EQ(chip.read(2) << 6 | chip.read(3) >> 10, 0x0201f4);
    EXPECT_EQ(chip.read(3) & 0x3ff, 17 << 4 | 3);
    EXPECT_NE(chip.read(5), 0) << "a partner";
    EXPECT_EQ(chip.read(15), 0x3000) << "1000BASE-T, full and half duplex";
    EXPECT_EQ(chip.read(phy_clause45_register(1, 2)), chip.read(2));
    EXPECT_EQ(chip.read(phy_clause45_register(7, 3)), chip.read(3));
    EXPECT_EQ(chip.read(phy_clause45_register(1, 5)), 1 | 1 << 1 | 1 << 3 | 1 << 7)
        << "clause 22, PMA, PCS, autonegotiation";
}

TEST_F(Phy, has_what_the_board_describes_of_it)
{
    EXPECT_EQ(chip.read(24), 0x0400);
    EXPECT_EQ(chip.read(0x401e8000), 0x0102);
    chip.write(0x1e, 0xa5);
    EXPECT_EQ(chip.read(0x1f), 0x0c31);
}

TEST_F(Phy, status_and_identity_are_not_written)
{
    for (const std::uint32_t reg : {1u, 2u, 3u, 5u, 6u, 10u, 15u, 0x40010001u, 0x40010002u, 0x40010005u}) {
        const std::uint16_t before = chip.read(reg);
        chip.write(reg, static_cast<std::uint16_t>(~before));
        EXPECT_EQ(chip.read(reg), before) << reg;
    }
}

TEST_F(Phy, a_lost_link_shows_until_it_is_read)
{
    chip.plug_cable(false);
    chip.plug_cable(true);
    EXPECT_EQ(chip.look(1) & link_bit, 0);
    EXPECT_EQ(chip.read(1) & link_bit, 0) << "it has been away";
    EXPECT_NE(chip.read(1) & link_bit, 0) << "it is back";
    EXPECT_EQ(chip.read(0x40010001) & link_bit, 0) << "each status register keeps its own note";
    EXPECT_NE(chip.read(0x40010001) & link_bit, 0);
}

TEST_F(Phy, without_a_cable_there_is_no_partner)
{
    chip.plug_cable(false);
    EXPECT_FALSE(chip.link());
    EXPECT_EQ(chip.read(1) & (link_bit | negotiated_bit), 0);
    EXPECT_EQ(chip.read(1) & link_bit, 0) << "reading brings no link";
    EXPECT_EQ(chip.read(5), 0);
    EXPECT_EQ(chip.read(10), 0);
    EXPECT_EQ(chip.read(0x40070013), 0);
    chip.write(0, 0x8000);
    EXPECT_EQ(chip.read(1) & link_bit, 0) << "a reset plugs no cable";
}

TEST_F(Phy, power_down_takes_the_link)
{
    chip.write(0, 0x1940);
    EXPECT_EQ(chip.read(0), 0x1940);
    EXPECT_FALSE(chip.link());
    chip.write(0, 0x1140);
    EXPECT_TRUE(chip.link());
}

TEST_F(Phy, commands_of_the_control_register_are_done_at_once)
{
    chip.write(0, 0x1340);
    EXPECT_EQ(chip.read(0), 0x1140) << "negotiation started again";
    chip.write(4, 1);
    chip.write(0, 0x8000);
    EXPECT_EQ(chip.read(0), 0x1140);
    EXPECT_EQ(chip.read(4), 0x0de1);
    chip.write(4, 1);
    chip.write(phy_clause45_register(1, 0), 0x8000);
    EXPECT_EQ(chip.read(4), 0x0de1) << "reset through clause 45";
}

TEST_F(Phy, registers_13_and_14_lead_to_clause_45)
{
    choose(7, 16, 1);
    EXPECT_EQ(chip.read(14), 0x0de1);
    EXPECT_EQ(chip.read(14), 0x0de1) << "the address stays";
    chip.write(14, 0x0001);
    EXPECT_EQ(chip.read(phy_clause45_register(7, 16)), 1);
    choose(1, 2, 2);
    EXPECT_EQ(chip.read(14), chip.read(2));
    EXPECT_EQ(chip.read(14), chip.read(3)) << "the address steps on";
    choose(1, 0x8000, 3);
    chip.write(14, 0x11);
    chip.write(14, 0x22);
    EXPECT_EQ(chip.read(phy_clause45_register(1, 0x8000)), 0x11);
    EXPECT_EQ(chip.read(phy_clause45_register(1, 0x8001)), 0x22);
}

TEST_F(Phy, a_device_that_the_chip_lacks_reads_ones)
{
    EXPECT_EQ(chip.read(phy_clause45_register(2, 0)), 0xffff);
    EXPECT_EQ(chip.read(phy_clause45_register(3, 0x8000)), 0);
}

TEST_F(Phy, the_operator_may_set_anything)
{
    chip.set(1, 0x1234);
    EXPECT_EQ(chip.look(1), 0x1234);
    EXPECT_EQ(chip.read(1), 0x1234);
    chip.set(2, 0xabcd);
    EXPECT_EQ(chip.read(2), 0xabcd);
}

TEST_F(Phy, unknown_places_are_refused_or_read_ones)
{
    std::uint32_t value = 0;
    EXPECT_EQ(phys.read("aux", 9, 0, value), 0);
    EXPECT_EQ(value, 0xffffu);
    EXPECT_EQ(phys.read("eth7", 1, 0, value), -ENODEV);
    EXPECT_EQ(phys.read("aux", 1, 32, value), -EINVAL);
    EXPECT_EQ(phys.write("aux", 32, 0, 0), -EINVAL);
}

} // namespace
