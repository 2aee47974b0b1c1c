// SPDX-License-Identifier: GPL-2.0-or-later
// Commands of the transceiver unit that no session reaches: those in no install table, with their words and
// help, and interface nodes of kinds that the box does not have.
#include "diagd/transceiver/transceiver_cmd.hpp"

#include "diagd/transceiver/memory/access.hpp"
#include "tests/unit/printing_vty.hpp"
#include "tests/unit/transceiver/module_board_double.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

int transceiver_cmd_init(void);

namespace {

std::vector<std::pair<int, const struct cmd_element *>> installed;

struct Reserved {
    const struct cmd_element *command;
    const char *words;
    const char *help;
    const char *printed;
};

#define SUBCOMMANDS "Interface transceiver configuration subcommands\n"
#define NEGATE "Negate a command or set its defaults\n"

const Reserved reserved[] = {
    {&transceiver_dom_support_show_cmd, "show interface transceiver dom-supported-list",
     "Show running system information\nInterface status and configuration\nShow interface transceiver\n"
     "Show supported transceivers\n",
     "Transceiver Type        Supporting DOM\r\n--------------------    -------------------------\r\n"},
    {&transceiver_tx_power_threshold_cmd,
     "transceiver diagnosis threshold tx-power <default|low-alarm VALUE|high-alarm VALUE>",
     SUBCOMMANDS "Diagnosis\nThreshold\nTx Power\nDefault\nLower alarm limit\n"
                 "Set tx power low-alarm threshold(dBm)\nUpper alarm limit\n"
                 "Set tx power high-alarm threshold(dBm)\n",
     ""},
    {&no_transceiver_tx_power_threshold_cmd, "no transceiver diagnosis threshold tx-power",
     NEGATE SUBCOMMANDS "Diagnosis\nThreshold\nTx Power\n", ""},
    {&transceiver_rx_power_threshold_cmd,
     "transceiver diagnosis threshold rx-power <default|low-alarm VALUE|high-alarm VALUE>",
     SUBCOMMANDS "Diagnosis\nThreshold\nRx Power\nDefault\nLower alarm limit\n"
                 "Set rx power low-alarm threshold(dBm)\nUpper alarm limit\n"
                 "Set rx power high-alarm threshold(dBm)\n",
     ""},
    {&no_transceiver_rx_power_threshold_cmd, "no transceiver diagnosis threshold rx-power",
     NEGATE SUBCOMMANDS "Diagnosis\nThreshold\nRx Power\n", ""},
    {&transceiver_power_error_down_cmd, "transceiver power low trigger error-down",
     SUBCOMMANDS "Power\nLow\nTrigger\nError-down\n", ""},
};

class TransceiverCommands : public testing::Test {
protected:
    void SetUp() override { board_double.reset(); }
    void TearDown() override { board_double.expect_given_back(); }

    // Runs a handler with the one word it asks for, behind two others.
    int run(const struct cmd_element &command, const char *word)
    {
        cmd_token token{};
        token.text = const_cast<char *>(word);
        cmd_token *argv[] = {&token, &token, &token};
        return command.func(&command, &vty.session, 3, argv);
    }

    PrintingVty vty;
};

} // namespace

extern "C" void _install_element(enum node_type node, const struct cmd_element *command)
{
    installed.emplace_back(static_cast<int>(node), command);
}

TEST_F(TransceiverCommands, are_installed_in_their_order)
{
    installed.clear();
    EXPECT_EQ(transceiver_cmd_init(), 0);
    const std::vector<std::pair<int, const struct cmd_element *>> expected{
        {4, &interface_idprom_show_cmd},
        {4, &interface_xgpon_idprom_show_cmd},
        {4, &transceiver_show_cmd},
        {4, &transceiver_detail_show_cmd},
        {124, &transceiver_rssi_txdis_cmd},
        {125, &transceiver_rssi_txdis_cmd},
        {124, &show_transceiver_rssi_txdis_cmd},
        {125, &show_transceiver_rssi_txdis_cmd},
        {133, &debug_transceiver_cmd},
    };
    EXPECT_EQ(installed, expected);
}

TEST_F(TransceiverCommands, in_no_table_have_their_words_and_help)
{
    for (const Reserved &expected : reserved) {
        EXPECT_STREQ(expected.command->string, expected.words);
        EXPECT_STREQ(expected.command->doc, expected.help) << expected.words;
        EXPECT_EQ(expected.command->attr, 0) << expected.words;
    }
}

TEST_F(TransceiverCommands, in_no_table_succeed_without_touching_the_board)
{
    for (const Reserved &expected : reserved) {
        EXPECT_EQ(run(*expected.command, "default"), CMD_SUCCESS) << expected.words;
        EXPECT_EQ(vty.text(), expected.printed) << expected.words;
    }
    EXPECT_TRUE(board_double.record.empty());
}

TEST_F(TransceiverCommands, debugging_is_switched_by_the_first_word)
{
    cmd_token no{}, debug{};
    no.text = const_cast<char *>("no");
    debug.text = const_cast<char *>("debug");
    cmd_token *on[] = {&debug, &debug}, *off[] = {&no, &debug, &debug};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(debug_transceiver_cmd.func(&debug_transceiver_cmd, &vty.session, 2, on), CMD_SUCCESS);
        EXPECT_EQ(transceiver_debug_get(), 1);
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(debug_transceiver_cmd.func(&debug_transceiver_cmd, &vty.session, 3, off), CMD_SUCCESS);
        EXPECT_EQ(transceiver_debug_get(), 0);
    }
    EXPECT_EQ(vty.text(), "");
    EXPECT_TRUE(board_double.record.empty());
}

TEST_F(TransceiverCommands, both_idprom_commands_run_one_handler)
{
    EXPECT_EQ(interface_idprom_show_cmd.func, interface_xgpon_idprom_show_cmd.func);
}

TEST_F(TransceiverCommands, the_pin_of_a_gigabit_interface_is_set_and_shown)
{
    board_double.plug_gigabit(3)[0x51][118] = 0x00;
    vty.session.intf_kind = 1;
    vty.session.port = 3;
    EXPECT_EQ(run(transceiver_rssi_txdis_cmd, "rssi"), CMD_SUCCESS);
    EXPECT_EQ(board_double.plug_gigabit(3)[0x51][118], 0x40);
    EXPECT_EQ(run(show_transceiver_rssi_txdis_cmd, ""), CMD_SUCCESS);
    EXPECT_TRUE(vty.text().starts_with("Extended Control/Status Register value : 0x40\r\n"));
    EXPECT_EQ(run(transceiver_rssi_txdis_cmd, "txdis"), CMD_SUCCESS);
    EXPECT_EQ(board_double.plug_gigabit(3)[0x51][118], 0x00);
}

TEST_F(TransceiverCommands, the_pin_of_an_unknown_kind_is_left_alone_in_silence)
{
    board_double.plug_pon(1);
    board_double.plug_gigabit(1);
    vty.session.port = 1;
    for (const int kind : {0, 4}) {
        vty.session.intf_kind = kind;
        board_double.record.clear();
        EXPECT_EQ(run(transceiver_rssi_txdis_cmd, "rssi"), CMD_SUCCESS);
        EXPECT_EQ(run(show_transceiver_rssi_txdis_cmd, ""), CMD_SUCCESS);
        EXPECT_EQ(vty.text(), "");
        for (const std::string &line : board_double.record)
            EXPECT_FALSE(line.starts_with("R ") || line.starts_with("CH")) << line;
    }
}
