// SPDX-License-Identifier: GPL-2.0-or-later
// Text displays of the module listing, byte by byte.
#include "diagd/transceiver/show/text.hpp"

#include "tests/unit/transceiver/sample_readings.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace diagd;

namespace {

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
    EXPECT_EQ(diagnosis(pon, SfpReading{{}, {1490, sample}, PathReading{1577, second}}),
              HEADER_A "GPON 0/1      25.500                   3.300              10.000          "
                       "2.500                           -3.250                     \r\n"
                       "GPON 0/1      30.000                   3.250              20.125          "
                       "-inf                            -40.000                    \r\n\r\n\r\n");
    EXPECT_EQ(diagnosis(pon, SfpReading{{}, {1490, {}}, PathReading{1577, {}}}),
              HEADER_A "GPON 0/1      \r\nGPON 0/1      \r\n\r\n\r\n");
}

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

} // namespace
