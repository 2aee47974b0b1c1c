// SPDX-License-Identifier: GPL-2.0-or-later
// The modules of all interfaces: which interfaces are listed, and what is read from each in which order.
#include "diagd/transceiver/memory/module_listing.hpp"

#include "tests/unit/transceiver/module_board_double.hpp"

#include "tq_board.h"
#include "util_cpld.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace diagd;

namespace {

using Lines = std::vector<std::string>;

class ModuleListing : public testing::Test {
protected:
    void SetUp() override
    {
        board_double.reset();
        install_boards({make_board_record(BOARD_CAPABILITY_PON | BOARD_CAPABILITY_SFP, {1, 2}, {}, {1})});
    }
    void TearDown() override { board_double.expect_given_back(); }

    static void install_boards(std::vector<std::vector<std::uint8_t>> records)
    {
        board_double.board_records = std::move(records);
    }
    static std::vector<InterfaceReading> read(ReadScope scope = ReadScope::values)
    {
        board_double.record.clear();
        return read_module_listing("reason", scope).value();
    }
    static Lines names(const char *pon_word = "GPON")
    {
        Lines result;
        for (const InterfaceReading &reading : read())
            result.push_back(interface_name(reading.interface, pon_word));
        return result;
    }

    const Lines opening{"P", "RAISE reason", "OPEN 0", "LOWER"};
    const Lines closing{"CLOSE", "V"};
};

TEST_F(ModuleListing, lists_pon_before_gigabit_ports)
{
    EXPECT_EQ(names(), lines("GPON 0/1", "GPON 0/2", "GE 0/1"));
    EXPECT_EQ(names("PON"), lines("PON 0/1", "PON 0/2", "GE 0/1"));
}

TEST_F(ModuleListing, says_nothing_while_the_cplds_debugging_is_on)
{
    make_path(board_double.plug_pon(1), 0x50, 0x51);
    cpld_debug = 1;
    testing::internal::CaptureStdout();
    read(ReadScope::values_and_identity);
    cpld_debug = 0;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(ModuleListing, a_port_of_either_pon_table_is_listed_once)
{
    install_boards({make_board_record(BOARD_CAPABILITY_PON, {3, 1}, {1, 2, 31}, {5})});
    EXPECT_EQ(names(), lines("GPON 0/1", "GPON 0/2", "GPON 0/3", "GPON 0/31"));
}

TEST_F(ModuleListing, only_the_first_board_of_each_kind_counts)
{
    install_boards({make_board_record(0, {9}, {}, {9}), make_board_record(BOARD_CAPABILITY_SFP, {8}, {}, {2}),
                    make_board_record(BOARD_CAPABILITY_PON, {1}, {}, {7}),
                    make_board_record(BOARD_CAPABILITY_PON | BOARD_CAPABILITY_SFP, {2}, {}, {3})});
    EXPECT_EQ(names(), lines("GPON 0/1", "GE 0/2"));
}

TEST_F(ModuleListing, a_board_out_of_service_or_without_ports_lists_nothing)
{
    auto record = make_board_record(BOARD_CAPABILITY_PON | BOARD_CAPABILITY_SFP, {1}, {}, {1});
    record[108] = 5;
    install_boards({record});
    EXPECT_EQ(names(), lines());
    install_boards({});
    EXPECT_EQ(names(), lines());
}

TEST_F(ModuleListing, a_board_that_takes_no_register_commands_is_listed_all_the_same)
{
    auto record = make_board_record(BOARD_CAPABILITY_PON, {1}, {}, {});
    record[8] = 1;
    install_boards({record});
    EXPECT_EQ(names(), lines("GPON 0/1"));
}

TEST_F(ModuleListing, a_gigabit_port_needs_both_marks)
{
    auto record = make_board_record(BOARD_CAPABILITY_SFP, {}, {}, {1, 2, 3});
    record[2032 + 28 + 20] = 0; // port 1: not present
    record[2032 + 56] = 0;      // port 2: not in use
    install_boards({record});
    EXPECT_EQ(names(), lines("GE 0/3"));
}

TEST_F(ModuleListing, the_slot_is_the_word_before_the_in_use_word)
{
    auto record = make_board_record(BOARD_CAPABILITY_PON, {1}, {1}, {});
    record[236 + 28] = 4;
    record[1132 + 28] = 5; // the second table's slot is not asked for
    install_boards({record});
    EXPECT_EQ(names(), lines("GPON 4/1"));
}

TEST_F(ModuleListing, port_0_is_listed_but_never_has_a_module)
{
    install_boards({make_board_record(BOARD_CAPABILITY_PON, {0}, {}, {})});
    board_double.pretend_pons();
    const auto listing = read();
    ASSERT_EQ(listing.size(), 1U);
    EXPECT_EQ(interface_name(listing[0].interface, "GPON"), "GPON 0/0");
    EXPECT_TRUE(std::holds_alternative<std::monostate>(listing[0].module));
    EXPECT_EQ(board_double.record, opening + lines("R 11") + closing);
}

TEST_F(ModuleListing, one_session_holds_all_interfaces)
{
    make_path(board_double.plug_pon(2), 0x50, 0x51);
    make_path(board_double.plug_gigabit(1), 0x50, 0x51, {.wavelength_nm = 1550, .monitoring = 0});
    const auto listing = read();
    const Lines path{"I 50:60 2", "I 50:92 1"};
    EXPECT_EQ(board_double.record, opening + lines("R 11", "R 11", "CH 1", "I 50:0 1") + path +
                                       byte_reads(0x51, 96, 105) + lines("I 58:60 2", "CHE", "R 12", "CH 8") +
                                       lines("I 50:0 1") + path + lines("I 58:60 2", "CHE") + closing);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(listing[0].module));
    EXPECT_EQ(std::get<SfpReading>(listing[1].module).first.values->temperature_c, 25.0F);
    EXPECT_FALSE(std::get<SfpReading>(listing[2].module).first.values);
}

TEST_F(ModuleListing, the_second_path_of_a_combo_module_is_read_with_its_own_units)
{
    Module module = board_double.plug_pon(1);
    make_path(module, 0x50, 0x51, {.wavelength_nm = 1490});
    make_path(module, 0x58, 0x59, {.wavelength_nm = 1490, .monitoring = 0x10});
    set_word(module[0x59], 76, 0x0100); // bias slope 1, all other constants 0
    const auto listing = read();
    const auto &sfp = std::get<SfpReading>(listing[0].module);
    EXPECT_FLOAT_EQ(sfp.first.values->bias_ma, 10.0F);
    EXPECT_EQ(sfp.second->wavelength_nm, 1490);
    EXPECT_FLOAT_EQ(sfp.second->values->bias_ma, 20.0F);
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "I 50:0 1", "I 50:60 2", "I 50:92 1") +
                                       byte_reads(0x51, 96, 105) + lines("I 58:60 2", "I 58:92 1") +
                                       byte_reads(0x59, 76, 151) + lines("CHE", "R 11", "R 12") + closing);
}

void make_qsfp(Memory memory)
{
    memory[0] = 0x11;
    set_word(memory, 22, 0xE700); // -25 degrees
    set_word(memory, 26, 33000);
    for (int lane = 0; lane < 4; ++lane) {
        set_word(memory, 42 + 2 * lane, 5000 * (lane + 1));
        set_word(memory, 50 + 2 * lane, lane == 3 ? 0 : 10000);
        set_word(memory, 34 + 2 * lane, 1000);
    }
    set_text(memory, 148, "ACME OPTICS     ");
    set_text(memory, 184, "1A");
    set_text(memory, 196, "SN0001          ");
    memory[186] = 0x66;
    memory[187] = 0x58;
}

TEST_F(ModuleListing, a_qsfp_is_read_from_lower_memory_without_a_page_select)
{
    make_qsfp(board_double.plug_pon(1)[0x50]);
    const auto listing = read();
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "I 50:0 1") + byte_reads(0x50, 22, 23) +
                                       byte_reads(0x50, 26, 27) + byte_reads(0x50, 42, 49) +
                                       byte_reads(0x50, 50, 57) + byte_reads(0x50, 34, 41) +
                                       lines("CHE", "R 11", "R 12") + closing);
    const auto &qsfp = std::get<QsfpReading>(listing[0].module);
    EXPECT_EQ(qsfp.temperature_c, 25.0F);
    EXPECT_FLOAT_EQ(qsfp.voltage_v, 3.3F);
    EXPECT_FLOAT_EQ(qsfp.bias_ma[3], 40.0F);
    EXPECT_EQ(qsfp.tx_power_dbm[0], 0.0F);
    EXPECT_EQ(qsfp.tx_power_dbm[3], -std::numeric_limits<float>::infinity());
    EXPECT_FLOAT_EQ(qsfp.rx_power_dbm[2], -10.0F);
}

TEST_F(ModuleListing, identity_of_a_qsfp_is_read_between_two_page_selects)
{
    make_qsfp(board_double.plug_pon(1)[0x50]);
    const auto listing = read(ReadScope::values_and_identity);
    EXPECT_EQ(board_double.record,
              opening + lines("R 11", "CH 0", "I 50:0 1", "W 50:127=0") + byte_reads(0x50, 196, 211) +
                  byte_reads(0x50, 184, 185) + byte_reads(0x50, 148, 163) + lines("W 50:127=0") +
                  byte_reads(0x50, 22, 23) + byte_reads(0x50, 26, 27) + byte_reads(0x50, 42, 49) +
                  byte_reads(0x50, 50, 57) + byte_reads(0x50, 34, 41) + lines("I 50:186 2") +
                  lines("CHE", "R 11", "R 12") + closing);
    const auto &qsfp = std::get<QsfpReading>(listing[0].module);
    EXPECT_EQ(qsfp.identity.vendor_name, "ACME OPTICS     ");
    EXPECT_EQ(qsfp.identity.vendor_revision, "1A");
    EXPECT_EQ(qsfp.identity.vendor_serial_number, "SN0001          ");
    EXPECT_EQ(qsfp.wavelength_word, 0x5866);
}

TEST_F(ModuleListing, identity_of_an_sfp_comes_before_its_values)
{
    Module module = board_double.plug_pon(1);
    make_path(module, 0x50, 0x51);
    set_text(module[0x50], 20, "ACME OPTICS     ");
    set_text(module[0x50], 56, "1.0 ");
    set_text(module[0x50], 68, "SN0001          ");
    const auto listing = read(ReadScope::values_and_identity);
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "I 50:0 1") + byte_reads(0x50, 20, 35) +
                                       byte_reads(0x50, 56, 59) + byte_reads(0x50, 68, 83) +
                                       lines("I 50:60 2", "I 50:92 1") + byte_reads(0x51, 96, 105) +
                                       lines("I 58:60 2", "CHE", "R 11", "R 12") + closing);
    const auto &identity = std::get<SfpReading>(listing[0].module).identity;
    EXPECT_EQ(identity.vendor_name, "ACME OPTICS     ");
    EXPECT_EQ(identity.vendor_revision, "1.0 ");
    EXPECT_EQ(identity.vendor_serial_number, "SN0001          ");
}

TEST_F(ModuleListing, the_family_alone_costs_one_byte_read)
{
    make_path(board_double.plug_pon(1), 0x50, 0x51);
    make_qsfp(board_double.plug_gigabit(1)[0x50]);
    const auto listing = read(ReadScope::family);
    EXPECT_EQ(board_double.record, opening +
                                       lines("R 11", "CH 0", "I 50:0 1", "CHE", "R 11", "R 12", "CH 8") +
                                       lines("I 50:0 1", "CHE") + closing);
    EXPECT_TRUE(std::holds_alternative<SfpReading>(listing[0].module));
    EXPECT_TRUE(std::holds_alternative<QsfpReading>(listing[2].module));
}

TEST_F(ModuleListing, a_channel_is_ended_after_an_unsupported_module_but_not_after_a_failed_select)
{
    board_double.plug_pon(1)[0x50][0] = 0x0E;
    EXPECT_TRUE(std::holds_alternative<std::monostate>(read()[0].module));
    EXPECT_EQ(board_double.record,
              opening + lines("R 11", "CH 0", "I 50:0 1", "CHE", "R 11", "R 12") + closing);
    board_double.fail({"select"});
    EXPECT_TRUE(std::holds_alternative<std::monostate>(read()[0].module));
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "R 11", "R 12") + closing);
}

TEST_F(ModuleListing, a_cpld_that_does_not_open_gives_nothing)
{
    board_double.fail({"open"});
    board_double.record.clear();
    EXPECT_FALSE(read_module_listing("reason", ReadScope::values));
    EXPECT_EQ(board_double.record, opening + lines("V"));
}

TEST_F(ModuleListing, a_module_that_died_behind_its_presence_bit_reads_as_zeros)
{
    board_double.plug_pon(1);
    const auto listing = read();
    const auto &sfp = std::get<SfpReading>(listing[0].module);
    EXPECT_EQ(sfp.first.wavelength_nm, 0);
    EXPECT_FALSE(sfp.first.values);
    EXPECT_FALSE(sfp.second);
}

} // namespace
