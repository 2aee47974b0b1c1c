// SPDX-License-Identifier: GPL-2.0-or-later
// Arguments behind keywords, in commands parsed by libfrr itself.
#include "tq_api.h"

#include <gtest/gtest.h>
#include <map>
#include <string>

#include <zebra.h>

#include <command.h>
#include <command_match.h>
#include <command_parse.h>
#include <memory.h>
#include <vector.h>

namespace {

const char syntax[] = "alarm-log debug send id (0-512) [uplink-port (1-128)] [pon (1-32)] [onu (1-256)] "
                      "[onu-port (1-256)] [mac MAC] [state (1-512)] message MESSAGE";

std::map<std::string, std::string> found;

int handler(const struct cmd_element *, struct vty *, int argc, struct cmd_token *argv[])
{
    found.clear();
    for (const char *keyword : {"id", "uplink-port", "pon", "onu", "onu-port", "mac", "state", "message",
                                "absent", "MAC", "(1-256)"})
        if (const char *argument = cmd_parase_parameters(argc, argv, keyword))
            found[keyword] = argument;
    return 42;
}

// Parses and runs one line.
bool run(const char *line)
{
    static cmd_element element = [] {
        cmd_element made{};
        made.string = syntax;
        made.doc = "";
        made.func = handler;
        made.name = "test_cmd";
        return made;
    }();
    graph *commands = graph_new();
    auto *start = static_cast<cmd_token *>(cmd_token_new(START_TKN, 0, nullptr, nullptr));
    graph_new_node(commands, start, reinterpret_cast<void (*)(void *)>(&cmd_token_del));
    cmd_graph_parse(commands, &element);
    vector words = cmd_make_strvec(line);
    list *arguments = nullptr;
    const cmd_element *matched = nullptr;
    const bool good = command_match(commands, words, &arguments, &matched) == MATCHER_OK;
    if (good) {
        std::vector<cmd_token *> argv;
        listnode *node;
        void *token;
        for (ALL_LIST_ELEMENTS_RO(arguments, node, token))
            argv.push_back(static_cast<cmd_token *>(token));
        handler(matched, nullptr, static_cast<int>(argv.size()), argv.data());
        list_delete(&arguments);
    }
    cmd_free_strvec(words);
    graph_delete_graph(commands);
    return good;
}

using Found = std::map<std::string, std::string>;

} // namespace

TEST(Parameters, every_keyword_gives_the_word_behind_it)
{
    ASSERT_TRUE(
        run("alarm-log debug send id 77 uplink-port 3 pon 4 onu 5 onu-port 6 mac AB:CD:EF state 9 message "
            "port_down"));
    EXPECT_EQ(found, (Found{{"id", "77"},
                            {"uplink-port", "3"},
                            {"pon", "4"},
                            {"onu", "5"},
                            {"onu-port", "6"},
                            {"mac", "AB:CD:EF"},
                            {"state", "9"},
                            {"message", "port_down"}}));
}

TEST(Parameters, optional_pieces_that_were_not_typed_are_absent)
{
    ASSERT_TRUE(run("alarm-log debug send id 0 onu 7 message x"));
    EXPECT_EQ(found, (Found{{"id", "0"}, {"onu", "7"}, {"message", "x"}}));
}

TEST(Parameters, keywords_may_be_abbreviated)
{
    ASSERT_TRUE(run("alarm deb se i 1 up 9 st 3 mes x"));
    EXPECT_EQ(found, (Found{{"id", "1"}, {"uplink-port", "9"}, {"state", "3"}, {"message", "x"}}));
}

TEST(Parameters, a_typed_value_that_reads_like_a_keyword_is_no_keyword)
{
    ASSERT_TRUE(run("alarm-log debug send id 1 mac state message pon"));
    EXPECT_EQ(found, (Found{{"id", "1"}, {"mac", "state"}, {"message", "pon"}}));
}

TEST(Parameters, nothing_to_look_at_gives_nothing)
{
    EXPECT_EQ(cmd_parase_parameters(0, nullptr, "id"), nullptr);
    EXPECT_EQ(cmd_parase_parameters(3, nullptr, "id"), nullptr);
    EXPECT_EQ(cmd_parase_parameters(0, nullptr, nullptr), nullptr);
}
