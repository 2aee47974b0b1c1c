// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/system_cli/task_parser.hpp"

#include <gtest/gtest.h>

using namespace diagd;
using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(TaskParser, folders_of_tasks_have_names_of_digits_only)
{
    EXPECT_EQ(parse_task_folder("1"), 1u);
    EXPECT_EQ(parse_task_folder("4194304"), 4194304u);
    for (const char *name : {"", ".", "..", "self", "1a", "a1", "-1", "+1", " 1", "1 ", "4294967296"})
        EXPECT_EQ(parse_task_folder(name), std::nullopt) << name;
}

TEST(TaskParser, the_command_is_the_base_name_of_the_first_argument)
{
    EXPECT_EQ(parse_task_command("/usr/sbin/zebra\0-u\0/etc/x\0"sv), "zebra");
    EXPECT_EQ(parse_task_command("top\0-n1\0"sv), "top");
    EXPECT_EQ(parse_task_command("nginx: master process /usr/sbin/nginx"), "nginx");
    EXPECT_EQ(parse_task_command("/usr/bin/\0"sv), "");
}

TEST(TaskParser, a_thread_of_the_kernel_has_no_command)
{
    EXPECT_EQ(parse_task_command(""), "");
    EXPECT_EQ(parse_task_command("\0\0"sv), "");
}

TEST(TaskParser, a_command_line_that_was_cut_is_shown_as_far_as_it_goes)
{
    EXPECT_EQ(parse_task_command(std::string(256, 'x')), std::string(256, 'x'));
}

TEST(TaskParser, name_and_state_stand_in_lines_1_and_3)
{
    const TaskStatus status =
        parse_task_status("Name:\tkworker/0:1-events\nUmask:\t0000\nState:\tS (sleeping)\nTgid:\t1\n");
    EXPECT_EQ(status.name, "kworker/0:1-events");
    EXPECT_EQ(status.state, "S (sleeping)");
}

TEST(TaskParser, leading_blanks_and_control_characters_are_skipped)
{
    const TaskStatus status = parse_task_status("Name: \t\v\f\r x y \n\nState:    R (running)\n");
    EXPECT_EQ(status.name, "x y ");
    EXPECT_EQ(status.state, "R (running)");
}

TEST(TaskParser, lines_that_are_missing_leave_their_values_empty)
{
    EXPECT_EQ(parse_task_status("").name, "");
    EXPECT_EQ(parse_task_status("Name").name, "");
    EXPECT_EQ(parse_task_status("Name:").name, "");
    for (const char *text : {"Name:\ta", "Name:\ta\n", "Name:\ta\nUmask:\t0022\n", "Name:\ta\n\n"}) {
        EXPECT_EQ(parse_task_status(text).name, "a");
        EXPECT_EQ(parse_task_status(text).state, "");
    }
}

// Eighty bytes hold a first line of 78 characters, its line feed and the end.
TEST(TaskParser, a_longer_line_goes_on_as_the_next_one)
{
    const auto state_behind = [](std::size_t length) {
        return parse_task_status("Name:\t" + std::string(length - 6, 'n') + "\nUmask:\t0\nState:\tS\n").state;
    };
    EXPECT_EQ(state_behind(78), "S");
    EXPECT_EQ(state_behind(79), "0");
    EXPECT_EQ(state_behind(85), "0");
    EXPECT_EQ(parse_task_status("Name:\t" + std::string(200, 'n')).name, std::string(73, 'n'));
}

TEST(TaskParser, names_carry_no_control_sequences_to_the_terminal)
{
    EXPECT_EQ(parse_task_command("/bin/a\x1b[2J\nb\x7f\0"sv), "a?[2J?b?");
    EXPECT_EQ(parse_task_status("Name:\ta\x1b]0;b\a\nUmask:\t0\nState:\tS\n").name, "a?]0;b?");
    EXPECT_EQ(parse_task_command("a\tb\xff\0"sv), "a\tb?");
    EXPECT_EQ(parse_task_command("m\xc3\xbcller"), "m\xc3\xbcller"s);
    EXPECT_EQ(parse_task_command("x\xc2\x9b[y\xc2\x80z\xc2\xa0"), "x?[y?z\xc2\xa0"s);
    EXPECT_EQ(parse_task_command("x\x9b[y\xe9z\xc2"), "x?[y\xe9z\xc2"s); // no UTF-8
    EXPECT_EQ(parse_task_command("\xe2\x9b\x94\xf0\x9f\x94\x94"), "\xe2\x9b\x94\xf0\x9f\x94\x94"s);
}
