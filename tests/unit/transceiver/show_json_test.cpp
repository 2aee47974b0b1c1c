// SPDX-License-Identifier: GPL-2.0-or-later
// JSON display of the module listing.
#include "diagd/transceiver/show/json.hpp"

#include "tests/unit/transceiver/sample_readings.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using namespace diagd;

namespace {

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
        json({{pon, SfpReading{{"N", "R", "S"}, {1490, sample}, PathReading{1577, sample}}}}),
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
