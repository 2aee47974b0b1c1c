// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/board/interface.hpp"

#include "tests/unit/printing_vty.hpp"
#include "tq_board.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

using diagd::Interface;
using diagd::interface_name;
using diagd::PortKind;

namespace {

Interface parse(const char *position)
{
    return diagd::parse_interface(PortKind::gpon, position);
}

} // namespace

// A board whose only port is GPON 0/3.
extern "C" int board_mmap_read(int index, void *record)
{
    if (index > 0)
        return -1;
    auto *const bytes = static_cast<unsigned char *>(record);
    std::memset(bytes, 0, BOARD_REC_SIZE);
    bytes[104] = 0x08; // has PON ports
    bytes[108] = 6;    // in service
    bytes[240 + 28 * 3] = 1;
    return 0;
}

TEST(Interface, the_words_of_commands_name_kinds)
{
    EXPECT_EQ(diagd::port_kind("gigabitEthernet"), PortKind::gigabit_ethernet);
    EXPECT_EQ(diagd::port_kind("gpon"), PortKind::gpon);
    EXPECT_EQ(diagd::port_kind("xgpon"), PortKind::xgpon);
    for (const char *word : {"", "GPON", "ge", "gponx"})
        EXPECT_EQ(diagd::port_kind(word), PortKind::none) << word;
}

TEST(Interface, kinds_have_the_numbers_that_sessions_and_other_programs_know)
{
    EXPECT_EQ(static_cast<int>(PortKind::gigabit_ethernet), 1);
    EXPECT_EQ(static_cast<int>(PortKind::gpon), 2);
    EXPECT_EQ(static_cast<int>(PortKind::xgpon), 3);
    EXPECT_EQ(diagd::pon_index(PortKind::gpon), 0);
    EXPECT_EQ(diagd::pon_index(PortKind::xgpon), 1);
}

TEST(Interface, is_called_by_its_kind_and_position)
{
    EXPECT_EQ(interface_name({PortKind::gigabit_ethernet, 0, 2}), "GE 0/2");
    EXPECT_EQ(interface_name({PortKind::gpon, 1, 31}), "GPON 1/31");
    EXPECT_EQ(interface_name({PortKind::xgpon, 0, INT_MIN}), "XGPON 0/-2147483648");
    EXPECT_EQ(interface_name({static_cast<PortKind>(200), 0, 1}), " 0/1");
}

TEST(Interface, a_display_may_have_one_word_for_all_pon_ports)
{
    EXPECT_EQ(interface_name({PortKind::gpon, 0, 1}, "PON"), "PON 0/1");
    EXPECT_EQ(interface_name({PortKind::xgpon, 0, 2}, "PON"), "PON 0/2");
    EXPECT_EQ(interface_name({PortKind::gigabit_ethernet, 0, 3}, "PON"), "GE 0/3");
}

TEST(Interface, one_that_a_command_names_is_found_or_said_not_to_exist)
{
    PrintingVty vty;
    const auto found = diagd::find_interface(&vty.session, "gpon", "0/3");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->kind, PortKind::gpon);
    EXPECT_EQ(found->port, 3);
    EXPECT_EQ(vty.text(), "");
    EXPECT_FALSE(diagd::find_interface(&vty.session, "gigabitEthernet", "0/9"));
    EXPECT_EQ(vty.text(), "GE 0/9 not exist\r\n");
    EXPECT_FALSE(diagd::find_interface(&vty.session, "xgpon", "0/3"));
    EXPECT_EQ(vty.text(), "XGPON 0/3 not exist\r\n");
}

TEST(Interface, reads_slot_and_port)
{
    const diagd::Interface position = parse("0/3");
    EXPECT_EQ(position.slot, 0);
    EXPECT_EQ(position.port, 3);
    EXPECT_EQ(parse("12/34").slot, 12);
}

TEST(Interface, a_number_that_does_not_fit_names_no_port)
{
    EXPECT_EQ(parse("0/99999999999999999999").port, INT_MAX);
    EXPECT_EQ(parse("99999999999/1").slot, INT_MAX);
}

TEST(Interface, other_text_leaves_zeroes)
{
    for (const char *text : {"", "/", "x/y", "gpon"}) {
        EXPECT_EQ(parse(text).slot, 0) << text;
        EXPECT_EQ(parse(text).port, 0) << text;
    }
}
