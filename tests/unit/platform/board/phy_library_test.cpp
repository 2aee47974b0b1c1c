// SPDX-License-Identifier: GPL-2.0-or-later
// The C library of PHYs against a boardsim of its own.
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdint>

#include "tests/unit/platform/board/libraries.hpp"

namespace {

TEST_F(Libraries, phy_tells_its_identity)
{
    std::uint32_t oui = 0;
    std::uint8_t model = 0, revision = 0;
    EXPECT_EQ(misc_phy_info("aux", 1, &oui, &model, &revision), 0);
    EXPECT_EQ(oui, 0x0201f4U);
    EXPECT_EQ(model, 17);
    EXPECT_EQ(revision, 3);
}

TEST_F(Libraries, missing_phy_reads_ones_and_has_no_identity)
{
    std::uint32_t value = 0;
    EXPECT_EQ(misc_phy_read("aux", 9, 2, &value), 0);
    EXPECT_EQ(value, 0xffffU);
    std::uint8_t model = 0, revision = 0;
    EXPECT_EQ(misc_phy_info("aux", 9, &value, &model, &revision), -1);
    EXPECT_EQ(misc_phy_read("eth7", 1, 2, &value), -1);
    EXPECT_EQ(errno, ENODEV);
}

TEST_F(Libraries, phy_with_ones_in_one_identity_word_has_an_identity)
{
    std::uint32_t oui = 0;
    std::uint8_t model = 0, revision = 0;
    board_->ask({"phy", "set", "aux", "2", "2", "0xffff"});
    board_->ask({"phy", "set", "aux", "2", "3", "0xd113"});
    EXPECT_EQ(misc_phy_info("aux", 2, &oui, &model, &revision), 0);
    EXPECT_EQ(oui, 0x3ffff4U);
    EXPECT_EQ(model, 17);
    EXPECT_EQ(revision, 3);
    board_->ask({"phy", "set", "aux", "2", "2", "0x0807"});
    board_->ask({"phy", "set", "aux", "2", "3", "0xffff"});
    EXPECT_EQ(misc_phy_info("aux", 2, &oui, &model, &revision), 0);
    EXPECT_EQ(oui, 0x0201ffU);
    EXPECT_EQ(model, 63);
    EXPECT_EQ(revision, 15);
    EXPECT_EQ(misc_phy_reset("aux", 2), 0); // as it was
}

TEST_F(Libraries, phy_indirect_register_goes_through_its_window)
{
    EXPECT_EQ(misc_phy_write("aux", 1, 0x1e, 0x0a5), 0);
    EXPECT_EQ(misc_phy_write("aux", 1, 0x1f, 0x1234), 0);
    EXPECT_EQ(misc_phy_write("aux", 1, 0x1e, 0x0a6), 0);
    std::uint32_t value = 0;
    EXPECT_EQ(misc_phy_read("aux", 1, 0x1f, &value), 0);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(misc_phy_write("aux", 1, 0x1e, 0x0a5), 0);
    EXPECT_EQ(misc_phy_read("aux", 1, 0x1f, &value), 0);
    EXPECT_EQ(value, 0x1234U);
}

TEST_F(Libraries, phy_reset_brings_the_defaults_back)
{
    std::uint32_t before = 0, after = 0;
    EXPECT_EQ(misc_phy_read("aux", 1, 4, &before), 0);
    EXPECT_EQ(misc_phy_write("aux", 1, 4, 0x0001), 0);
    EXPECT_EQ(misc_phy_reset("aux", 1), 0);
    EXPECT_EQ(misc_phy_read("aux", 1, 4, &after), 0);
    EXPECT_EQ(after, before);
}

TEST_F(Libraries, reset_of_a_missing_phy_is_not_waited_for)
{
    board_->ask({"log", "clear"});
    errno = 0;
    EXPECT_EQ(misc_phy_reset("aux", 9), -1);
    EXPECT_EQ(errno, ENODEV) << "the lines that nobody drives are no reset that goes on";
    const std::string log = board_->ask({"log", "dump"});
    std::size_t reads = 0;
    for (std::size_t at = 0; (at = log.find(" phy_read ", at)) != log.npos; ++at)
        ++reads;
    EXPECT_EQ(reads, 1U) << log;
}

TEST_F(Libraries, phy_clause_45_registers_are_apart)
{
    EXPECT_EQ(misc_phy_write("aux", 1, 0x40018005, 0x77), 0);
    std::uint32_t value = 0;
    EXPECT_EQ(misc_phy_read("aux", 1, 0x40018005, &value), 0);
    EXPECT_EQ(value, 0x77U);
    EXPECT_EQ(misc_phy_read("aux", 1, 0x40038005, &value), 0);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(misc_phy_read("aux", 1, 0x40020005, &value), 0);
    EXPECT_EQ(value, 0xffffU) << "the chip has no such device";
}

} // namespace
