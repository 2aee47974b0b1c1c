// SPDX-License-Identifier: GPL-2.0-or-later
// A module's identification: which bytes are read for which display, and what becomes of those that fail.
#include "diagd/transceiver/memory/idprom.hpp"

#include "tests/unit/transceiver/module_board_double.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace diagd;

namespace {

using Lines = std::vector<std::string>;
constexpr std::uint32_t handle = 7;

class IdpromReading : public testing::Test {
protected:
    void SetUp() override
    {
        board_double.reset();
        board_double.handle.channel = 0;
    }

    static Memory page(int address) { return board_double.plug_pon(1)[address]; }

    static Idprom read(IdpromScope scope)
    {
        board_double.record.clear();
        return read_idprom(handle, scope).value();
    }

    static void make_qsfp(int compliance = 0)
    {
        page(0x50)[0] = 0x11;
        page(0x50)[131] = static_cast<std::uint8_t>(compliance);
    }
};

const Lines sfp_general = lines("I 50:2 1", "I 50:60 2") + byte_reads(0x50, 3, 10) + lines("I 50:36 1") +
                          byte_reads(0x50, 14, 19) + lines("I 50:92 1", "I 50:11 1", "I 50:12 1");
const Lines sfp_vendor = byte_reads(0x50, 20, 35) + byte_reads(0x50, 37, 39) + byte_reads(0x50, 40, 55) +
                         byte_reads(0x50, 56, 59) + byte_reads(0x50, 68, 83);
const Lines qsfp_vendor = byte_reads(0x50, 148, 163) + byte_reads(0x50, 165, 167) +
                          byte_reads(0x50, 168, 183) + byte_reads(0x50, 184, 185) +
                          byte_reads(0x50, 196, 211);

Lines qsfp_general(const Lines &extended)
{
    return lines("I 50:128 1", "I 50:130 1") + byte_reads(0x50, 186, 187) + byte_reads(0x50, 131, 138) +
           extended + byte_reads(0x50, 142, 146) + lines("I 50:92 1", "I 50:139 1", "I 50:140 1");
}

} // namespace

TEST_F(IdpromReading, reads_each_byte_of_an_sfp_once_and_the_wavelength_as_a_word)
{
    page(0x50)[0] = 3;
    read(IdpromScope::all);
    EXPECT_EQ(board_double.record, lines("I 50:0 1") + sfp_general + sfp_vendor + byte_reads(0x50, 84, 91) +
                                       byte_reads(0x51, 128, 247));
}

TEST_F(IdpromReading, reads_for_a_block_of_an_sfp_only_what_it_shows)
{
    page(0x50)[0] = 0;
    read(IdpromScope::vendor);
    EXPECT_EQ(board_double.record, lines("I 50:0 1") + sfp_vendor);
    read(IdpromScope::manufacture);
    EXPECT_EQ(board_double.record, lines("I 50:0 1") + byte_reads(0x50, 68, 83) + byte_reads(0x50, 84, 91) +
                                       byte_reads(0x50, 20, 35));
}

TEST_F(IdpromReading, selects_page_0_of_a_qsfp_before_it_reads_above_127)
{
    make_qsfp();
    const Lines head = lines("I 50:0 1", "W 50:127=0");
    read(IdpromScope::all);
    EXPECT_EQ(board_double.record, head + qsfp_general({}) + qsfp_vendor + byte_reads(0x50, 212, 219) +
                                       byte_reads(0x50, 128, 247));
    read(IdpromScope::vendor);
    EXPECT_EQ(board_double.record, head + qsfp_vendor);
    read(IdpromScope::manufacture);
    EXPECT_EQ(board_double.record,
              head + byte_reads(0x50, 196, 211) + byte_reads(0x50, 212, 219) + byte_reads(0x50, 148, 163));
}

TEST_F(IdpromReading, reads_the_extended_code_of_a_qsfp_only_when_byte_131_is_exactly_0x80)
{
    page(0x50)[192] = 6;
    for (const int code : {0x00, 0x81, 0xC0, 0xFF}) {
        make_qsfp(code);
        EXPECT_EQ(read(IdpromScope::all).general.extended_compliance, -1) << code;
    }
    make_qsfp(0x80);
    EXPECT_EQ(read(IdpromScope::all).general.extended_compliance, 6);
    const Lines expected = lines("I 50:0 1", "W 50:127=0") + qsfp_general(lines("I 50:192 1"));
    EXPECT_EQ(Lines(board_double.record.begin(),
                    board_double.record.begin() + static_cast<std::ptrdiff_t>(expected.size())),
              expected);
}

TEST_F(IdpromReading, takes_the_fields_from_where_the_standards_have_them)
{
    for (int reg = 0; reg < 256; ++reg) {
        page(0x50)[static_cast<std::size_t>(reg)] = static_cast<std::uint8_t>(reg);
        page(0x51)[static_cast<std::size_t>(reg)] = static_cast<std::uint8_t>(~reg);
    }
    page(0x50)[0] = 3;
    const Idprom sfp = read(IdpromScope::all);
    EXPECT_EQ(sfp.general.identifier, 3);
    EXPECT_EQ(sfp.general.wavelength_nm, 60 * 256 + 61);
    EXPECT_EQ(sfp.general.distance, (std::vector<std::uint8_t>{14, 15, 16, 17, 18, 19}));
    EXPECT_EQ(sfp.part_number, "()*+,-./01234567");
    EXPECT_EQ(sfp.date_code, "TUVWXYZ[");
    EXPECT_EQ(sfp.dump[0], 127);
    EXPECT_EQ(sfp.dump[119], 8);

    page(0x50)[0] = 0x0D;
    const Idprom qsfp = read(IdpromScope::all);
    EXPECT_EQ(qsfp.general.identifier, 128);
    EXPECT_EQ(qsfp.general.wavelength_nm, (186 * 256 + 187) / 20);
    EXPECT_EQ(qsfp.general.distance, (std::vector<std::uint8_t>{142, 143, 144, 145, 146}));
    EXPECT_EQ(qsfp.general.encoding, 139);
    EXPECT_EQ(qsfp.general.bit_rate, 140);
    EXPECT_EQ(qsfp.general.monitoring, 92);
    EXPECT_EQ(qsfp.dump[0], 128);
    EXPECT_EQ(qsfp.dump[119], 247);
}

TEST_F(IdpromReading, a_text_ends_at_its_first_zero_byte_and_a_failed_byte_is_zero)
{
    page(0x50)[0] = 3;
    set_text(page(0x50), 20, "ACME OPTICS     ");
    set_text(page(0x50), 40, "PART");
    board_double.fail({"any", "addr=0x50", "reg=24"});
    const Idprom idprom = read(IdpromScope::vendor);
    EXPECT_EQ(idprom.vendor_name, "ACME");
    EXPECT_EQ(idprom.part_number, "PART");
    EXPECT_EQ(board_double.record, lines("I 50:0 1") + sfp_vendor)
        << "the bytes behind are read all the same";
}

TEST_F(IdpromReading, a_module_that_does_not_answer_is_an_sfp_of_zeros)
{
    const Idprom idprom = read(IdpromScope::all);
    EXPECT_EQ(idprom.family, ModuleFamily::sff8472);
    EXPECT_EQ(idprom.vendor_name, "");
    EXPECT_EQ(idprom.dump, (std::array<std::uint8_t, 120>{}));
}

TEST_F(IdpromReading, other_identifiers_are_read_no_further)
{
    for (int identifier = 0; identifier < 256; ++identifier) {
        page(0x50)[0] = static_cast<std::uint8_t>(identifier);
        board_double.record.clear();
        const auto idprom = read_idprom(handle, IdpromScope::all);
        switch (identifier) {
        case 0x00:
        case 0x03:
            EXPECT_EQ(idprom.value().family, ModuleFamily::sff8472);
            break;
        case 0x02:
        case 0x0C:
        case 0x0D:
        case 0x11:
            EXPECT_EQ(idprom.value().family, ModuleFamily::sff8636);
            break;
        default:
            EXPECT_FALSE(idprom) << identifier;
            EXPECT_EQ(board_double.record, lines("I 50:0 1")) << identifier;
        }
    }
}
