// SPDX-License-Identifier: GPL-2.0-or-later
#include "module_files/dump_reader.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "module_files/checksums.hpp"
#include "module_files/dump_file.hpp"
#include "module_files/text.hpp"
#include "tests/unit/temporary_folder.hpp"

namespace {

using module_files::Bytes;
using module_files::Dump;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// An A0h page with valid check codes.
Bytes a0_page(std::uint8_t identifier = 0x03, std::size_t size = 256)
{
    module_files::Half lower{};
    for (std::size_t i = 0; i < lower.size(); ++i)
        lower[i] = static_cast<std::uint8_t>(i * 7);
    lower[0] = identifier;
    lower[63] = compute(lower, module_files::checksum_base);
    lower[95] = compute(lower, module_files::checksum_extended);
    Bytes page(lower.begin(), lower.end());
    page.resize(size, 0x5a);
    return page;
}

Bytes a2_page()
{
    module_files::Half lower{};
    lower[96] = 0x20;
    lower[95] = compute(lower, module_files::checksum_diagnostics);
    Bytes page(lower.begin(), lower.end());
    page.resize(256, 0x77);
    return page;
}

Bytes qsfp_lower()
{
    Bytes lower(128);
    lower[0] = 0x0d;
    lower[22] = 0x21;
    return lower;
}

Bytes qsfp_page00()
{
    module_files::Half page{};
    page[0] = 0x0d;
    page[20] = 'O';
    page[63] = compute(page, module_files::checksum_qsfp_base);
    page[95] = compute(page, module_files::checksum_qsfp_extended);
    return {page.begin(), page.end()};
}

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes &part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::string refusal(std::vector<Dump> dumps, bool pad = false)
{
    try {
        module_files::assemble_module(std::move(dumps), pad);
    } catch (const module_files::ModuleError &error) {
        return error.what();
    }
    return "accepted";
}

std::string refusal(const std::string &text)
{
    try {
        module_files::parse_dump(text, "x.txt");
    } catch (const module_files::ModuleError &error) {
        return error.what();
    }
    return "accepted";
}

std::string ethtool_text(const Bytes &bytes)
{
    std::string text = "Offset\t\tValues\n------\t\t------\n";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i % 16 == 0)
            text += module_files::format("%s0x%04zx:\t\t", i != 0 ? "\n" : "", i);
        text += module_files::format("%02x ", bytes[i]);
    }
    return text + "\n";
}

std::string i2cdump_text(const Bytes &bytes)
{
    std::string text = "No size specified (using byte-data access)\n"
                       "     0  1  2  3  4  5  6  7  8  9  a  b  c  d  e  f    0123456789abcdef\n";
    for (std::size_t i = 0; i < bytes.size(); i += 16) {
        text += module_files::format("%02zx: ", i);
        for (std::size_t k = 0; k < 16; ++k)
            text += module_files::format("%02x ", bytes[i + k]);
        text += "   ";
        for (std::size_t k = 0; k < 16; ++k)
            text += bytes[i + k] > 32 && bytes[i + k] < 127 ? static_cast<char>(bytes[i + k]) : '.';
        text += "\n";
    }
    return text;
}

TEST(DumpText, ethtool_table_gives_its_bytes)
{
    const Bytes bytes = joined({a0_page(), a2_page()});
    EXPECT_EQ(module_files::parse_dump(ethtool_text(bytes), "x"), bytes);
}

TEST(DumpText, i2cdump_table_gives_its_bytes)
{
    EXPECT_EQ(module_files::parse_dump(i2cdump_text(a0_page()), "x"), a0_page());
}

// Of a range of registers the last line has fewer bytes; blanks take the place of the others.
TEST(DumpText, a_short_last_line_ends_before_its_column_of_characters)
{
    for (std::size_t count = 1; count < 16; ++count) {
        std::string text = "00:";
        for (std::size_t i = 0; i < 16; ++i)
            text += i < count ? " 41" : "   ";
        text += "    " + std::string(count, 'A') + "\n";
        EXPECT_EQ(module_files::parse_dump(text, "x"), Bytes(count, 0x41)) << count;
    }
}

TEST(DumpText, digits_alone_are_bytes)
{
    EXPECT_THAT(module_files::parse_dump("0304fF\n00 10\n", "x"), ElementsAre(0x03, 0x04, 0xff, 0x00, 0x10));
    EXPECT_EQ(refusal("03 041\n"), "x.txt: an odd number of hexadecimal digits");
}

TEST(DumpText, carriage_returns_do_not_matter)
{
    std::string text = ethtool_text(a0_page());
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.insert(at, "\r");
    EXPECT_EQ(module_files::parse_dump(text, "x"), a0_page());
}

TEST(DumpText, binary_is_taken_as_it_is)
{
    const Bytes page = a0_page();
    EXPECT_EQ(module_files::parse_dump({reinterpret_cast<const char *>(page.data()), page.size()}, "x"),
              page);
}

TEST(DumpText, bad_digit_names_its_line)
{
    EXPECT_EQ(refusal("0x0000:\t\t03 04\n0x0002:\t\t0g 01\n"),
              "x.txt: line 2: \"0g\" is not a hexadecimal byte");
    EXPECT_EQ(refusal("00: 03 4\n"), "x.txt: line 1: \"4\" is not a hexadecimal byte");
}

TEST(DumpText, unreadable_byte_is_refused)
{
    EXPECT_EQ(refusal("00: 03 XX\n"), "x.txt: line 1: byte 0x1 was not readable when the dump was made (XX)");
}

TEST(DumpText, missing_line_is_noticed)
{
    EXPECT_EQ(refusal("0x0000: 03 04\n0x0020: 00\n"),
              "x.txt: line 2: offset 0x20 where 0x2 is expected: lines are missing or out of order");
}

TEST(DumpText, other_text_is_refused)
{
    EXPECT_EQ(refusal("hello\n"), "x.txt: line 1: no dump line");
    EXPECT_EQ(refusal("# nothing\n"), "x.txt: neither a raw dump nor hexadecimal text");
    EXPECT_EQ(refusal(""), "x.txt: empty");
    EXPECT_EQ(refusal("0x0000:\n"), "x.txt: line 1: no bytes after the offset");
}

TEST(Assembly, a0_alone_has_no_diagnostics)
{
    const auto module = module_files::assemble_module({{"x.bin", a0_page()}}, false);
    EXPECT_EQ(module.image.name, "x");
    EXPECT_EQ(module.image.devices.size(), 1U);
    EXPECT_EQ(module.image.devices.at(0x50).read(200), 0x5a);
    EXPECT_THAT(module.notes, IsEmpty());
}

TEST(Assembly, both_pages_come_in_one_dump_or_two)
{
    for (const auto &dumps : {std::vector<Dump>{{"x.bin", joined({a0_page(), a2_page()})}},
                              std::vector<Dump>{{"x.a0.bin", a0_page()}, {"x.a2.bin", a2_page()}},
                              std::vector<Dump>{{"x.a2.bin", a2_page()}, {"x.a0.bin", a0_page()}}}) {
        const auto module = module_files::assemble_module(dumps, false);
        EXPECT_EQ(module.image.devices.at(0x50).read(1), 7);
        EXPECT_EQ(module.image.devices.at(0x51).read(96), 0x20);
        EXPECT_EQ(module.image.devices.at(0x51).read(255), 0x77);
    }
}

TEST(Assembly, four_pages_make_a_combo_module)
{
    const auto module = module_files::assemble_module(
        {{"x.bin", joined({a0_page(), a2_page(), a0_page(), a2_page()})}}, false);
    EXPECT_EQ(module.image.devices.size(), 4U);
    EXPECT_TRUE(module.image.devices.contains(0x59));
}

TEST(Assembly, qsfp_pages_come_in_one_dump_or_several)
{
    Bytes page03(128, 0x33);
    const auto all = module_files::assemble_module(
        {{"q.bin", joined({qsfp_lower(), qsfp_page00(), Bytes(128, 0x11), Bytes(128, 0x22), page03})}},
        false);
    const auto parts = module_files::assemble_module(
        {{"q.page03.bin", page03}, {"q.page00.bin", qsfp_page00()}, {"q.lower.bin", qsfp_lower()}}, false);
    EXPECT_EQ(all.image.devices.at(0x50).pages.size(), 4U);
    EXPECT_EQ(parts.image.devices.at(0x50).pages.size(), 2U);
    EXPECT_EQ(all.image.devices.at(0x50).pages.at(3)[0], 0x33);
    EXPECT_EQ(parts.image.devices.at(0x50).pages.at(3)[0], 0x33);
    EXPECT_EQ(parts.image.devices.at(0x50).read(148), 'O');
}

TEST(Assembly, a_page_without_a_number_follows_the_one_before)
{
    const auto module = module_files::assemble_module({{"q.lower.bin", qsfp_lower()},
                                                       {"q.page00.bin", qsfp_page00()},
                                                       {"q.page02.bin", Bytes(128, 0x22)},
                                                       {"q.bin", Bytes(128, 0x33)}},
                                                      false);
    EXPECT_EQ(module.image.devices.at(0x50).pages.size(), 3U);
    EXPECT_EQ(module.image.devices.at(0x50).pages.at(3)[0], 0x33);
}

TEST(Assembly, whichever_page_was_read_last_a_module_begins_with_page_00)
{
    Bytes lower = qsfp_lower();
    lower[127] = 3;
    const auto module = module_files::assemble_module(
        {{"q.lower.bin", lower}, {"q.page00.bin", qsfp_page00()}, {"q.page03.bin", Bytes(128, 0x33)}}, false);
    EXPECT_EQ(module.image.devices.at(0x50).read(127), 0);
    EXPECT_EQ(module.image.devices.at(0x50).read(148), 'O');
}

TEST(Assembly, short_dump_is_refused_unless_padding_is_asked_for)
{
    EXPECT_EQ(refusal({{"x.bin", a0_page(0x03, 300)}}),
              "x.bin: A2h is truncated at offset 44 of 128 (--pad fills it up)");
    Bytes cut = a0_page();
    cut.resize(200);
    EXPECT_EQ(refusal({{"x.bin", cut}}), "x.bin: A0h is truncated at offset 200 of 256 (--pad fills it up)");
    EXPECT_EQ(refusal({{"q.bin", qsfp_lower()}}), "q.bin: truncated at offset 128: page 00h is missing");
    const auto module = module_files::assemble_module({{"x.bin", cut}}, true);
    EXPECT_EQ(module.image.devices.at(0x50).read(199), 0x5a);
    EXPECT_EQ(module.image.devices.at(0x50).read(200), 0);
    EXPECT_THAT(module.notes, ElementsAre("x.bin: A0h is truncated at offset 200, the rest reads 0"));
}

TEST(Assembly, wrong_check_code_is_a_note)
{
    Bytes page = a0_page();
    page[20] ^= 1;
    const auto module = module_files::assemble_module({{"x.bin", page}}, false);
    ASSERT_EQ(module.notes.size(), 1U);
    EXPECT_THAT(module.notes[0], HasSubstr("checksum CC_BASE is"));
    EXPECT_EQ(module.image.devices.at(0x50).read(20), page[20]);
}

TEST(Assembly, parts_that_do_not_fit_are_refused)
{
    EXPECT_EQ(refusal({{"x.a2.bin", a2_page()}}),
              "x.a2.bin: this part alone is no module; give the dump of its identification first");
    EXPECT_EQ(refusal({{"x.a0.bin", a0_page()}, {"y.a0.bin", a0_page()}}), "y.a0.bin: a second A0h");
    EXPECT_EQ(refusal({{"q.lower.bin", qsfp_lower()}, {"q.page0.bin", qsfp_page00()}}),
              "q.page0.bin: no page number after .page");
    EXPECT_EQ(refusal({{"q.lower.bin", qsfp_lower()},
                       {"q.page00.bin", qsfp_page00()},
                       {"r.page00.bin", qsfp_page00()}}),
              "r.page00.bin: a second page 00h");
    EXPECT_EQ(refusal({{"q.page00.bin", qsfp_page00()}, {"q.page03.bin", qsfp_page00()}}),
              "q.page00.bin: the dump of lower memory is missing");
    EXPECT_EQ(refusal({{"x.bin", Bytes(2000, 3)}}), "x.bin: more than the four memories of an SFP");
    EXPECT_EQ(refusal({{"x.bin", {}}}), "x.bin: empty");
    EXPECT_EQ(refusal(std::vector<Dump>{}), "no dump given");
}

TEST(SortDumps, short_parts_keep_their_length)
{
    const auto parts = module_files::sort_dumps({{"x.bin", a0_page(0x03, 300)}});
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].address, 0x50);
    EXPECT_EQ(parts[0].bytes.size(), 256U);
    EXPECT_EQ(parts[1].address, 0x51);
    EXPECT_EQ(parts[1].bytes.size(), 44U);
}

TEST(SortDumps, diagnostics_alone_are_known_by_their_name)
{
    Bytes page = a2_page();
    page[0] = 0x11; // no identifier here
    const auto parts = module_files::sort_dumps({{"x.a2.bin", page}});
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_EQ(parts[0].address, 0x51);
    EXPECT_EQ(parts[0].kind, module_files::Part::Kind::flat);
}

TEST(SortDumps, memory_of_a_cmis_module_has_pages)
{
    for (const auto identifier : std::initializer_list<std::uint8_t>{0x18, 0x19, 0x1e}) {
        Bytes dump(384);
        dump[0] = identifier;
        const auto parts = module_files::sort_dumps({{"x.bin", dump}});
        ASSERT_EQ(parts.size(), 3U);
        EXPECT_EQ(parts[0].kind, module_files::Part::Kind::lower);
        EXPECT_EQ(parts[2].kind, module_files::Part::Kind::page);
        EXPECT_EQ(parts[2].page, 1);
    }
}

TEST(Assembly, sums_of_another_standard_are_no_fault_of_a_cmis_module)
{
    Bytes dump(256, 0x21);
    dump[0] = 0x18;
    EXPECT_THAT(module_files::assemble_module({{"x.bin", dump}}, false).notes, IsEmpty());
}

TEST(Assembly, random_bytes_never_do_worse_than_a_complaint)
{
    std::minstd_rand random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string content(random() % 1100, '\0');
        for (char &c : content)
            c = static_cast<char>(round % 2 == 0 ? random() % 256 : "0123456789abcdefX: \n\t"[random() % 21]);
        try {
            const auto module = module_files::assemble_module(
                {{"x.bin", module_files::parse_dump(content, "x.bin")}}, random() % 2 == 0);
            EXPECT_FALSE(module.image.devices.empty());
        } catch (const module_files::ModuleError &error) {
            EXPECT_STRNE(error.what(), "");
        }
    }
}

TEST(DumpFile, unreadable_files_are_named)
{
    const TemporaryFolder folder;
    try {
        module_files::read_dump_file(folder.file("none.bin"));
        FAIL();
    } catch (const std::exception &error) {
        EXPECT_EQ(error.what(), folder.file("none.bin") + ": No such file or directory");
    }
}

// SFF-8636, page select byte: a page that is not there selects page 00h, and the register says so.
TEST(ModuleImage, a_page_that_is_not_there_selects_page_00)
{
    auto device = module_files::assemble_module({{"q.lower.bin", qsfp_lower()},
                                                 {"q.page00.bin", qsfp_page00()},
                                                 {"q.page03.bin", Bytes(128, 0x33)}},
                                                false)
                      .image.devices.at(0x50);
    device.write(127, 3);
    EXPECT_EQ(device.read(127), 3);
    EXPECT_EQ(device.read(148), 0x33);
    device.write(127, 2);
    EXPECT_EQ(device.read(127), 0);
    EXPECT_EQ(device.read(148), 'O');
}

TEST(ModuleImage, damaged_text_form_is_refused)
{
    EXPECT_THROW(module_files::image_from_text(""), module_files::ModuleError);
    EXPECT_THROW(module_files::image_from_text("module x\nend\n"), module_files::ModuleError);
    EXPECT_THROW(module_files::image_from_text("module x\nlower 00\n"), module_files::ModuleError);
    EXPECT_THROW(module_files::image_from_text("module x\ndevice 50 flat\nlower 0011\nend\n"),
                 module_files::ModuleError);
    EXPECT_THROW(module_files::image_from_text("module x\ndevice 5g flat\nend\n"), module_files::ModuleError);
}

} // namespace
