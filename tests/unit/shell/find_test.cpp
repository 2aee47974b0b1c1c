// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/find.hpp"
#include "shell/syntax_words.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using diagsh::alarm_names;
using diagsh::Command;
using diagsh::find_commands;
using diagsh::help_for;
using diagsh::parse_commands;
using diagsh::short_syntax;
using diagsh::words_of;
using testing::ElementsAre;

namespace {

const std::vector<Command> commands =
    parse_commands("view\texit\n\tLeave\n"
                   "config\tshow fan [json]\n"
                   "\tShow information\n"
                   "\tFans of the box\n"
                   "\tAs JSON\n"
                   "config\talarm-log alarm <a1|b2|c3|d4|e5|fan> level <low|high>\n"
                   "\tAlarm log\n\tAlarms\n"
                   "\tOf a1\n\tOf b2\n\tOf c3\n\tOf d4\n\tOf e5\n\tOf the fan\n"
                   "\tIts level\n\tLow one\n\tHigh one\n"
                   "gpon\tshow light\n\tShow information\n\tOptical power\n"
                   "xgpon\tshow light\n\tShow information\n\tOptical power\n"
                   "alarm-log\tshow fan hidden away\n");

} // namespace

TEST(ParseCommands, reads_node_syntax_and_help)
{
    ASSERT_EQ(commands.size(), 6U);
    EXPECT_EQ(commands[1].node, "config");
    EXPECT_EQ(commands[1].syntax, "show fan [json]");
    EXPECT_THAT(commands[1].help, ElementsAre("Show information", "Fans of the box", "As JSON"));
}

TEST(ParseCommands, shows_a_syntax_without_its_layout_and_names_for_the_program)
{
    const auto parsed =
        parse_commands("enable\tshow yang WORD$path   [{\t   format <json$a|xml$b>\t  |with-config$c\t }]\n");
    ASSERT_EQ(parsed.size(), 1U);
    EXPECT_EQ(parsed[0].syntax, "show yang WORD [{format <json|xml>|with-config}]");
}

TEST(Find, looks_into_syntax_and_help_whatever_the_case)
{
    EXPECT_EQ(find_commands(commands, "OPTICAL"), "gpon,xgpon  show light  -- Optical power\n");
    EXPECT_EQ(find_commands(commands, "Json"), "config  show fan [json]  -- Fans of the box\n");
}

TEST(Find, leads_from_the_word_of_people_to_that_of_the_commands)
{
    const auto with_transceiver =
        parse_commands("config\tshow transceiver [json]\n\tShow.\n\tTransceiver information.\n\tAs JSON\n"
                       "config\tshow optical transceiver\n\tShow.\n\tOptical.\n\tTransceiver.\n"
                       "enable\tshow modules\n\tShow.\n\tLoaded modules.\n");
    EXPECT_EQ(find_commands(with_transceiver, "Module"),
              "enable  show modules  -- Loaded modules.\n"
              "% also by another name, transceiver:\n"
              "config  show transceiver [json]  -- Transceiver information.\n"
              "config  show optical transceiver  -- Transceiver.\n");
    EXPECT_EQ(find_commands(with_transceiver, "optical"),
              "config  show optical transceiver  -- Transceiver.\n"
              "% also by another name, transceiver:\n"
              "config  show transceiver [json]  -- Transceiver information.\n");
    EXPECT_EQ(find_commands(with_transceiver, "transceiver").find('%'), std::string::npos);
    EXPECT_EQ(find_commands(commands, "sfp"), "") << "none of these commands has the other word";
}

TEST(Find, names_long_lists_and_still_looks_into_them)
{
    EXPECT_EQ(find_commands(commands, "d4"),
              "config  alarm-log alarm <ALARM> level <low|high>  -- Its level\n");
}

TEST(Find, leaves_out_nodes_that_nobody_enters)
{
    EXPECT_EQ(find_commands(commands, "hidden"), "");
}

TEST(Find, takes_an_expression_and_text_that_is_none)
{
    EXPECT_EQ(find_commands(commands, "^show l|^exit$"),
              "view        exit  -- Leave\ngpon,xgpon  show light  -- Optical power\n");
    EXPECT_EQ(find_commands(commands, "*("), "");
}

TEST(ShortSyntax, keeps_what_is_read_in_passing)
{
    EXPECT_EQ(short_syntax("clear [level <a|b|c|d|e>]"), "clear [level <a|b|c|d|e>]");
    EXPECT_EQ(short_syntax("show [level <a|b|c|d|e|f>] (1-9)"), "show [level <LEVEL>] (1-9)");
    EXPECT_EQ(short_syntax("alarm-log threshold <a|b|c|d|e|f> enable"), "alarm-log threshold <ALARM> enable");
}

TEST(HelpFor, tells_each_word_of_commands_that_begin_so)
{
    EXPECT_EQ(help_for(commands, "sh fa", 80), "config: show fan [json]\n"
                                               "  show                  Show information\n"
                                               "  fan                   Fans of the box\n"
                                               "  json                  As JSON\n");
    EXPECT_EQ(help_for(commands, "nothing", 80), "");
}

TEST(HelpFor, tells_a_long_list_once)
{
    EXPECT_THAT(help_for(commands, "alarm-log alarm fan", 40),
                testing::HasSubstr("\n  ALARM                 a1, b2, c3, d4,\n"
                                   "                        e5, fan\n  level "));
}

TEST(AlarmNames, come_from_the_commands_that_take_them)
{
    EXPECT_THAT(alarm_names(commands), ElementsAre("a1", "b2", "c3", "d4", "e5", "fan"));
}

TEST(WordsOf, pairs_words_with_their_help_through_brackets)
{
    const auto words = words_of("set <A.B.C.D|on> [{x|y WORD$name}]", {"s", "ip", "o", "ex", "why", "word"});
    ASSERT_EQ(words.size(), 6U);
    EXPECT_EQ(words[1].text, "A.B.C.D");
    EXPECT_FALSE(words[1].is_keyword());
    EXPECT_EQ(words[5].text, "WORD");
    EXPECT_EQ(words[5].help, "word");
    EXPECT_EQ(words[5].element, 2U);
    EXPECT_TRUE(words[2].is_keyword());
}
