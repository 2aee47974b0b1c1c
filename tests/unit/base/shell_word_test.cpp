// SPDX-License-Identifier: GPL-2.0-or-later
// Operator text in shell lines: the shell itself says what it makes of it.
#include "base/shell_word.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

// The arguments that the shell passes on for these words, each in brackets.
std::string as_the_shell_reads(const std::string &words)
{
    std::FILE *const shell = popen(("printf '[%s]' " + words).c_str(), "r");
    if (shell == nullptr)
        return "no shell";
    std::string text;
    for (int c = std::fgetc(shell); c != EOF; c = std::fgetc(shell))
        text += static_cast<char>(c);
    return pclose(shell) == 0 ? text : "failed: " + text;
}

} // namespace

TEST(ShellWord, ordinary_text_stays_as_it_is)
{
    for (const char *text : {"10.0.0.1", "2001:db8::1", "admin", "S3cret", "a.b@c_d-e", "user=1,2/3%4+5"})
        EXPECT_EQ(base::shell_word(text), text);
}

TEST(ShellWord, the_shell_reads_exactly_the_text)
{
    for (const std::string text :
         {"$(touch x)", "`id`", "a;b",   "a|b",   "a&b", "a>b",  "a<b",   "a'b",      "''",    "'", "\"",
          "a\"b",       "\\",   "a\\'b", "$HOME", "*",   "?",    "[a-z]", "~",        "~root", "#", "!",
          "{a,b}",      "(a)",  "a b",   "\t",    "\n",  "\x7f", "\xe9",  "\xc3\xa9", "-p",    "=", "%s"})
        EXPECT_EQ(as_the_shell_reads(base::shell_word(text)), "[" + text + "]") << text;
}

TEST(ShellWord, every_character_by_itself_is_one_word)
{
    for (int c = 1; c < 256; ++c) {
        const std::string text(1, static_cast<char>(c));
        EXPECT_EQ(as_the_shell_reads(base::shell_word(text)), "[" + text + "]") << c;
    }
}

TEST(ShellWord, no_text_is_a_word_too)
{
    EXPECT_EQ(base::shell_word(""), "''");
}

TEST(ShellWord, quotes_are_the_only_thing_that_needs_an_escape)
{
    EXPECT_EQ(base::shell_word("it's"), R"('it'\''s')");
    EXPECT_EQ(base::shell_word("a\\b"), R"('a\b')");
}
