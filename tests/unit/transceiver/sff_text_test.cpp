// SPDX-License-Identifier: GPL-2.0-or-later
// Texts of module code bytes: every table row, every code without a row, and the fallback buffers.
#include "diagd/transceiver/memory/access.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>

namespace {

using Texts = std::map<std::int32_t, std::string>;

std::string fallback(std::int32_t code)
{
    return ("N/A (" + std::to_string(code) + ")").substr(0, 13);
}

// Asks for every code byte, and for codes far outside of a byte.
template <class Function>
void expect_texts(Function text_of, const Texts &texts)
{
    const auto expect = [&](std::int32_t code) {
        const auto row = texts.find(code);
        EXPECT_EQ(std::string(text_of(code)), row == texts.end() ? fallback(code) : row->second)
            << "code " << code;
    };
    for (std::int32_t code = 0; code < 256; ++code)
        expect(code);
    for (const std::int32_t code : {-2, -100, 256, 257, 65536, INT32_MAX, INT32_MIN})
        expect(code);
}

TEST(IdentifierText, is_that_of_the_table_or_the_code)
{
    expect_texts(transceiver_identifier_str,
                 {{1, "GBIC"}, {2, "SOLDERED"}, {3, "SFP"}, {12, "QSFP"}, {13, "QSFP+"}, {17, "QSFP28"}});
    EXPECT_STREQ(transceiver_identifier_str(0), "N/A (0)");
    EXPECT_STREQ(transceiver_identifier_str(0x0E), "N/A (14)");
}

TEST(ConnectorText, is_that_of_the_table_or_the_code)
{
    expect_texts(connector_str, {{1, "SC (Subscriber Connector)"},
                                 {2, "Fibre Channel Style 1 copper connector"},
                                 {3, "Fibre Channel Style 2 copper connector"},
                                 {4, "BNC/TNC (Bayonet/Threaded Neill-Concelman)"},
                                 {5, "Fibre Channel coax headers"},
                                 {6, "Fiber Jack"},
                                 {7, "LC (Lucent Connector)"},
                                 {8, "MT-RJ (Mechanical Transfer \xE2\x80\x93 Registered Jack)"},
                                 {9, "MU (Multiple Optical)"},
                                 {10, "SG"},
                                 {11, "Optical Pigtail"},
                                 {12, "MPO12 (1X12, Multifiber Parallel Optic)"},
                                 {13, "MPO16 (2X16)"},
                                 {32, "HSSDC II (High Speed Serial Data Connector)"},
                                 {33, "Copper pigtail"},
                                 {34, "RJ45"},
                                 {35, "No separable connector"},
                                 {36, "MXC 2X16"},
                                 {37, "CS optical connector"},
                                 {38, "SN (previously Mini CS) optical connector"},
                                 {39, "MPO12 (2X12)"},
                                 {40, "MPO16 (1X16)"}});
    EXPECT_STREQ(connector_str(41), "N/A (41)");
}

TEST(EncodingText, differs_between_the_memory_maps_for_codes_four_to_six)
{
    expect_texts([](std::int32_t code) { return sff_8472_encoding_str(static_cast<std::uint32_t>(code)); },
                 {{0, "Unspecified"},
                  {1, "8B/10B"},
                  {2, "4B/5B"},
                  {3, "NRZ"},
                  {4, "Manchester"},
                  {5, "SONET Scrambled"},
                  {6, "64B/66B"},
                  {7, "256B/257B"},
                  {8, "PAM4"}});
    expect_texts([](std::int32_t code) { return sff_8636_encoding_str(static_cast<std::uint32_t>(code)); },
                 {{0, "Unspecified"},
                  {1, "8B/10B"},
                  {2, "4B/5B"},
                  {3, "NRZ"},
                  {4, "SONET Scrambled"},
                  {5, "64B/66B"},
                  {6, "Manchester"},
                  {7, "256B/257B"},
                  {8, "PAM4"}});
}

std::string sfp_compliance(int byte3, int byte6, int byte36)
{
    const std::array<std::uint8_t, 8> codes{static_cast<std::uint8_t>(byte3),
                                            0x55,
                                            0x55,
                                            static_cast<std::uint8_t>(byte6),
                                            0x55,
                                            0x55,
                                            0x55,
                                            0x55};
    return sff_8472_ethernet_compliance_str(codes.data(), static_cast<std::uint8_t>(byte36));
}

TEST(SfpCompliance, ten_gigabit_counts_the_upper_nibble_only)
{
    const Texts texts{
        {0x10, "10GBASE-SR"}, {0x20, "10GBASE-LR"}, {0x40, "10GBASE-LRM"}, {0x80, "10GBASE-ER"}};
    for (int byte3 = 0x10; byte3 < 256; ++byte3) {
        const auto row = texts.find(byte3 & 0xF0);
        EXPECT_EQ(sfp_compliance(byte3, 0x01, 0), row == texts.end() ? fallback(byte3) : row->second)
            << byte3;
    }
    EXPECT_EQ(sfp_compliance(0x1F, 0, 0), "10GBASE-SR");
    EXPECT_EQ(sfp_compliance(0x30, 0, 0), "N/A (48)");
}

TEST(SfpCompliance, one_gigabit_decides_when_no_ten_gigabit_bit_is_set)
{
    const Texts texts{{0x01, "1000BASE-SX"}, {0x02, "1000BASE-LX"}, {0x04, "1000BASE-CX"},
                      {0x08, "1000BASE-T"},  {0x10, "100BASE-LX"},  {0x20, "100BASE-FX"},
                      {0x40, "BASE-BX10"},   {0x80, "BASE-PX"}};
    for (const int byte3 : {0x00, 0x0F})
        for (int byte6 = 0; byte6 < 256; ++byte6) {
            const auto row = texts.find(byte6);
            EXPECT_EQ(sfp_compliance(byte3, byte6, 0), row == texts.end() ? fallback(byte6) : row->second)
                << byte6;
        }
}

TEST(SfpCompliance, an_extended_code_always_gives_byte_three_as_a_number)
{
    for (int byte3 = 0; byte3 < 256; ++byte3)
        for (const int byte36 : {1, 2, 3, 4, 0x1A, 0xFF})
            ASSERT_EQ(sfp_compliance(byte3, 0x01, byte36), fallback(byte3));
}

TEST(QsfpCompliance, without_an_extended_code_byte_131_decides)
{
    expect_texts(
        [](std::int32_t code) { return ethernet_compliance_str(static_cast<std::uint32_t>(code), -1); },
        {{0x01, "40G Active Cable (XLPPI)"},
         {0x02, "40GBASE-LR4"},
         {0x04, "40GBASE-SR4"},
         {0x08, "40GBASE-CR4"},
         {0x10, "10GBASE-SR"},
         {0x20, "10GBASE-LR"},
         {0x40, "10GBASE-LRM"}});
}

TEST(QsfpCompliance, an_extended_code_decides_alone)
{
    expect_texts([](std::int32_t extended) { return ethernet_compliance_str(0x04, extended); },
                 {{1, "100G AOC"},
                  {2, "100GBASE-SR4"},
                  {3, "100GBASE-LR4"},
                  {4, "100GBASE-ER4"},
                  {6, "100G CWDM4)"},
                  {7, "100G PSM4 Parallel SMR"},
                  {8, "100G ACC"},
                  {11, "100GBASE-CR4"},
                  {23, "100G CLR4"}});
}

TEST(Fallback, the_next_miss_of_the_same_function_reuses_the_buffer)
{
    const char *first = connector_str(200);
    const char *second = connector_str(14);
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first, "N/A (14)");
    // The shorter text leaves nothing of the longer one behind it.
    for (unsigned i = 8; i < 14; ++i)
        EXPECT_EQ(first[i], '\0') << i;
}

TEST(Fallback, a_hit_leaves_the_buffer_alone)
{
    const char *miss = connector_str(77);
    connector_str(7);
    EXPECT_STREQ(miss, "N/A (77)");
}

TEST(Fallback, each_function_has_its_own_buffer)
{
    const std::array<const char *, 6> misses{
        transceiver_identifier_str(101),
        connector_str(102),
        sff_8472_encoding_str(103),
        sff_8636_encoding_str(104),
        sff_8472_ethernet_compliance_str(std::array<std::uint8_t, 8>{105}.data(), 1),
        ethernet_compliance_str(106, -1)};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(std::string(misses[static_cast<unsigned>(i)]), fallback(101 + i));
}

TEST(Fallback, a_number_too_long_for_the_buffer_is_cut)
{
    EXPECT_STREQ(transceiver_identifier_str(INT32_MIN), "N/A (-2147483");
    EXPECT_STREQ(sff_8472_encoding_str(0xFFFFFFFF), "N/A (-1)");
}

} // namespace
