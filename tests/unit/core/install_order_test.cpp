// SPDX-License-Identifier: GPL-2.0-or-later
// Nodes and commands of the daemon's frame: what is installed, where, in which order, with which words and
// help.
#include "diagd/core/frr.hpp"
#include "tests/unit/command_table.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

int diag_cmd_init(void);

namespace {

std::vector<const struct cmd_node *> nodes;
std::vector<std::pair<int, const struct cmd_element *>> commands;

// What the daemon's frame installs of the table: from the interface nodes' entrances to the monitors'
// switches.
std::vector<ListedCommand> frames_commands()
{
    const std::vector<ListedCommand> all = read_command_table(COMMAND_TABLE);
    const auto named = [&](std::string_view name) {
        return std::ranges::find(all, name, &ListedCommand::name);
    };
    const auto first = named("gpon_config_interface_cmd");
    const auto last = named("show_diag_monitor_cmd");
    EXPECT_LT(first, last);
    return first < last ? std::vector(first, last + 1) : std::vector<ListedCommand>{};
}

} // namespace

extern "C" {
void install_node(struct cmd_node *node)
{
    nodes.push_back(node);
}
void _install_element(enum node_type node, const struct cmd_element *command)
{
    commands.emplace_back(static_cast<int>(node), command);
}
}

class InstallOrder : public testing::Test {
protected:
    void SetUp() override
    {
        nodes.clear();
        commands.clear();
        EXPECT_EQ(diag_cmd_init(), 0);
    }
};

TEST_F(InstallOrder, three_nodes_come_first_to_last)
{
    ASSERT_EQ(nodes.size(), 3u);
    EXPECT_STREQ(nodes[0]->name, "alarm-log");
    EXPECT_EQ(nodes[0]->node, 155);
    EXPECT_EQ(nodes[0]->parent_node, 0);
    EXPECT_STREQ(nodes[0]->prompt, "");
    EXPECT_STREQ(nodes[1]->name, "gpon");
    EXPECT_EQ(nodes[1]->node, 124);
    EXPECT_EQ(nodes[1]->parent_node, CONFIG_NODE);
    EXPECT_STREQ(nodes[1]->prompt, "%s(config-gpon-%d/%d)# ");
    EXPECT_STREQ(nodes[2]->name, "xgpon");
    EXPECT_EQ(nodes[2]->node, 125);
    EXPECT_EQ(nodes[2]->parent_node, CONFIG_NODE);
    EXPECT_STREQ(nodes[2]->prompt, "%s(config-xgpon-%d/%d)# ");
}

TEST_F(InstallOrder, commands_come_in_order_with_their_words_and_help)
{
    const std::vector<ListedCommand> listed = frames_commands();
    ASSERT_EQ(commands.size(), listed.size());
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const auto &[node, command] = commands[i];
        const ListedCommand &expected = listed[i];
        EXPECT_EQ(command->name, expected.name) << i;
        EXPECT_EQ(node, expected.node) << expected.name;
        EXPECT_EQ(command->string, expected.syntax) << expected.name;
        if (!expected.help.empty()) {
            EXPECT_EQ(command->doc, expected.help) << expected.name;
        }
        EXPECT_EQ(command->attr == CMD_ATTR_HIDDEN, expected.hidden) << expected.name;
    }
}

// Commands that differ in their words only.
TEST_F(InstallOrder, all_forms_of_a_command_run_one_handler)
{
    const auto handler = [](const std::string &name) {
        const auto at = std::ranges::find_if(
            commands, [&](const auto &row) { return row.second->name == name + "_cmd"; });
        EXPECT_NE(at, commands.end()) << name;
        return at == commands.end() ? nullptr : at->second->func;
    };
    EXPECT_EQ(handler("clear_syslog"), handler("clear_alarm_log"));
    EXPECT_EQ(handler("config_syslog_flash"), handler("config_alarm_log_flash"));
    for (const std::string family : {"ipv4", "ipv6"}) {
        EXPECT_EQ(handler("config_syslog_server_" + family), handler("config_alarm_log_server_" + family));
        EXPECT_EQ(handler("delete_syslog_server_" + family), handler("delete_alarm_log_server_" + family));
    }
    for (const std::string group : {"global", "pon", "onu", "routing"}) {
        for (const std::string kind : {"_alarm_", "_event_"}) {
            EXPECT_EQ(handler("alarm_log_" + group + kind + "action"),
                      handler("alarm_log_global_alarm_action"));
            EXPECT_EQ(handler("alarm_" + group + kind + "action"), handler("alarm_global_alarm_action"));
            EXPECT_EQ(handler("alarm_log_" + group + kind + "level"),
                      handler("alarm_log_global_alarm_level"));
        }
    }
}
