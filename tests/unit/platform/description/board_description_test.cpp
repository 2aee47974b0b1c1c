// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/description/board_description.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "platform/description/json_fields.hpp"
#include "tests/unit/temporary_folder.hpp"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string default_text()
{
    std::ostringstream text;
    text << std::ifstream(OLT8_JSON).rdbuf();
    return text.str();
}

std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    const auto at = text.find(from);
    if (at == std::string::npos)
        throw std::logic_error("not in the description: " + from);
    return text.replace(at, from.size(), to);
}

class Description : public testing::Test {
protected:
    TemporaryFolder folder;

    std::string complaint(const std::string &text)
    {
        try {
            board::load(folder.write("board.json", text));
        } catch (const json::Error &error) {
            const std::string line = error.what();
            EXPECT_THAT(line, StartsWith(folder.file("board.json") + ": "));
            EXPECT_EQ(line.find('\n'), std::string::npos);
            return line;
        }
        return "accepted";
    }
};

TEST_F(Description, default_board_has_eight_pon_and_four_ge_cages)
{
    const board::Board board = board::load(OLT8_JSON);
    EXPECT_EQ(board.pon.count, 8);
    EXPECT_EQ(board.pon.first_channel, 0);
    EXPECT_EQ(board.pon.presence_register, 11);
    EXPECT_EQ(board.ge.count, 4);
    EXPECT_EQ(board.ge.first_channel, 8);
    EXPECT_EQ(board.ge.presence_register, 12);
    EXPECT_EQ(board.cpld.bus, 0);
    EXPECT_EQ(board.cpld.power_status, 0x03);
    EXPECT_EQ(board.cpld.logic_version, 0x21);
    EXPECT_EQ(board.cpld.device_type, 0x05);
    EXPECT_EQ(board.lm75.bus, 2);
    EXPECT_EQ(board.lm75.address, 0x48);
}

TEST_F(Description, default_board_lists_pon_ports_in_record_2_and_ge_ports_in_record_5)
{
    const board::Board board = board::load(OLT8_JSON);
    ASSERT_EQ(board.records.size(), 2U);
    const board::Record &pon = board.records[0];
    EXPECT_EQ(pon.index, 2U);
    EXPECT_EQ(pon.word8, 0U);
    EXPECT_EQ(pon.word108, 6U);
    EXPECT_EQ(pon.capability, 1U << 3);
    ASSERT_EQ(pon.pon1.size(), 8U);
    ASSERT_EQ(pon.pon2.size(), 8U);
    EXPECT_EQ(pon.pon1.front().number, 1U);
    EXPECT_EQ(pon.pon2.back().number, 8U);
    EXPECT_TRUE(pon.pon1.front().in_use);
    const board::Record &ge = board.records[1];
    EXPECT_EQ(ge.index, 5U);
    EXPECT_EQ(ge.capability, 1U << 4);
    ASSERT_EQ(ge.sfp.size(), 4U);
    EXPECT_TRUE(ge.sfp.back().present);
    EXPECT_EQ(ge.sfp.back().slot, 0U);
}

TEST_F(Description, missing_file_is_named)
{
    try {
        board::load(folder.file("nowhere.json"));
        FAIL();
    } catch (const json::Error &error) {
        EXPECT_EQ(error.what(), folder.file("nowhere.json") + ": No such file or directory");
    }
}

TEST_F(Description, file_of_more_than_a_mebibyte_is_not_read)
{
    const std::string text = "{}" + std::string((1U << 20) - 1, ' ');
    EXPECT_THAT(complaint(text), EndsWith("larger than 1 MiB"));
}

TEST_F(Description, missing_field_is_named_with_its_object)
{
    EXPECT_THAT(complaint(replaced(default_text(), "\"logic_version\": \"0x21\",", "")),
                EndsWith("cpld.logic_version: missing"));
}

TEST_F(Description, misspelt_field_is_not_ignored)
{
    EXPECT_THAT(complaint(replaced(default_text(), "\"drift\"", "\"drfit\"")),
                EndsWith("drfit: unknown field"));
}

TEST_F(Description, number_outside_its_range_is_refused)
{
    EXPECT_THAT(complaint(replaced(default_text(), "\"0x48\"", "\"0x148\"")),
                EndsWith("lm75.address: 328 is not in 3..119"));
}

TEST_F(Description, text_that_is_no_number_is_refused)
{
    EXPECT_THAT(complaint(replaced(default_text(), "\"0x48\"", "\"48h\"")),
                EndsWith("lm75.address: \"48h\" is not a whole number"));
}

TEST_F(Description, text_behind_the_object_is_refused)
{
    EXPECT_THAT(complaint(default_text() + "{}"), EndsWith("text after the end of the object"));
    EXPECT_EQ(complaint(default_text() + " \t\r\n"), "accepted");
}

TEST_F(Description, file_that_ends_too_early_is_refused)
{
    const std::string text = default_text();
    EXPECT_THAT(complaint(text.substr(0, text.rfind('}'))), EndsWith("the file ends too early"));
}

TEST_F(Description, text_with_a_nul_is_refused)
{
    EXPECT_THAT(complaint(replaced(default_text(), "\"0x48\"", "\"0x48\\u0000\"")),
                Not(EndsWith("accepted")));
    EXPECT_THAT(complaint(replaced(default_text(), "OLT8-XGS", "OLT8\\u0000XGS")),
                EndsWith("contains a NUL character"));
}

TEST_F(Description, port_given_twice_names_the_entry)
{
    EXPECT_THAT(complaint(replaced(default_text(), "{\"port\": 2}", "{\"port\": 1}")),
                EndsWith("records[0].pon1[1].port: given twice"));
}

TEST_F(Description, mistakes_in_devices_and_phys_name_their_entry)
{
    const auto changed = [&](const char *from, const char *to) {
        return complaint(replaced(default_text(), from, to));
    };
    EXPECT_THAT(changed("\"address\": \"0x51\"", "\"address\": \"0x50\""),
                EndsWith("i2c_devices[1].address: given twice on bus 1"));
    EXPECT_THAT(changed("\"bus\": 3", "\"bus\": 4"), EndsWith("i2c_devices[4].bus: 4 is not in 0..3"));
    EXPECT_THAT(changed("\"kind\": \"lm75\"", "\"kind\": \"lm57\""),
                EndsWith("i2c_devices[4].kind: neither \"eeprom\" nor \"lm75\""));
    EXPECT_THAT(changed("2026-02-11", "2026-02-30"),
                EndsWith("made: \"2026-02-30\" is no date from 1996-01-01 to 2027-11-24"));
    EXPECT_THAT(changed("2026-02-11", "2027-11-25"), HasSubstr("is no date"));
    EXPECT_THAT(changed("110-0801-02", "1"), EndsWith("part_number: a single character"));
    EXPECT_THAT(changed("\"0x0c31\"", "\"0x10c31\""),
                EndsWith("phys[0].indirect[0].value: 68657 is not in 0..65535"));
}

TEST_F(Description, devices_may_be_on_the_addresses_of_other_buses_only)
{
    EXPECT_THAT(complaint(replaced(default_text(), "{\"bus\": 3, \"address\": \"0x49\"",
                                   "{\"bus\": 2, \"address\": \"0x48\"")),
                EndsWith("given twice on bus 2"));
}

TEST_F(Description, port_record_has_exactly_sixteen_bytes)
{
    EXPECT_THAT(complaint(replaced(default_text(), "[2, 8, ", "[8, ")),
                EndsWith("port_record: has 15 entries, 16 expected"));
}

TEST_F(Description, more_cages_than_channels_are_refused)
{
    EXPECT_THAT(complaint(replaced(default_text(), "\"channels\": 14", "\"channels\": 10")),
                EndsWith("ge_cages.count: the multiplexer has only 10 channels"));
}

TEST_F(Description, as_many_cages_as_channels_are_fine)
{
    const auto board = board::load(
        folder.write("board.json", replaced(default_text(), "\"channels\": 14", "\"channels\": 12")));
    EXPECT_EQ(board.ge.first_channel + board.ge.count, board.multiplexer.channels);
}

TEST_F(Description, the_buttons_word_lies_within_its_registers)
{
    EXPECT_THAT(complaint(replaced(default_text(), "\"offset\": 8", "\"offset\": 4096")),
                EndsWith("button.offset: 4096 is not in 0..4092"));
    EXPECT_EQ(complaint(replaced(default_text(), "\"offset\": 8", "\"offset\": 4092")), "accepted");
}

TEST_F(Description, syntax_error_names_the_line)
{
    EXPECT_THAT(complaint("{\n\"name\": \"x\",\n!\n}"), HasSubstr(": line 3: "));
    EXPECT_THAT(complaint("{\n\"name\": \"x\"\n"), EndsWith(": the file ends too early"));
    EXPECT_THAT(complaint(""), EndsWith(": the file ends too early"));
    EXPECT_THAT(complaint("[]"), EndsWith(": not a JSON object"));
}

TEST_F(Description, folder_from_the_environment_has_precedence)
{
    const board::Board board = board::load(OLT8_JSON);
    ASSERT_EQ(::unsetenv("BOARDSIM_DIR"), 0);
    EXPECT_EQ(board::sim_folder(board), "/run/boardsim");
    ASSERT_EQ(::setenv("BOARDSIM_DIR", "/tmp/elsewhere", 1), 0);
    EXPECT_EQ(board::sim_folder(board), "/tmp/elsewhere");
    ASSERT_EQ(::unsetenv("BOARDSIM_DIR"), 0);
}

} // namespace
