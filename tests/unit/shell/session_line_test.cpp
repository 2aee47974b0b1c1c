// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/session_line.hpp"

#include <gtest/gtest.h>

using diagsh::greeting;
using diagsh::help_begins;
using diagsh::is_exit;
using diagsh::parse_session_line;
using diagsh::wants_alarm_name;
using diagsh::Wide;

TEST(SessionLine, layout_behind_a_bar_is_for_this_command)
{
    const auto line = parse_session_line(" show fan |  scroll ", Wide::as_is);
    EXPECT_EQ(line.command, "show fan");
    EXPECT_EQ(line.wide, Wide::scroll);
    EXPECT_EQ(parse_session_line("show fan", Wide::fold).wide, Wide::fold);
}

TEST(SessionLine, other_bars_are_the_daemons)
{
    const auto line = parse_session_line("show fan | include 1 | fold", Wide::as_is);
    EXPECT_EQ(line.command, "show fan | include 1");
    EXPECT_EQ(line.wide, Wide::fold);
    EXPECT_EQ(parse_session_line("show fan | include fold", Wide::as_is).command, "show fan | include fold");
}

TEST(SessionLine, find_is_diagshs_own)
{
    const auto line = parse_session_line("find alarm log", Wide::as_is);
    EXPECT_EQ(line.pattern, "alarm log");
    EXPECT_EQ(line.command, "");
    EXPECT_EQ(parse_session_line("find", Wide::as_is).command, "find") << "the daemon says what is missing";
}

TEST(Greeting, says_where_one_is_within_a_line)
{
    const std::string text = greeting({-1, "diagnose", "olt(diagnose)# "}, "");
    EXPECT_EQ(text.find("olt, node diagnose."), 0U);
    EXPECT_LT(text.size(), 80U);
    EXPECT_EQ(greeting({-1, "view", "olt> "}, "/tmp/two").find("olt of /tmp/two, node view."), 0U);
}

TEST(IsExit, takes_what_the_daemon_takes_for_exit)
{
    for (const char *command : {"exit", "ex", "quit", "qui"})
        EXPECT_TRUE(is_exit(command)) << command;
    for (const char *command : {"", "e", "end", "exit now"})
        EXPECT_FALSE(is_exit(command)) << command;
}

TEST(WantsAlarmName, only_behind_the_word_name_of_the_show_command)
{
    for (const char *line :
         {"show alarm-log configuration name ", "sh al conf name pon-", "show alarm-log con na x"})
        EXPECT_TRUE(wants_alarm_name(line)) << line;
    for (const char *line :
         {"show alarm-log configuration name", "show alarm-log configuration name fan ", "hostname "})
        EXPECT_FALSE(wants_alarm_name(line)) << line;
}

TEST(HelpBegins, is_the_column_of_the_text)
{
    EXPECT_EQ(help_begins("  alarm-log  Alarm log."), 13U);
    EXPECT_EQ(help_begins("  <cr>  "), 8U);
    EXPECT_EQ(help_begins(""), 0U);
}
