// SPDX-License-Identifier: GPL-2.0-or-later
// Nodes and commands of the daemon's frame: what is installed, where, in which order, with which words and
// help.
#include "diagd/core/frr.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

int diag_cmd_init(void);

namespace {

std::vector<const struct cmd_node *> nodes;
std::vector<std::pair<int, const struct cmd_element *>> commands;

struct Expected {
    int node;
    const char *name;
    const char *words; // null: joined from the names of a group, see alarm_grammar_test
    const char *help;  // null: any
    bool hidden;
};

const char *const level_words = "[level <debug|info|notice|warning|major|critical|alert|emerg>]";
const char *const level_help =
    "Show information.\nAlarm log.\nSpecify log level.\nSpecify log debug level.\n"
    "Specify log info level.\nSpecify log notice level.\nSpecify log warning level.\n"
    "Specify log major level.\nSpecify log critical level.\nSpecify log alert level.\n"
    "Specify log emerg level.\n";
const std::string show_words = std::string{"show alarm-log "} + level_words;
const std::string clear_words = std::string{"clear alarm-log "} + level_words;
const std::string clear_syslog_words = std::string{"clear syslog "} + level_words;

constexpr int config = 4;
constexpr int diagnose = 133;
constexpr int gpon = 124;
constexpr int xgpon = 125;

#define BOARD_ALARMS "<temp-high|temp-low|cpu-usage-high|mem-usage-high>"
#define PON_ALARMS                                                                                           \
    "<pon-txpower-high|pon-txpower-low|pon-txbias-high|pon-txbias-low|pon-vcc-high|pon-vcc-low|pon-temp-"    \
    "high|pon-temp-low>"
#define OPTICAL_ALARMS                                                                                       \
    "<tx_power_high|tx_power_low|tx_bias_high|tx_bias_low|vcc_high|vcc_low|temp_high|temp_low>"

const std::vector<Expected> expected_commands{
    {config, "gpon_config_interface_cmd", "interface gpon <S/P>",
     "Interface information\nSpecify gpon module.\n"
     "PON interface number,slot:<0>,port:<1-x>,x is 2,4,or 8.\n",
     false},
    {config, "xgpon_config_interface_cmd", "interface xgpon <S/P>",
     "Interface information\nSpecify xgpon module.\n"
     "PON interface number,slot:<0>,port:<1-x>,x is 2,4,or 8.\n",
     false},
    {config, "show_alarm_log_cmd", show_words.c_str(), level_help, false},
    {config, "show_alarm_log_head_cmd", "show alarm-log head (1-1000)",
     "Show information.\nAlarm log.\nOldest log.\nSpecify oldest log count.\n", false},
    {config, "show_alarm_log_tail_cmd", "show alarm-log tail (1-1000)",
     "Show information.\nAlarm log.\nLatest log.\nSpecify latest log count.\n", false},
    {config, "clear_alarm_log_cmd", clear_words.c_str(), level_help, false},
    {config, "clear_syslog_cmd", clear_syslog_words.c_str(), level_help, true},
    {config, "enable_alarm_log_server_cmd", "alarm-log remote server <ipv4|ipv6> <enable|disable>",
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote sever.\n"
     "Specify remote server ipv4.\n"
     "Specify remote server ipv6.\n"
     "Specify remote server enable.\n"
     "Specify remote server disable.\n",
     false},
    {config, "config_alarm_log_server_ipv4_cmd", "alarm-log remote server ipv4 <A.B.C.D> port (1-65535)",
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote sever.\n"
     "Specify remote server ipv4.\n"
     "Specify remote server ipv4.\n"
     "Specify remote server port.\n"
     "Specify remote server port.\n",
     false},
    {config, "config_syslog_server_ipv4_cmd", "syslog server ip <A.B.C.D> port (1-65535)",
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote server ipv4.\n"
     "Specify remote server ipv4.\n"
     "Specify remote server port.\n"
     "Specify remote server port.\n",
     true},
    {config, "delete_alarm_log_server_ipv4_cmd", "no alarm-log remote server ipv4",
     "Disable alarm log remote server.\n"
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote sever.\n"
     "Specify remote sever ipv4.\n",
     false},
    {config, "delete_syslog_server_ipv4_cmd", "no syslog server ip",
     "Disable alarm log remote server.\n"
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote sever ipv4.\n",
     true},
    {config, "config_alarm_log_server_ipv6_cmd", "alarm-log remote server ipv6 X:X::X:X port (1-65535)",
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote sever.\n"
     "Specify remote server ipv6.\n"
     "Specify remote server ipv6.\n"
     "Specify remote server port.\n"
     "Specify remote server port.\n",
     false},
    {config, "config_syslog_server_ipv6_cmd", "syslog server ipv6 X:X::X:X port (1-65535)",
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote server ipv6.\n"
     "Specify remote server ipv6.\n"
     "Specify remote server port.\n"
     "Specify remote server port.\n",
     true},
    {config, "delete_alarm_log_server_ipv6_cmd", "no alarm-log remote server ipv6",
     "Disable alarm log remote server.\n"
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote sever.\n"
     "Specify remote sever ipv6.\n",
     false},
    {config, "delete_syslog_server_ipv6_cmd", "no syslog server ipv6",
     "Disable alarm log remote server.\n"
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote sever ipv6.\n",
     true},
    {config, "show_alarm_log_server_cmd", "show alarm-log remote server [ipv4|ipv6]",
     "Show information.\n"
     "Specify alarm log information.\n"
     "Specify remote sever.\n"
     "Specify remote sever.\n"
     "Specify remote sever ipv4.\n"
     "Specify remote sever ipv6.\n",
     false},
    {config, "config_alarm_log_flash_cmd",
     "alarm-log flash level <debug|info|notice|warning|major|critical|alert|emerg>",
     "Alarm log.\n"
     "Specify log flash.\n"
     "Specify log level.\n"
     "Specify log debug level.\n"
     "Specify log info level.\n"
     "Specify log notice level.\n"
     "Specify log warning level.\n"
     "Specify log major level.\n"
     "Specify log critical level.\n"
     "Specify log alert level.\n"
     "Specify log emerg level.\n",
     false},
    {config, "config_syslog_flash_cmd",
     "syslog flash level <debug|info|notice|warning|major|critical|alert|emerg>",
     "Alarm log.\n"
     "Specify log flash.\n"
     "Specify log level.\n"
     "Specify log debug level.\n"
     "Specify log info level.\n"
     "Specify log notice level.\n"
     "Specify log warning level.\n"
     "Specify log major level.\n"
     "Specify log critical level.\n"
     "Specify log alert level.\n"
     "Specify log emerg level.\n",
     true},
    {config, "show_alarm_log_flash_cmd", "show alarm-log flash level",
     "Show information.\n"
     "Alarm log.\n"
     "Specify log flash.\n"
     "Specify log level.\n",
     false},
    {config, "save_alarm_log_flash_cmd", "save alarm-log flash",
     "Save log to flash.\n"
     "Alarm log.\n"
     "Specify log flash.\n",
     false},
    {config, "clear_alarm_log_flash_cmd", "clear alarm-log flash",
     "Clear log from flash.\n"
     "Alarm log.\n"
     "Specify log flash.\n",
     false},
    {config, "show_alarm_log_cfg_cmd", nullptr, nullptr, false},
    {config, "show_alarm_log_cfg_name_cmd", nullptr, nullptr, false},
    {config, "show_alarm_log_cfg_id_cmd", nullptr, nullptr, false},
    {config, "alarm_log_global_alarm_action_cmd", nullptr, nullptr, false},
    {config, "alarm_global_alarm_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_global_alarm_level_cmd", nullptr, nullptr, false},
    {config, "alarm_log_global_event_action_cmd", nullptr, nullptr, false},
    {config, "alarm_global_event_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_global_event_level_cmd", nullptr, nullptr, false},
    {config, "alarm_log_pon_alarm_action_cmd", nullptr, nullptr, false},
    {config, "alarm_pon_alarm_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_pon_alarm_level_cmd", nullptr, nullptr, false},
    {config, "alarm_log_pon_event_action_cmd", nullptr, nullptr, false},
    {config, "alarm_pon_event_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_pon_event_level_cmd", nullptr, nullptr, false},
    {config, "alarm_log_onu_alarm_action_cmd", nullptr, nullptr, false},
    {config, "alarm_onu_alarm_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_onu_alarm_level_cmd", nullptr, nullptr, false},
    {config, "alarm_log_onu_event_action_cmd", nullptr, nullptr, false},
    {config, "alarm_onu_event_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_onu_event_level_cmd", nullptr, nullptr, false},
    {config, "alarm_log_routing_alarm_action_cmd", nullptr, nullptr, false},
    {config, "alarm_routing_alarm_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_routing_alarm_level_cmd", nullptr, nullptr, false},
    {config, "alarm_log_routing_event_action_cmd", nullptr, nullptr, false},
    {config, "alarm_routing_event_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_routing_event_level_cmd", nullptr, nullptr, false},
    {config, "alarm_log_all_action_cmd", nullptr, nullptr, false},
    {config, "alarm_all_action_cmd", nullptr, nullptr, true},
    {config, "alarm_name_action_cmd", nullptr, nullptr, true},
    {config, "alarm_event_all_action_cmd", nullptr, nullptr, true},
    {config, "alarm_event_default_action_cmd", nullptr, nullptr, true},
    {config, "alarm_log_global_threshold_set_cmd", "alarm-log threshold " BOARD_ALARMS " enable WORD WORD",
     nullptr, false},
    {config, "alarm_log_global_threshold_unset_cmd", "alarm-log threshold " BOARD_ALARMS " disable", nullptr,
     false},
    {config, "alarm_global_threshold_set_cmd",
     "alarm " BOARD_ALARMS " <print|record|trap|remote|all> enable WORD WORD", nullptr, true},
    {config, "alarm_global_threshold_unset_cmd",
     "alarm " BOARD_ALARMS " <print|record|trap|remote|all> disable", nullptr, true},
    {config, "show_alarm_log_running_config_cmd", "show running-config alarm-log",
     "Show running system information\nrunning configuration (same as write terminal)\nAlarm log.\n", false},
    {config, "alarm_log_debug_cmd",
     "alarm-log debug send id (0-512) [uplink-port (1-128)] [pon (1-32)] [onu (1-256)] [onu-port (1-256)] "
     "[mac MAC] [state (1-512)] message MESSAGE",
     "alarm-log\nDebugging functions\n"
     "Sending an alarmSending an alarm idSending an alarm id numberSending an alarm uplink-port"
     "Sending an alarm uplink-port numberSending an alarm ponSending an alarm pon numberSending an alarm onu"
     "Sending an alarm onu numberSending an alarm onu-portSending an alarm onu-port number"
     "Sending an alarm macSending an alarm mac stringSending an alarm stateSending an alarm state-id"
     "Sending an alarm messageSending an alarm message string\n",
     true},
    {gpon, "alarm_log_pon_threshold_enable_cmd", "alarm-log threshold " PON_ALARMS " enable WORD WORD",
     nullptr, false},
    {xgpon, "alarm_log_pon_threshold_enable_cmd", "alarm-log threshold " PON_ALARMS " enable WORD WORD",
     nullptr, false},
    {gpon, "alarm_log_pon_threshold_disable_cmd", "alarm-log threshold " PON_ALARMS " disable", nullptr,
     false},
    {xgpon, "alarm_log_pon_threshold_disable_cmd", "alarm-log threshold " PON_ALARMS " disable", nullptr,
     false},
    {gpon, "cli_pon_alarm_disable_cmd", "alarm pon optical " OPTICAL_ALARMS " disable", nullptr, true},
    {xgpon, "cli_pon_alarm_disable_cmd", "alarm pon optical " OPTICAL_ALARMS " disable", nullptr, true},
    {gpon, "cli_pon_alarm_enable_cmd", "alarm pon optical " OPTICAL_ALARMS " enable WORD WORD", nullptr,
     true},
    {xgpon, "cli_pon_alarm_enable_cmd", "alarm pon optical " OPTICAL_ALARMS " enable WORD WORD", nullptr,
     true},
    {gpon, "alarm_log_no_pon_threshold_enable_cmd", "no alarm-log threshold " PON_ALARMS " enable WORD WORD",
     nullptr, false},
    {xgpon, "alarm_log_no_pon_threshold_enable_cmd", "no alarm-log threshold " PON_ALARMS " enable WORD WORD",
     nullptr, false},
    {gpon, "alarm_log_pon_threshold_show_cmd", "show alarm-log threshold configuration [json]", nullptr,
     false},
    {xgpon, "alarm_log_pon_threshold_show_cmd", "show alarm-log threshold configuration [json]", nullptr,
     false},
    {diagnose, "show_debugging_cmd", "show debugging",
     "Show running system information\nState of each debugging option.\n", false},
    {diagnose, "pon_reset_cmd", "pon reset", "pon\nreset pon chip\n", false},
    {diagnose, "gpio_system_reset_cmd", "system gpio reset", "system\ngpio\nreset system\n", false},
    {config, "show_version_cmd", "show version [json]",
     "Show running system information\nshow version information\nJavaScript Object Notation\n", false},
    {diagnose, "fan_monitor_set_cmd", "[no] fan monitor",
     "Negate a command or set its defaults\nfan\nmonitor\n", false},
    {diagnose, "usb_monitor_set_cmd", "[no] usb monitor",
     "Negate a command or set its defaults\nusb\nmonitor\n", false},
    {diagnose, "power_monitor_set_cmd", "[no] power monitor",
     "Negate a command or set its defaults\npower\npower monitor\n", false},
    {diagnose, "transceiver_monitor_set_cmd", "[no] transceiver monitor",
     "Negate a command or set its defaults\ntransceiver\ntransceiver monitor\n", false},
    {diagnose, "show_diag_monitor_cmd", "show diag monitor",
     "Show running system information\ndiag\nmonitor information\n", false},
};

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
    ASSERT_EQ(commands.size(), expected_commands.size());
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const auto &[node, command] = commands[i];
        const Expected &expected = expected_commands[i];
        EXPECT_STREQ(command->name, expected.name) << i;
        EXPECT_EQ(node, expected.node) << expected.name;
        if (expected.words != nullptr) {
            EXPECT_STREQ(command->string, expected.words) << expected.name;
        }
        if (expected.help != nullptr) {
            EXPECT_STREQ(command->doc, expected.help) << expected.name;
        }
        EXPECT_EQ(command->attr == CMD_ATTR_HIDDEN, expected.hidden) << expected.name;
    }
}

// A help line for each word and each choice, or libfrr has none to show.
TEST_F(InstallOrder, every_word_has_its_help)
{
    for (const auto &[node, command] : commands) {
        if (std::string_view{command->name} == "alarm_log_debug_cmd")
            continue; // its lines run together
        const std::string_view words = command->string;
        const std::string_view help = command->doc;
        const auto separators = std::ranges::count_if(words, [](char c) { return c == ' ' || c == '|'; });
        EXPECT_EQ(std::ranges::count(help, '\n'), separators + 1) << command->name;
        EXPECT_TRUE(help.ends_with('\n')) << command->name;
        EXPECT_EQ(help.find("\n\n"), help.npos) << command->name;
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
