// SPDX-License-Identifier: GPL-2.0-or-later
// Text of a module's identification, byte by byte.
#include "diagd/transceiver/show/idprom_text.hpp"

#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <vector>

using namespace diagd;

namespace {

#define BLOCK_RULE "-----------------------------------------------------\r\n"
#define DUMP_RULE "===========================================\r\n"

Idprom sample(ModuleFamily family)
{
    Idprom idprom{};
    idprom.family = family;
    idprom.general = {
        .identifier = 3,
        .connector = 1,
        .wavelength_nm = 1490,
        .compliance = {0x00, 0x01, 0x02, 0x80, 0x0F, 0xA0, 0xB1, 0xFF},
        .extended_compliance = 0,
        .distance = {0x14, 0xC8, 0x00, 0x01, 0xFF, 0x0A},
        .monitoring = 0x68,
        .encoding = 4,
        .bit_rate = 0x0D,
    };
    idprom.vendor_name = "ACME OPTICS     ";
    idprom.vendor_oui = {0x00, 0x1A, 0xFE};
    idprom.part_number = "GP-1490         ";
    idprom.revision = "1.0 ";
    idprom.serial_number = "SN0001          ";
    idprom.date_code = "240229  ";
    std::iota(idprom.dump.begin(), idprom.dump.end(), std::uint8_t{0x80});
    return idprom;
}

const std::string vendor_block = "Vendor Name                    :    ACME OPTICS     \r\n"
                                 "Vendor OUI                     :    00 1a fe\r\n"
                                 "Vendor Part Number             :    GP-1490         \r\n"
                                 "Vendor Revision                :    1.0 \r\n"
                                 "Vendor Serial Number           :    SN0001          \r\n";
const std::string manufacture_block =
    "Manufacture Information\r\n" BLOCK_RULE "Manufacture Serial Number      :    SN0001          \r\n"
    "Manufacture Date               :    20240229  \r\n"
    "Vendor Name                    :    ACME OPTICS     \r\n";
const std::string dump = "000 :  80 81 82 83 84 85 86 87 88 89 \r\n"
                         "001 :  8a 8b 8c 8d 8e 8f 90 91 92 93 \r\n"
                         "002 :  94 95 96 97 98 99 9a 9b 9c 9d \r\n"
                         "003 :  9e 9f a0 a1 a2 a3 a4 a5 a6 a7 \r\n"
                         "004 :  a8 a9 aa ab ac ad ae af b0 b1 \r\n"
                         "005 :  b2 b3 b4 b5 b6 b7 b8 b9 ba bb \r\n"
                         "006 :  bc bd be bf c0 c1 c2 c3 c4 c5 \r\n"
                         "007 :  c6 c7 c8 c9 ca cb cc cd ce cf \r\n"
                         "008 :  d0 d1 d2 d3 d4 d5 d6 d7 d8 d9 \r\n"
                         "009 :  da db dc dd de df e0 e1 e2 e3 \r\n"
                         "00a :  e4 e5 e6 e7 e8 e9 ea eb ec ed \r\n"
                         "00b :  ee ef f0 f1 f2 f3 f4 f5 f6 f7 \r\n";

} // namespace

TEST(IdpromText, of_an_sfp_has_four_blocks_and_a_heading_without_content)
{
    EXPECT_EQ(idprom_text(sample(ModuleFamily::sff8472), IdpromScope::all),
              "General Information\r\n" BLOCK_RULE "Identifier                     :    SFP\r\n"
              "Connector                      :    SC (Subscriber Connector)\r\n"
              "Wavelength(nm)                 :    1490\r\n"
              "Transceiver Type               :    BASE-PX\r\n"
              "Transfer Distance(m)           :    0x14 0xc8 0x00 0x01 0xff 0x0a\r\n"
              "Digital Diagnostic Monitoring  :    0x68\r\n"
              "Transceiver                    :    0x00 0x01 0x02 0x80 0x0f 0xa0 0xb1 0xff\r\n"
              "Encoding                       :    Manchester\r\n"
              "BR_Norminal                    :    0x0d\r\n" +
                  vendor_block + manufacture_block + "SFF-8472 MSA EEPROM Data\r\n" DUMP_RULE + dump +
                  "\r\n"
                  "SFF-8472 Digital Diagnostic Monitoring Data\r\n" DUMP_RULE "\r\n");
}

TEST(IdpromText, of_a_qsfp_has_five_distances_and_ends_with_the_dump)
{
    Idprom idprom = sample(ModuleFamily::sff8636);
    idprom.general.identifier = 0x11;
    idprom.general.distance.pop_back();
    idprom.general.compliance[0] = 0x80;
    idprom.general.extended_compliance = 6;
    EXPECT_EQ(idprom_text(idprom, IdpromScope::all),
              "General Information\r\n" BLOCK_RULE "Identifier                     :    QSFP28\r\n"
              "Connector                      :    SC (Subscriber Connector)\r\n"
              "Wavelength(nm)                 :    1490\r\n"
              "Transceiver Type               :    100G CWDM4)\r\n"
              "Transfer Distance(m)           :    0x14 0xc8 0x00 0x01 0xff\r\n"
              "Digital Diagnostic Monitoring  :    0x68\r\n"
              "Transceiver                    :    0x80 0x01 0x02 0x80 0x0f 0xa0 0xb1 0xff\r\n"
              "Encoding                       :    SONET Scrambled\r\n"
              "BR_Norminal                    :    0x0d\r\n" +
                  vendor_block + manufacture_block + "SFF-8636 MSA EEPROM Data\r\n" DUMP_RULE + dump);
}

TEST(IdpromText, of_one_block_is_that_block_alone)
{
    for (const ModuleFamily family : {ModuleFamily::sff8472, ModuleFamily::sff8636}) {
        EXPECT_EQ(idprom_text(sample(family), IdpromScope::vendor), vendor_block);
        EXPECT_EQ(idprom_text(sample(family), IdpromScope::manufacture), manufacture_block);
    }
}

TEST(IdpromText, names_the_type_by_the_code_that_counts)
{
    Idprom qsfp = sample(ModuleFamily::sff8636);
    qsfp.general.compliance[0] = 0x81;
    qsfp.general.extended_compliance = -1;
    EXPECT_NE(idprom_text(qsfp, IdpromScope::all).find(":    N/A (129)\r\n"), std::string::npos);
    Idprom sfp = sample(ModuleFamily::sff8472);
    sfp.general.compliance[0] = 0x10;
    sfp.general.extended_compliance = 2;
    EXPECT_NE(idprom_text(sfp, IdpromScope::all).find(":    N/A (16)\r\n"), std::string::npos);
}

TEST(DumpText, fills_up_a_short_line)
{
    EXPECT_EQ(dump_text({}), "");
    std::vector<std::uint8_t> bytes(11, 0xAB);
    EXPECT_EQ(dump_text(bytes), "000 :  ab ab ab ab ab ab ab ab ab ab \r\n"
                                "001 :  ab                            \r\n");
}
