// SPDX-License-Identifier: GPL-2.0-or-later
// The shared RSSI/TXDIS pin: what is done to the board, and what the control byte says.
#include "diagd/transceiver/memory/rssi_txdis.hpp"

#include "tests/unit/transceiver/module_board_double.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace diagd;

namespace {

using Lines = std::vector<std::string>;

class SharedPinControl : public testing::Test {
protected:
    void SetUp() override { board_double.reset(); }
    void TearDown() override { board_double.expect_given_back(); }

    static const Lines &select(PortKind kind, int port, SharedPin pin = SharedPin::rssi)
    {
        board_double.record.clear();
        select_shared_pin(kind, port, pin);
        return board_double.record;
    }

    const Lines opening{"P", "RAISE transceiver_rssi_txids_set", "OPEN 0", "LOWER"};
    const Lines closing{"CHE", "CLOSE", "V"};
    const Lines unreached{"CLOSE", "V"};
};

TEST_F(SharedPinControl, changes_bit_6_and_keeps_the_others)
{
    Memory page = board_double.plug_pon(3)[0x51];
    page[118] = 0x00;
    EXPECT_EQ(select(PortKind::gpon, 3),
              opening + lines("R 11", "CH 2", "I 51:118 1", "W 51:118=64") + closing);
    page[118] = 0xC0;
    EXPECT_EQ(select(PortKind::xgpon, 3, SharedPin::txdis),
              opening + lines("R 11", "CH 2", "I 51:118 1", "W 51:118=128") + closing);
    page[118] = 0xBF;
    select(PortKind::gpon, 3);
    EXPECT_EQ(page[118], 0xFF);
    select(PortKind::gpon, 3, SharedPin::txdis);
    EXPECT_EQ(page[118], 0xBF);
}

TEST_F(SharedPinControl, of_a_gigabit_port_is_behind_register_12_and_the_pon_channels)
{
    board_double.plug_gigabit(2)[0x51][118] = 0x01;
    EXPECT_EQ(select(PortKind::gigabit_ethernet, 2),
              opening + lines("R 12", "CH 9", "I 51:118 1", "W 51:118=65") + closing);
}

TEST_F(SharedPinControl, of_no_port_kind_touches_nothing)
{
    board_double.plug_pon(1);
    board_double.plug_gigabit(1);
    for (const int kind : {0, 4, -1}) {
        EXPECT_EQ(select(static_cast<PortKind>(kind), 1), opening + unreached) << kind;
        EXPECT_FALSE(read_pin_control(static_cast<PortKind>(kind), 1)) << kind;
    }
}

TEST_F(SharedPinControl, of_an_absent_module_and_of_no_port_touches_nothing)
{
    board_double.plug_pon(1);
    for (const int port : {2, 8, 0, -1, 9, 32, 33})
        EXPECT_EQ(select(PortKind::gpon, port), opening + lines("R 11") + unreached) << port;
}

TEST_F(SharedPinControl, behind_a_channel_that_cannot_be_selected_touches_nothing)
{
    board_double.plug_pon(1);
    board_double.fail({"select"});
    EXPECT_EQ(select(PortKind::gpon, 1), opening + lines("R 11", "CH 0") + unreached);
    EXPECT_FALSE(read_pin_control(PortKind::gpon, 1));
}

TEST_F(SharedPinControl, without_the_cpld_gives_the_board_back_at_once)
{
    board_double.fail({"open"});
    EXPECT_EQ(select(PortKind::gpon, 1), opening + lines("V"));
    EXPECT_FALSE(read_pin_control(PortKind::gpon, 1));
}

TEST_F(SharedPinControl, of_a_byte_that_cannot_be_read_starts_from_zero)
{
    board_double.plug_pon(1)[0x51][118] = 0xFF;
    board_double.fail({"any", "addr=0x51", "reg=118"});
    EXPECT_EQ(select(PortKind::gpon, 1),
              opening + lines("R 11", "CH 0", "I 51:118 1", "W 51:118=64") + closing);
    EXPECT_EQ(read_pin_control(PortKind::gpon, 1), 0);
}

TEST_F(SharedPinControl, is_read_in_a_session_of_its_own)
{
    board_double.plug_pon(8)[0x51][118] = 0xA5;
    EXPECT_EQ(read_pin_control(PortKind::xgpon, 8), 0xA5);
    EXPECT_EQ(board_double.record, lines("P", "RAISE transceiver_rssi_txids_show", "OPEN 0", "LOWER", "R 11",
                                         "CH 7", "I 51:118 1") +
                                       closing);
}

std::string shown(const std::string &value, const std::string &rssi, const std::string &pin,
                  const std::string &xgpon, const std::string &gpon)
{
    return "Extended Control/Status Register value : " + value + "\r\n  RSSI Select         : " + rssi +
           "\r\n  RSSI/TXDIS Select   : " + pin + "\r\n  XGSPON TXDIS Select : " + xgpon +
           "\r\n  GPON TXDIS Select   : " + gpon + "\r\n";
}

TEST(PinControlText, names_the_choice_of_each_bit)
{
    EXPECT_EQ(pin_control_text(0x30), shown("0x30", "XGPON RSSI Monitor", "TXDIS input", "", ""));
    EXPECT_EQ(pin_control_text(0xC0),
              shown("0xC0", "GPON RSSI Monitor", "RSSI input", "XGPON TXDIS", "GPON TXDIS"));
    EXPECT_EQ(pin_control_text(0x20), shown("0x20", "XGPON RSSI Monitor", "TXDIS input", "", "GPON TXDIS"));
    EXPECT_EQ(pin_control_text(0x10), shown("0x10", "XGPON RSSI Monitor", "TXDIS input", "XGPON TXDIS", ""));
}

TEST(PinControlText, shows_the_byte_in_capitals_without_padding)
{
    const auto value = [](std::uint8_t control) {
        const std::string text = pin_control_text(control);
        return text.substr(0, text.find('\r'));
    };
    EXPECT_EQ(value(0x0C), "Extended Control/Status Register value : 0xC");
    EXPECT_EQ(value(0x00), "Extended Control/Status Register value : 0x0");
    EXPECT_EQ(value(0xAF), "Extended Control/Status Register value : 0xAF");
}

} // namespace
