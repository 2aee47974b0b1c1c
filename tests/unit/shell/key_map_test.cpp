// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/key_map.hpp"

#include <gtest/gtest.h>

using diagsh::KeyMap;

TEST(KeyMap, home_and_end_of_every_terminal_become_control_a_and_e)
{
    for (const char *home : {"\x1b[H", "\x1bOH", "\x1b[1~", "\x1b[7~"})
        EXPECT_EQ(KeyMap().translate(home), "\x01");
    for (const char *end : {"\x1b[F", "\x1bOF", "\x1b[4~", "\x1b[8~"})
        EXPECT_EQ(KeyMap().translate(end), "\x05");
}

TEST(KeyMap, words_are_moved_over_with_escape_b_and_f)
{
    EXPECT_EQ(KeyMap().translate("\x1b[1;5D"), "\x1b"
                                               "b");
    EXPECT_EQ(KeyMap().translate("\x1b[1;5C"), "\x1b"
                                               "f");
}

TEST(KeyMap, delete_never_leaves_the_line_empty_before_control_d)
{
    EXPECT_EQ(KeyMap().translate("\x1b[3~"), " \x04\b");
}

TEST(KeyMap, arrows_and_text_pass)
{
    EXPECT_EQ(KeyMap().translate("show\x1b[A\x1b[D?\t\r"), "show\x1b[A\x1b[D?\t\r");
}

TEST(KeyMap, sequence_in_pieces_is_put_together)
{
    KeyMap keys;
    EXPECT_EQ(keys.translate("a\x1b"), "a");
    EXPECT_EQ(keys.translate("["), "");
    EXPECT_EQ(keys.translate("3"), "");
    EXPECT_EQ(keys.translate("~b"), " \x04\b"
                                    "b");
}
