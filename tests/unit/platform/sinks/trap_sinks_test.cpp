// SPDX-License-Identifier: GPL-2.0-or-later
// The file of trap sinks.
#include "platform/sinks/trap_sinks.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace tq {
static bool operator==(const TrapSink &a, const TrapSink &b)
{
    return a.address == b.address && a.port == b.port && a.community == b.community;
}
} // namespace tq

using tq::parse_trap_sinks;
using tq::TrapSink;

TEST(TrapSinks, each_form_of_address_is_read)
{
    const auto file = parse_trap_sinks("192.0.2.1 public\n"
                                       "192.0.2.1:1162 c1\n"
                                       "2001:db8::1 c2\n"
                                       "[2001:db8::1] c3\n"
                                       "[2001:db8::1]:65535 c4");
    EXPECT_THAT(file.sinks,
                ElementsAre(TrapSink{"192.0.2.1", 162, "public"}, TrapSink{"192.0.2.1", 1162, "c1"},
                            TrapSink{"2001:db8::1", 162, "c2"}, TrapSink{"2001:db8::1", 162, "c3"},
                            TrapSink{"2001:db8::1", 65535, "c4"}));
    EXPECT_THAT(file.mistakes, IsEmpty());
}

TEST(TrapSinks, blanks_comments_and_empty_lines_do_not_matter)
{
    const auto file = parse_trap_sinks("# sinks\n\n  \t192.0.2.1\t a#b  # the first\r\n   # none\n\n");
    EXPECT_THAT(file.sinks, ElementsAre(TrapSink{"192.0.2.1", 162, "a#b"}));
    EXPECT_THAT(file.mistakes, IsEmpty());
}

TEST(TrapSinks, nothing_is_no_sink)
{
    for (const char *text : {"", "\n", "#", " "}) {
        EXPECT_THAT(parse_trap_sinks(text).sinks, IsEmpty());
        EXPECT_THAT(parse_trap_sinks(text).mistakes, IsEmpty());
    }
}

TEST(TrapSinks, a_line_that_is_wrong_is_named_and_leaves_the_others)
{
    const auto file = parse_trap_sinks("192.0.2.1\n192.0.2.2 a b\nolt.example c\n192.0.2.3 c");
    EXPECT_THAT(file.sinks, ElementsAre(TrapSink{"192.0.2.3", 162, "c"}));
    EXPECT_THAT(file.mistakes,
                ElementsAre("line 1: an address and a community are wanted",
                            "line 2: an address and a community are wanted",
                            "line 3: no address of the form IPV4[:PORT], IPV6 or [IPV6]:PORT"));
}

TEST(TrapSinks, odd_addresses_and_ports_are_refused)
{
    for (const char *word :
         {"192.0.2.256", "192.0.2.1:", "192.0.2.1:0", "192.0.2.1:65536", "192.0.2.1:-1", "192.0.2.1:1x",
          ":162", "[", "[]", "[]:1", "[2001:db8::1", "[2001:db8::1]1", "[2001:db8::1]:", "[2001:db8::1]:0",
          "2001:db8::1::2", "localhost", "localhost:162", "*"})
        EXPECT_EQ(parse_trap_sinks(std::string(word) + " c").mistakes.size(), 1u) << word;
}

TEST(TrapSinks, a_community_of_255_characters_is_the_longest)
{
    EXPECT_EQ(parse_trap_sinks("192.0.2.1 " + std::string(255, 'c')).sinks.size(), 1u);
    EXPECT_THAT(parse_trap_sinks("192.0.2.1 " + std::string(256, 'c')).mistakes,
                ElementsAre("line 1: the community is too long"));
}

TEST(TrapSinks, sixteen_sinks_are_the_most)
{
    std::string text;
    for (int i = 0; i < 17; ++i)
        text += "192.0.2.1 c\n";
    EXPECT_EQ(parse_trap_sinks(text).sinks.size(), 16u);
    EXPECT_THAT(parse_trap_sinks(text).mistakes, ElementsAre("line 17: there are too many sinks"));
}

TEST(TrapSinks, bytes_of_any_kind_are_survived)
{
    std::string text(4096, '\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>(i * 37 % 251);
    EXPECT_THAT(parse_trap_sinks(text).sinks, IsEmpty());
    EXPECT_THAT(parse_trap_sinks(std::string("192.0.2.1\0x c", 13)).sinks, testing::SizeIs(testing::Le(1u)));
}
