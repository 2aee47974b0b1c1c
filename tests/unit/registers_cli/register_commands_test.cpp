// SPDX-License-Identifier: GPL-2.0-or-later
// PHY and I2C commands with arguments that the syntax does not let through, and register numbers.
#include "diagd/core/command.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/registers_cli/phy_register.hpp"

#include "util_i2c.h"
#include "util_phy.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <map>
#include <string>
#include <utility>
#include <vector>

int phy_cmd_init(void);
int i2c_cmd_init(void);

namespace {

std::map<std::string, const struct cmd_element *> commands;
std::string printed;
int library_calls;
int raised;

// Words of a command: what the syntax calls each, and what was typed.
using Words = std::vector<std::pair<std::string, std::string>>;

int run(const std::string &name, Words words)
{
    std::vector<struct cmd_token> tokens(words.size());
    std::vector<struct cmd_token *> argv;
    for (std::size_t i = 0; i < words.size(); ++i) {
        tokens[i].text = words[i].first.data();
        tokens[i].arg = words[i].second.data();
        argv.push_back(&tokens[i]);
    }
    const struct cmd_element *command = commands.at(name + "_cmd");
    return command->func(command, nullptr, static_cast<int>(argv.size()), argv.data());
}

const std::pair<std::string, std::string> phy{"phy", "phy"}, id{"PHY_ID_HEX", "1"}, reg{"REG_HEX", "2"},
    value{"VALUE_HEX", "3"}, i2c{"i2c", "i2c"}, bus{"(0-3)", "1"}, slave{"SLAVE_ADDR_HEX", "50"},
    slave_register{"REG_ADDR_HEX", "7F"};

std::pair<std::string, std::string> word(const std::string &text)
{
    return {text, text};
}

} // namespace

extern "C" {
void _install_element(enum node_type, const struct cmd_element *command)
{
    commands[command->name] = command;
}
int vty_out(struct vty *, const char *format, ...)
{
    char text[256];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    printed += text;
    return length;
}
struct zebra_privs_t *_zprivs_raise(struct zebra_privs_t *privs, const char *)
{
    ++raised;
    return privs;
}
void _zprivs_lower(struct zebra_privs_t **privs)
{
    --raised;
    *privs = nullptr;
}
int misc_phy_read(const char *, std::uint32_t, std::uint32_t, std::uint32_t *)
{
    return ++library_calls;
}
int misc_phy_write(const char *, std::uint32_t, std::uint32_t, std::uint32_t)
{
    return ++library_calls;
}
int misc_phy_info(const char *, std::uint32_t, std::uint32_t *, std::uint8_t *, std::uint8_t *)
{
    return ++library_calls;
}
int misc_phy_reset(const char *, std::uint32_t)
{
    return ++library_calls;
}
int misc_phy_debug_set(int)
{
    return ++library_calls;
}
int misc_i2c_device_init(int)
{
    ++library_calls;
    return -1;
}
int misc_i2c_read(int, std::uint8_t, std::uint8_t, std::uint8_t *, int, int)
{
    return ++library_calls;
}
int misc_i2c_write(int, std::uint8_t, std::uint8_t, std::uint8_t *, int, int)
{
    return ++library_calls;
}
int misc_i2c_debug_set(int)
{
    return ++library_calls;
}
}

class RegisterCommands : public testing::Test {
protected:
    void SetUp() override
    {
        EXPECT_EQ(phy_cmd_init(), 0);
        EXPECT_EQ(i2c_cmd_init(), 0);
        printed.clear();
        library_calls = 0;
        raised = 0;
    }
    void TearDown() override
    {
        EXPECT_EQ(library_calls, 0);
        EXPECT_EQ(raised, 0);
    }
};

TEST_F(RegisterCommands, a_phy_read_without_id_or_register_is_incomplete)
{
    EXPECT_EQ(run("debug_phy_read", {phy, word("read"), reg}), 4);
    EXPECT_EQ(run("debug_phy_read", {phy, word("read"), id}), 4);
    EXPECT_EQ(printed, "");
}

TEST_F(RegisterCommands, a_phy_read_of_another_mode_reads_nothing)
{
    EXPECT_EQ(run("debug_phy_read", {phy, word("read"), id, reg, word("mdio")}), 0);
    EXPECT_EQ(printed, "phy 0x1 register 0x2 value 0x0\r\n");
}

TEST_F(RegisterCommands, a_phy_write_without_all_three_numbers_does_nothing)
{
    EXPECT_EQ(run("debug_phy_write", {phy, word("write"), reg, value}), 0);
    EXPECT_EQ(run("debug_phy_write", {phy, word("write"), id, value}), 0);
    EXPECT_EQ(run("debug_phy_write", {phy, word("write"), id, reg}), 0);
    EXPECT_EQ(printed, "");
}

TEST_F(RegisterCommands, phy_info_and_reset_without_id_do_nothing)
{
    EXPECT_EQ(run("debug_phy_info", {phy, word("info")}), 0);
    EXPECT_EQ(run("debug_phy_reset", {phy, word("reset")}), 0);
    EXPECT_EQ(printed, "");
}

TEST_F(RegisterCommands, a_phy_dump_without_id_fails_and_one_of_another_mode_is_a_warning)
{
    EXPECT_EQ(run("debug_phy_dump", {phy, word("dump")}), 13);
    EXPECT_EQ(run("debug_phy_dump", {phy, word("dump"), id, word("mdio")}), 1);
    EXPECT_EQ(printed, "");
}

TEST_F(RegisterCommands, an_i2c_read_without_bus_device_or_register_does_nothing)
{
    EXPECT_EQ(run("debug_i2c_read", {i2c, word("read"), slave, slave_register}), 0);
    EXPECT_EQ(run("debug_i2c_read", {i2c, bus, word("read"), slave_register}), 0);
    EXPECT_EQ(run("debug_i2c_read", {i2c, bus, word("read"), slave}), 0);
    EXPECT_EQ(printed, "");
}

TEST_F(RegisterCommands, an_i2c_write_without_all_four_numbers_does_nothing)
{
    EXPECT_EQ(run("debug_i2c_write", {i2c, word("write"), slave, slave_register, value}), 0);
    EXPECT_EQ(run("debug_i2c_write", {i2c, bus, word("write"), slave_register, value}), 0);
    EXPECT_EQ(run("debug_i2c_write", {i2c, bus, word("write"), slave, value}), 0);
    EXPECT_EQ(run("debug_i2c_write", {i2c, bus, word("write"), slave, slave_register}), 0);
    EXPECT_EQ(printed, "");
}

TEST(PhyRegister, of_clause_45_has_bit_30_the_device_and_16_bits_of_register)
{
    EXPECT_EQ(diagd::clause45_register(1, 2), 0x40010002u);
    EXPECT_EQ(diagd::clause45_register(0x1f, 0xffff), 0x401fffffu);
    EXPECT_EQ(diagd::clause45_register(3, 0x18010), 0x40038010u) << "no bit reaches the device address";
}

TEST(Arguments, are_numbers_of_their_base)
{
    std::string name = "NUMBER";
    struct cmd_token token {};
    token.text = name.data();
    struct cmd_token *argv[] = {&token};
    const auto hex = [&](std::string typed) {
        token.arg = typed.data();
        return diagd::find_hex(1, argv, "NUMBER");
    };
    const auto decimal = [&](std::string typed) {
        token.arg = typed.data();
        return diagd::find_decimal(1, argv, "NUMBER");
    };
    EXPECT_EQ(hex("1F"), 31u);
    EXPECT_EQ(hex("0x1f"), 31u);
    EXPECT_EQ(hex("10"), 16u);
    EXPECT_EQ(hex("xyz"), 0u);
    EXPECT_EQ(hex("fffffffffffffffff"), ULONG_MAX);
    EXPECT_EQ(decimal("10"), 10);
    EXPECT_EQ(decimal("010"), 10);
    EXPECT_EQ(decimal("-1"), -1);
    EXPECT_EQ(decimal("xyz"), 0);
    EXPECT_EQ(decimal("99999999999999999999"), LONG_MAX);
    EXPECT_FALSE(diagd::find_hex(1, argv, "OTHER"));
    EXPECT_FALSE(diagd::find_decimal(1, argv, "OTHER"));
}
