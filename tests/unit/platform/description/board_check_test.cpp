// SPDX-License-Identifier: GPL-2.0-or-later
// What is said of a description whose parts contradict each other.
#include "platform/description/board_check.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using board::inconsistencies;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class BoardCheck : public testing::Test {
protected:
    board::Board board = board::load(std::string(BOARDS) + "/olt8.json");

    board::Record &pon() { return board.records[0]; }
    board::Record &ge() { return board.records[1]; }

    // The only complaint.
    std::string complaint()
    {
        const std::vector<std::string> lines = inconsistencies(board);
        EXPECT_THAT(lines, SizeIs(1));
        return lines.empty() ? "" : lines[0];
    }
};

TEST(Boards, that_come_along_fit_together)
{
    for (const char *name : {"olt2.json", "olt8.json", "olt16.json"})
        EXPECT_THAT(inconsistencies(board::load(std::string(BOARDS) + "/" + name)), IsEmpty()) << name;
}

TEST_F(BoardCheck, a_port_beyond_the_cages_is_named_with_its_place)
{
    board.ge.count = 3;
    EXPECT_EQ(complaint(),
              "records[1].sfp[3].port: 4, but ge_cages has 3 cages: the port is listed and never has a "
              "module");
}

TEST_F(BoardCheck, two_cages_left_of_eight_are_noticed_in_every_list_and_in_the_port_record)
{
    board.pon.count = 2;
    const std::vector<std::string> lines = inconsistencies(board);
    EXPECT_THAT(lines, SizeIs(6 + 6 + 1));
    EXPECT_THAT(lines, Contains(StartsWith("records[0].pon1[2].port: 3, but pon_cages has 2 cages")));
    EXPECT_THAT(lines, Contains(StartsWith("records[0].pon2[7].port: 8, but pon_cages has 2 cages")));
    EXPECT_THAT(lines, Contains(AllOf(StartsWith("port_record[10], [11]: "), HasSubstr(" is 8, but "))));
}

TEST_F(BoardCheck, a_cage_that_no_record_lists_is_named)
{
    pon().pon1.pop_back();
    EXPECT_THAT(inconsistencies(board), IsEmpty()) << "the other list has it";
    pon().pon2.pop_back();
    EXPECT_THAT(complaint(),
                AllOf(StartsWith("pon_cages.count: 8, but port 8 is in no "), HasSubstr("pon1 or pon2")));
}

TEST_F(BoardCheck, a_port_out_of_use_lists_no_cage)
{
    ge().sfp[1].in_use = false;
    EXPECT_THAT(complaint(), StartsWith("ge_cages.count: 4, but port 2 is in no sfp "));
}

TEST_F(BoardCheck, port_0_and_a_slot_are_none_of_the_cages)
{
    ge().sfp[0].number = 0;
    pon().pon1[0].slot = 1;
    EXPECT_THAT(inconsistencies(board), Contains(StartsWith("records[1].sfp[0].port: 0, but ")));
    EXPECT_THAT(inconsistencies(board), Contains(StartsWith("records[0].pon1[0].slot: 1, but ")));
}

TEST_F(BoardCheck, a_record_without_the_capability_is_not_looked_at)
{
    ge().capability = 0;
    EXPECT_THAT(inconsistencies(board),
                AllOf(Contains(StartsWith("records[1].capability: bit 4 (0x10) is not set")),
                      Contains(StartsWith("ge_cages.count: 4, but port 1 "))));
}

TEST_F(BoardCheck, a_record_out_of_service_lists_nothing)
{
    pon().word108 = 5;
    EXPECT_THAT(inconsistencies(board),
                AllOf(SizeIs(8), Contains(StartsWith("pon_cages.count: 8, but port 1 "))));
}

TEST_F(BoardCheck, of_two_records_in_service_the_one_of_the_lower_index_counts)
{
    board::Record lower = pon();
    lower.index = 1;
    lower.pon1.resize(4);
    lower.pon2.resize(4);
    board.records.push_back(lower);
    EXPECT_THAT(inconsistencies(board),
                AllOf(Contains(StartsWith("records[2].index: another record in service")),
                      Contains(StartsWith("pon_cages.count: 8, but port 5 "))));
}

TEST_F(BoardCheck, a_channel_of_two_cages_is_named)
{
    board.ge.first_channel = 7;
    EXPECT_THAT(inconsistencies(board),
                ElementsAre("ge_cages.first_channel: the daemon always uses channel 8 for Ethernet port 1",
                            "ge_cages.first_channel: channel 7 of the multiplexer leads to a PON cage, too"));
}

TEST_F(BoardCheck, devices_on_buses_that_are_not_there_are_named)
{
    board.bus_count = 2;
    EXPECT_EQ(complaint(), "lm75.bus: 2, but i2c_buses is 2: the buses are 0 to 1");
}

TEST_F(BoardCheck, devices_are_where_the_daemon_looks_for_them)
{
    board.cpld.bus = 1;
    board.lm75.address = 0x49;
    board.pon.presence_register = 9;
    board.ge.presence_register = 13;
    board.gpio_device = "/dev/gpio";
    board.button.bit = 20;
    board.phys[1].interface = "eth0";
    board.pon.count = 7; // or the channels would collide, too
    board.pon.first_channel = 1;
    pon().pon1.pop_back();
    pon().pon2.pop_back();
    board.port_record[10] = board.port_record[11] = 7;
    EXPECT_THAT(inconsistencies(board),
                ElementsAre("cpld.bus: the daemon always uses bus 0 for the fans",
                            "lm75.address: the daemon always uses 0x48",
                            "gpio_device: the daemon always uses /dev/tq_gpio_cfg",
                            "button.bit: the daemon always uses 21",
                            "phys[1].interface: the daemon always uses aux",
                            "pon_cages.presence_register: the daemon always uses register 11",
                            "ge_cages.presence_register: the daemon always uses register 12",
                            "pon_cages.first_channel: the daemon always uses channel 0 for PON port 1"));
}

} // namespace
