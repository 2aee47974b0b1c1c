// SPDX-License-Identifier: GPL-2.0-or-later
// Displays of all modules: which interfaces are listed, what is read from them, text and JSON.
#include "module_board_double.hpp"
#include "module_listing.hpp"
#include "show_json.hpp"
#include "show_text.hpp"

#include "tq_board.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <vector>

using namespace diagd;

namespace {

using Lines = std::vector<std::string>;

constexpr Interface pon{PortKind::gpon, 0, 1};
constexpr Interface gigabit{PortKind::gigabit_ethernet, 0, 2};
constexpr OpticalValues sample{25.5F, 3.3F, 10.0F, 2.5F, -3.25F};

// ---- reading ----

class ModuleListing : public testing::Test {
protected:
    void SetUp() override
    {
        board_double.reset();
        diagd_records({make_board_record(BOARD_CAPABILITY_PON | BOARD_CAPABILITY_SFP, {1, 2}, {}, {1})});
    }
    void TearDown() override { board_double.expect_given_back(); }

    static void diagd_records(std::vector<std::vector<std::uint8_t>> records)
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

TEST_F(ModuleListing, a_port_of_either_pon_table_is_listed_once)
{
    diagd_records({make_board_record(BOARD_CAPABILITY_PON, {3, 1}, {1, 2, 31}, {5})});
    EXPECT_EQ(names(), lines("GPON 0/1", "GPON 0/2", "GPON 0/3", "GPON 0/31"));
}

TEST_F(ModuleListing, only_the_first_board_of_each_kind_counts)
{
    diagd_records({make_board_record(0, {9}, {}, {9}), make_board_record(BOARD_CAPABILITY_SFP, {8}, {}, {2}),
                   make_board_record(BOARD_CAPABILITY_PON, {1}, {}, {7}),
                   make_board_record(BOARD_CAPABILITY_PON | BOARD_CAPABILITY_SFP, {2}, {}, {3})});
    EXPECT_EQ(names(), lines("GPON 0/1", "GE 0/2"));
}

TEST_F(ModuleListing, a_board_out_of_service_or_without_ports_lists_nothing)
{
    auto record = make_board_record(BOARD_CAPABILITY_PON | BOARD_CAPABILITY_SFP, {1}, {}, {1});
    record[108] = 5;
    diagd_records({record});
    EXPECT_EQ(names(), lines());
    diagd_records({});
    EXPECT_EQ(names(), lines());
}

TEST_F(ModuleListing, a_board_that_takes_no_register_commands_is_listed_all_the_same)
{
    auto record = make_board_record(BOARD_CAPABILITY_PON, {1}, {}, {});
    record[8] = 1;
    diagd_records({record});
    EXPECT_EQ(names(), lines("GPON 0/1"));
}

TEST_F(ModuleListing, a_gigabit_port_needs_both_marks)
{
    auto record = make_board_record(BOARD_CAPABILITY_SFP, {}, {}, {1, 2, 3});
    record[2032 + 28 + 20] = 0; // port 1: not present
    record[2032 + 56] = 0;      // port 2: not in use
    diagd_records({record});
    EXPECT_EQ(names(), lines("GE 0/3"));
}

TEST_F(ModuleListing, the_slot_is_the_word_before_the_in_use_word)
{
    auto record = make_board_record(BOARD_CAPABILITY_PON, {1}, {1}, {});
    record[236 + 28] = 4;
    record[1132 + 28] = 5; // the second table's slot is not asked for
    diagd_records({record});
    EXPECT_EQ(names(), lines("GPON 4/1"));
}

TEST_F(ModuleListing, port_0_is_listed_but_never_has_a_module)
{
    diagd_records({make_board_record(BOARD_CAPABILITY_PON, {0}, {}, {})});
    board_double.cpld[0x0B] = 0xFF;
    const auto listing = read();
    ASSERT_EQ(listing.size(), 1U);
    EXPECT_EQ(interface_name(listing[0].interface, "GPON"), "GPON 0/0");
    EXPECT_TRUE(std::holds_alternative<std::monostate>(listing[0].module));
    EXPECT_EQ(board_double.record, opening + lines("R 11") + closing);
}

TEST_F(ModuleListing, one_bracket_holds_all_interfaces)
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
    Module &module = board_double.plug_pon(1);
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

void make_qsfp(Memory &memory)
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
    Module &module = board_double.plug_pon(1);
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
    board_double.selects = false;
    EXPECT_TRUE(std::holds_alternative<std::monostate>(read()[0].module));
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "R 11", "R 12") + closing);
}

TEST_F(ModuleListing, a_cpld_that_does_not_open_gives_nothing)
{
    board_double.opens = false;
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

// ---- text ----

#define HEADER_A                                                                                             \
    "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)    "                             \
    "Optical Tx Power(dBm)           Optical Rx Power(dBm)\r\n"                                              \
    "----------    ---------------------    ---------------    ------------    "                             \
    "----------------------------    ------------------------------- \r\n"
#define HEADER_B                                                                                             \
    "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)                    "             \
    "Optical Tx Power(dBm)           Optical Rx Power(dBm)\r\n"
#define LANES                                                                                                \
    "                                                          TX1    TX2    TX3    TX4        "             \
    "TX1    TX2    TX3    TX4        "
#define DASHES_B                                                                                             \
    "----------    ---------------------    ---------------    ----------------------------    "             \
    "----------------------------    ------------------------------- \r\n"

TEST(LegendText, says_that_monitoring_is_disabled)
{
    EXPECT_EQ(legend_text(), "\r\n"
                             "Transceiver monitoring is disabled for all interfaces.\r\n"
                             "If device is externally calibrated, only calibrated values are printed.\r\n"
                             "++ : high alarm, +  : high warning, -  : low warning, -- : low alarm.\r\n"
                             "NA or N/A: not applicable, Tx: transmit, Rx: receive.\r\n"
                             "mA: milliamperes, dBm: decibels (milliwatts).\r\n"
                             "\r\n");
}

std::string diagnosis(const Interface &interface, decltype(InterfaceReading::module) module)
{
    const std::vector<InterfaceReading> listing{{interface, std::move(module)}};
    return diagnosis_text(listing);
}

TEST(DiagnosisText, without_a_module_every_value_is_not_applicable)
{
    EXPECT_EQ(diagnosis(pon, {}),
              HEADER_A "GPON 0/1      N/A                      N/A                N/A             "
                       "N/A                             N/A                        \r\n\r\n\r\n");
}

TEST(DiagnosisText, a_single_path_is_one_row_and_one_line_end)
{
    EXPECT_EQ(diagnosis(pon, SfpReading{{}, {1490, sample}, {}}),
              HEADER_A "GPON 0/1      25.500                   3.300              10.000          "
                       "2.500                           -3.250                     \r\n");
}

TEST(DiagnosisText, a_path_without_calibration_has_no_values)
{
    EXPECT_EQ(diagnosis(gigabit, SfpReading{{}, {1310, {}}, {}}), HEADER_A "GE 0/2        \r\n");
}

TEST(DiagnosisText, a_combo_module_is_two_rows_under_one_header)
{
    const OpticalValues second{30.0F, 3.25F, 20.125F, -std::numeric_limits<float>::infinity(), -40.0F};
    EXPECT_EQ(diagnosis(pon, SfpReading{{}, {1490, sample}, SfpPathReading{1577, second}}),
              HEADER_A "GPON 0/1      25.500                   3.300              10.000          "
                       "2.500                           -3.250                     \r\n"
                       "GPON 0/1      30.000                   3.250              20.125          "
                       "-inf                            -40.000                    \r\n\r\n\r\n");
    EXPECT_EQ(diagnosis(pon, SfpReading{{}, {1490, {}}, SfpPathReading{1577, {}}}),
              HEADER_A "GPON 0/1      \r\nGPON 0/1      \r\n\r\n\r\n");
}

const QsfpReading qsfp_sample{{},
                              25.0F,
                              3.3F,
                              {10.0F, 20.0F, 30.0F, 131.07F},
                              {0.0F, 1.0F, 2.0F, -std::numeric_limits<float>::infinity()},
                              {-10.0F, -1.5F, -2.5F, -3.5F},
                              0};

TEST(DiagnosisText, a_qsfp_shows_four_lanes)
{
    EXPECT_EQ(diagnosis(pon, qsfp_sample),
              HEADER_B LANES "RX1    RX2    RX3    RX4\r\n" DASHES_B
                             "GPON 0/1      25.000                   3.300              "
                             "10.000 20.000 30.000 131.070    0.000  1.000  2.000  -inf       "
                             "-10.000 -1.500 -2.500 -3.500\r\n\r\n\r\n\r\n");
}

TEST(DiagnosisText, a_qsfp_in_a_gigabit_port_has_an_unnumbered_first_receive_lane)
{
    const std::string text = diagnosis(gigabit, qsfp_sample);
    EXPECT_TRUE(
        text.starts_with(HEADER_B LANES "RX    RX2    RX3    RX4\r\n" DASHES_B "GE 0/2        25.000 "));
}

TEST(DiagnosisText, long_names_keep_their_blank_less_column)
{
    const std::string text = diagnosis({PortKind::gpon, INT32_MIN, 31}, SfpReading{{}, {0, {}}, {}});
    EXPECT_EQ(text, HEADER_A "GPON -2147483648/31\r\n");
}

#define COLUMNS "              High Alarm   High Warn    Low Warn      Low Alarm\r\n"
#define DASHES "----------    -------------    ---------    ---------    ----------    ----------\r\n"

TEST(ThresholdText, five_tables_of_headings_per_module)
{
    const std::vector<InterfaceReading> listing{{pon, {}}, {pon, SfpReading{}}};
    const std::string end = DASHES "GPON 0/1      \r\n\r\n\r\n";
    const std::string dbm =
        "Interface     (dBm)            (dBm)        (dBm)        (dBm)         (dBm)\r\n";
    EXPECT_EQ(
        threshold_text(listing),
        COLUMNS "              Temperature      Threshold    Threshold    Threshold     Threshold\r\n"
                "Interface     (Celsius)        (Celsius)    (Celsius)    (Celsius)     (Celsius)\r\n" +
            end +
            COLUMNS "              Voltage          Threshold    Threshold    Threshold     Threshold\r\n"
                    "Interface     (Volts)          (Volts)      (Volts)      (Volts)       (Volts)\r\n" +
            end +
            COLUMNS "              Current          Threshold    Threshold    Threshold     Threshold\r\n"
                    "Interface     (mA)             (mA)         (mA)         (mA)          (mA)\r\n" +
            end +
            COLUMNS "              Transmit Power   Threshold    Threshold    Threshold     Threshold\r\n" +
            dbm + end +
            COLUMNS "              Receive Power    Threshold    Threshold    Threshold     Threshold\r\n" +
            dbm + end);
}

TEST(ThresholdText, the_voltage_unit_of_gigabit_ports_is_not_closed)
{
    const std::vector<InterfaceReading> listing{{gigabit, SfpReading{}}};
    const std::string text = threshold_text(listing);
    EXPECT_NE(
        text.find("\r\nInterface     (Volts             (Volts)      (Volts)      (Volts)      (Volts)\r\n"),
        std::string::npos);
    EXPECT_NE(text.find(DASHES "GE 0/2        \r\n\r\n\r\n"), std::string::npos);
}

// ---- JSON ----

std::string json(std::vector<InterfaceReading> listing)
{
    return json_object_to_json_string_ext(module_listing_json(listing).get(), JSON_C_TO_STRING_PLAIN);
}

const std::string empty_lanes =
    R"("biasCurrentTx1":"","biasCurrentTx2":"","biasCurrentTx3":"","biasCurrentTx4":"",)"
    R"("transmitPowerTx1":"","transmitPowerTx2":"","transmitPowerTx3":"","transmitPowerTx4":"",)"
    R"("receivePowerRx1":"","receivePowerRx2":"","receivePowerRx3":"","receivePowerRx4":"",)";
const std::string empty_plain = R"("temperature":"","voltage":"",)" + empty_lanes + R"("wavelength":"",)";
const std::string empty_vendor = R"("vendorName":"","vendorRevision":"","vendorSerialNumber":"",)";
const std::string empty_xg_values =
    R"("xgTemperature":"","xgVoltage":"",)"
    R"("xgBiasCurrentTx1":"","xgBiasCurrentTx2":"","xgBiasCurrentTx3":"","xgBiasCurrentTx4":"",)"
    R"("xgTransmitPowerTx1":"","xgTransmitPowerTx2":"","xgTransmitPowerTx3":"","xgTransmitPowerTx4":"",)"
    R"("xgReceivePowerRx1":"","xgReceivePowerRx2":"","xgReceivePowerRx3":"","xgReceivePowerRx4":"",)";
const std::string empty_xg = empty_xg_values + R"("xgWavelength":"")";

std::string pon_member(const std::string &values)
{
    return R"({"PON 0\/1":[{"interfaceName":"PON 0\/1","interfaceType":"pon",)" + values + "}]}";
}
const std::string plain_values =
    R"("temperature":"25.500","voltage":"3.300",)"
    R"("biasCurrentTx1":"10.000","biasCurrentTx2":"","biasCurrentTx3":"","biasCurrentTx4":"",)"
    R"("transmitPowerTx1":"2.500","transmitPowerTx2":"","transmitPowerTx3":"","transmitPowerTx4":"",)"
    R"("receivePowerRx1":"-3.250","receivePowerRx2":"","receivePowerRx3":"","receivePowerRx4":"",)";
const std::string xg_values =
    R"("xgTemperature":"25.500","xgVoltage":"3.300",)"
    R"("xgBiasCurrentTx1":"10.000","xgBiasCurrentTx2":"","xgBiasCurrentTx3":"","xgBiasCurrentTx4":"",)"
    R"("xgTransmitPowerTx1":"2.500","xgTransmitPowerTx2":"","xgTransmitPowerTx3":"","xgTransmitPowerTx4":"",)"
    R"("xgReceivePowerRx1":"-3.250","xgReceivePowerRx2":"","xgReceivePowerRx3":"","xgReceivePowerRx4":"",)";

TEST(ListingJson, without_interfaces_is_an_empty_object)
{
    EXPECT_EQ(json({}), "{}");
}

TEST(ListingJson, without_a_module_every_key_is_empty)
{
    EXPECT_EQ(json({{pon, {}}}), pon_member(empty_plain + empty_vendor + empty_xg));
}

TEST(ListingJson, interfaces_stand_in_order_and_gigabit_ports_are_uplinks)
{
    const std::string text = json({{pon, {}}, {gigabit, {}}});
    EXPECT_LT(text.find(R"("PON 0\/1":[{)"),
              text.find(R"("GE 0\/2":[{"interfaceName":"GE 0\/2","interfaceType":"uplink",)"));
}

TEST(ListingJson, gpon_and_gigabit_paths_fill_the_plain_keys)
{
    for (const int nm : {850, 1310, 1311, 1490, 1535})
        EXPECT_EQ(json({{pon, SfpReading{{}, {static_cast<std::uint16_t>(nm), sample}, {}}}}),
                  pon_member(plain_values + R"("wavelength":)" + std::to_string(nm) + "," + empty_vendor +
                             empty_xg + R"(,"biasCurrent":"10.000")"));
}

TEST(ListingJson, xgpon_paths_fill_the_xg_keys)
{
    for (const int nm : {1577, 1791})
        EXPECT_EQ(json({{pon, SfpReading{{}, {static_cast<std::uint16_t>(nm), sample}, {}}}}),
                  pon_member(empty_plain + empty_vendor + xg_values + R"("xgWavelength":)" +
                             std::to_string(nm) + R"(,"xgBiasCurrent":"10.000")"));
}

TEST(ListingJson, a_path_of_unknown_wavelength_fills_the_xg_values_but_no_wavelength)
{
    EXPECT_EQ(
        json({{pon, SfpReading{{}, {1550, sample}, {}}}}),
        pon_member(empty_plain + empty_vendor + xg_values + R"("xgWavelength":"","xgBiasCurrent":"10.000")"));
}

TEST(ListingJson, a_path_without_calibration_tells_only_its_wavelength)
{
    EXPECT_EQ(json({{pon, SfpReading{{}, {1490, {}}, {}}}}),
              pon_member(R"("temperature":"","voltage":"",)" + empty_lanes + R"("wavelength":1490,)" +
                         empty_vendor + empty_xg));
}

TEST(ListingJson, a_combo_module_fills_both_sets)
{
    EXPECT_EQ(
        json({{pon, SfpReading{{"N", "R", "S"}, {1490, sample}, SfpPathReading{1577, sample}}}}),
        pon_member(plain_values +
                   R"("wavelength":1490,"vendorName":"N","vendorRevision":"R","vendorSerialNumber":"S",)" +
                   xg_values + R"("xgWavelength":1577,"biasCurrent":"10.000","xgBiasCurrent":"10.000")"));
}

TEST(ListingJson, a_qsfp_fills_all_lanes_and_no_further_bias_key)
{
    QsfpReading qsfp = qsfp_sample;
    qsfp.identity = {"N", "R", "S"};
    qsfp.wavelength_word = 0x5866;
    EXPECT_EQ(
        json({{pon, qsfp}}),
        pon_member(
            R"("temperature":"25.000","voltage":"3.300",)"
            R"("biasCurrentTx1":"10.000","biasCurrentTx2":"20.000","biasCurrentTx3":"30.000","biasCurrentTx4":"131.070",)"
            R"("transmitPowerTx1":"0.000","transmitPowerTx2":"1.000","transmitPowerTx3":"2.000","transmitPowerTx4":"-inf",)"
            R"("receivePowerRx1":"-10.000","receivePowerRx2":"-1.500","receivePowerRx3":"-2.500","receivePowerRx4":"-3.500",)"
            R"("wavelength":1131,"vendorName":"N","vendorRevision":"R","vendorSerialNumber":"S",)" +
            empty_xg));
    qsfp.wavelength_word = 0;
    EXPECT_NE(json({{pon, qsfp}}).find(R"("wavelength":"",)"), std::string::npos);
}

TEST(ListingJson, control_characters_of_a_vendor_text_are_escaped)
{
    EXPECT_NE(
        json({{pon, SfpReading{{"A\x01\"\n", "", ""}, {0, {}}, {}}}}).find(R"("vendorName":"A\u0001\"\n")"),
        std::string::npos);
}

} // namespace
