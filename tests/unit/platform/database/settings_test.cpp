// SPDX-License-Identifier: GPL-2.0-or-later
// Every setting goes through the database and back.
#include "tests/unit/platform/database/sandbox.hpp"

using namespace sandbox;

namespace {

using Setter = int (*)(tq_database_t *, const void *, int, int);
using Getter = int (*)(tq_database_t *, void *, int *);
using Deleter = int (*)(tq_database_t *);
using AlarmSetter = int (*)(uint16_t, tq_database_t *, const void *, int, int);
using AlarmGetter = int (*)(uint16_t, tq_database_t *, void *, int *);

struct Switch {
    Setter set;
    Getter get;
};
struct Text {
    Setter set;
    Getter get;
    const char *value;
    int width;
};
struct Port {
    Setter set;
    Getter get;
    Deleter remove;
};
struct Action {
    AlarmSetter set;
    AlarmGetter get;
};

constexpr Switch switches[] = {
    {db_olt_alarm_log_set_remote_server_ipv4_enable, db_olt_alarm_log_get_remote_server_ipv4_enable},
    {db_olt_alarm_log_set_remote_server_ipv6_enable, db_olt_alarm_log_get_remote_server_ipv6_enable},
};
constexpr Text texts[] = {
    {db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr, db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr,
     "255.255.255.255", 16},
    {db_olt_alarm_log_set_remote_server_ipv6_ipv6_addr, db_olt_alarm_log_get_remote_server_ipv6_ipv6_addr,
     "2001:DB8:0::1", 64},
    {db_olt_alarm_log_set_alarm_log_flash_level, db_olt_alarm_log_get_alarm_log_flash_level, "critical", 16},
    {db_olt_alarm_log_set_temp_high_alarm_threshold, db_olt_alarm_log_get_temp_high_alarm_threshold, "+70.50",
     32},
    {db_olt_alarm_log_set_temp_high_clear_threshold, db_olt_alarm_log_get_temp_high_clear_threshold, "-5",
     32},
};
constexpr Port ports[] = {
    {db_olt_alarm_log_set_remote_server_ipv4_port, db_olt_alarm_log_get_remote_server_ipv4_port,
     db_olt_alarm_log_del_remote_server_ipv4_port},
    {db_olt_alarm_log_set_remote_server_ipv6_port, db_olt_alarm_log_get_remote_server_ipv6_port,
     db_olt_alarm_log_del_remote_server_ipv6_port},
};
constexpr Action actions[] = {
    {db_olt_alarm_log_set_action_print, db_olt_alarm_log_get_action_print},
    {db_olt_alarm_log_set_action_record, db_olt_alarm_log_get_action_record},
    {db_olt_alarm_log_set_action_trap, db_olt_alarm_log_get_action_trap},
    {db_olt_alarm_log_set_action_remote, db_olt_alarm_log_get_action_remote},
};
struct Threshold {
    const char *alarm, *leaf;
    Getter get;
    Deleter remove;
};
constexpr Threshold thresholds[] = {
    {"temp-high", "alarm-threshold", db_olt_alarm_log_get_temp_high_alarm_threshold,
     db_olt_alarm_log_del_temp_high_alarm_threshold},
    {"temp-high", "clear-threshold", db_olt_alarm_log_get_temp_high_clear_threshold,
     db_olt_alarm_log_del_temp_high_clear_threshold},
    {"temp-low", "alarm-threshold", db_olt_alarm_log_get_temp_low_alarm_threshold,
     db_olt_alarm_log_del_temp_low_alarm_threshold},
    {"temp-low", "clear-threshold", db_olt_alarm_log_get_temp_low_clear_threshold,
     db_olt_alarm_log_del_temp_low_clear_threshold},
    {"cpu-usage-high", "alarm-threshold", db_olt_alarm_log_get_cpu_usage_high_alarm_threshold,
     db_olt_alarm_log_del_cpu_usage_high_alarm_threshold},
    {"cpu-usage-high", "clear-threshold", db_olt_alarm_log_get_cpu_usage_high_clear_threshold,
     db_olt_alarm_log_del_cpu_usage_high_clear_threshold},
    {"mem-usage-high", "alarm-threshold", db_olt_alarm_log_get_mem_usage_high_alarm_threshold,
     db_olt_alarm_log_del_mem_usage_high_alarm_threshold},
    {"mem-usage-high", "clear-threshold", db_olt_alarm_log_get_mem_usage_high_clear_threshold,
     db_olt_alarm_log_del_mem_usage_high_clear_threshold},
};

using Settings = DatabaseTest;

} // namespace

TEST_F(Settings, switches_read_back_whatever_size_they_are_given_with)
{
    for (const Switch &setting : switches)
        for (const int width : {1, 16, -1})
            for (const uint8_t value : {uint8_t{1}, uint8_t{0}}) {
                ASSERT_EQ(setting.set(&db, &value, width, 1), 0);
                uint8_t read = 9;
                int len = 1;
                ASSERT_EQ(setting.get(&db, &read, &len), 0);
                EXPECT_EQ(read, value);
            }
}

TEST_F(Settings, texts_read_back_exactly_as_they_were_written)
{
    for (const Text &setting : texts) {
        ASSERT_EQ(setting.set(&db, setting.value, setting.width, 1), 0) << setting.value;
        EXPECT_EQ(text(setting.get), setting.value);
    }
}

TEST_F(Settings, ports_read_back_and_can_be_deleted)
{
    for (const Port &setting : ports)
        for (const uint16_t value : {uint16_t{1}, uint16_t{514}, uint16_t{65535}}) {
            ASSERT_EQ(setting.set(&db, &value, 2, 1), 0);
            uint16_t read = 0;
            int len = sizeof read;
            ASSERT_EQ(setting.get(&db, &read, &len), 0);
            EXPECT_EQ(read, value);
            ASSERT_EQ(setting.remove(&db), 0);
            EXPECT_NE(setting.get(&db, &read, &len), 0);
        }
}

TEST_F(Settings, the_actions_of_an_alarm_are_four_switches_of_their_own)
{
    for (const uint16_t id : {uint16_t{0}, uint16_t{105}})
        for (unsigned bits = 0; bits < 16; ++bits) {
            for (unsigned i = 0; i < 4; ++i) {
                const uint8_t value = (bits >> i & 1) != 0;
                ASSERT_EQ(actions[i].set(id, &db, &value, -1, 1), 0);
            }
            for (unsigned i = 0; i < 4; ++i) {
                uint8_t read = 9;
                int len = 1;
                ASSERT_EQ(actions[i].get(id, &db, &read, &len), 0);
                EXPECT_EQ(read, bits >> i & 1);
            }
        }
}

TEST_F(Settings, levels_are_the_eight_keywords)
{
    for (const char *keyword :
         {"debug", "info", "notice", "warning", "major", "critical", "alert", "emerg"}) {
        ASSERT_EQ(db_olt_alarm_log_set_alarm_level(31, &db, keyword, 8, 1), 0);
        EXPECT_EQ(level(31), keyword);
    }
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(31, &db, "loud", 16, 1), TQ_ERR_INVALID);
    EXPECT_EQ(level(31), "emerg");
}

TEST_F(Settings, catalogue_texts_show_in_the_xml)
{
    ASSERT_EQ(db_olt_alarm_log_set_alarm_name(4, &db, "port-updown", 32, 0), 0);
    ASSERT_EQ(db_olt_alarm_log_set_alarm_desc(4, &db, "port up & down", 32, 0), 0);
    ASSERT_EQ(db_olt_alarm_log_set_alarm_type(4, &db, "communication", 16, 0), 0);
    ASSERT_EQ(db_olt_alarm_log_set_alarm_class(4, &db, "alarm", 8, 1), 0);
    EXPECT_EQ(xml(db_olt_alarm_log_show_xml_alarm_id),
              "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\">\n"
              "  <alarm>\n"
              "    <id>4</id>\n"
              "    <name>port-updown</name>\n"
              "    <desc>port up &amp; down</desc>\n"
              "    <type>communication</type>\n"
              "    <class>alarm</class>\n"
              "  </alarm>\n"
              "</alarm-log>\n");
}

TEST_F(Settings, thresholds_are_those_that_another_program_stored)
{
    for (const Threshold &threshold : thresholds) {
        const std::string tag = threshold.alarm, leaf = threshold.leaf;
        EXPECT_EQ(text(threshold.get), "") << tag;
        ASSERT_EQ(
            edit("<threshold><" + tag + "><" + leaf + ">70.50</" + leaf + "></" + tag + "></threshold>"), 0);
        EXPECT_TRUE(wait_until([&] { return text(threshold.get) == "70.50"; })) << tag << ' ' << leaf;
        ASSERT_EQ(threshold.remove(&db), 0);
        EXPECT_EQ(text(threshold.get), "70.50") << "removed before it was applied";
        ASSERT_EQ(db_apply_changes(db.conn), 0);
        EXPECT_EQ(text(threshold.get), "");
        EXPECT_EQ(threshold.remove(&db), 0) << "nothing to remove is no failure";
        ASSERT_EQ(db_discard_changes(db.conn), 0);
    }
}

TEST_F(Settings, an_empty_threshold_or_flash_level_unsets_it)
{
    ASSERT_EQ(db_olt_alarm_log_set_temp_high_alarm_threshold(&db, "70", 32, 1), 0);
    ASSERT_EQ(db_olt_alarm_log_set_temp_high_alarm_threshold(&db, "", 32, 1), 0);
    EXPECT_EQ(text(db_olt_alarm_log_get_temp_high_alarm_threshold), "");
    EXPECT_EQ(xml(db_olt_alarm_log_show_xml_threshold),
              "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\"/>\n");
    ASSERT_EQ(db_olt_alarm_log_set_alarm_log_flash_level(&db, "major", 16, 1), 0);
    ASSERT_EQ(db_olt_alarm_log_set_alarm_log_flash_level(&db, "", 16, 1), 0);
    EXPECT_EQ(text(db_olt_alarm_log_get_alarm_log_flash_level), "");
}

TEST_F(Settings, what_was_never_set_fails_or_reads_empty)
{
    uint8_t flag = 9;
    uint16_t port = 9;
    int len = 2;
    EXPECT_EQ(text(db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr), "code -2");
    EXPECT_EQ(text(db_olt_alarm_log_get_remote_server_ipv6_ipv6_addr), "code -2");
    EXPECT_EQ(db_olt_alarm_log_get_remote_server_ipv4_port(&db, &port, &len), TQ_ERR_NOT_FOUND);
    EXPECT_EQ(db_olt_alarm_log_get_action_print(9, &db, &flag, &len), TQ_ERR_NOT_FOUND);
    EXPECT_EQ(level(9), "code -2");
    EXPECT_EQ(text(db_olt_alarm_log_get_alarm_log_flash_level), "");
    EXPECT_EQ(text(db_olt_alarm_log_get_cpu_usage_high_alarm_threshold), "");
    EXPECT_EQ(db_olt_alarm_log_del_remote_server_ipv4_ipv4_addr(&db), TQ_ERR_NOT_FOUND);
}

TEST_F(Settings, there_is_no_alarm_106)
{
    uint8_t flag = 1;
    int len = 1;
    EXPECT_EQ(db_olt_alarm_log_set_action_print(106, &db, &flag, 1, 1), TQ_ERR_NOT_FOUND);
    EXPECT_EQ(db_olt_alarm_log_get_action_print(106, &db, &flag, &len), TQ_ERR_NOT_FOUND);
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(65535, &db, "major", 16, 1), TQ_ERR_NOT_FOUND);
}

TEST_F(Settings, an_address_of_the_other_family_is_refused)
{
    EXPECT_EQ(db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr(&db, "::1", 16, 1), TQ_ERR_INVALID);
    EXPECT_EQ(db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr(&db, "10.0.0.256", 16, 1), TQ_ERR_INVALID);
    EXPECT_EQ(db_olt_alarm_log_set_remote_server_ipv6_ipv6_addr(&db, "10.0.0.1", 64, 1), TQ_ERR_INVALID);
    EXPECT_EQ(db_olt_alarm_log_set_remote_server_ipv6_ipv6_addr(&db, "1::2::3", 64, 1), TQ_ERR_INVALID);
    for (const char *good : {"::", "::1", "fe80::1", "1:2:3:4:5:6:7:8", "::ffff:10.0.0.1", "2001:db8::"})
        EXPECT_EQ(db_olt_alarm_log_set_remote_server_ipv6_ipv6_addr(&db, good, 64, 1), 0) << good;
}

TEST_F(Settings, null_pointers_are_bad_arguments)
{
    int len = 16;
    char buffer[16];
    EXPECT_EQ(db_olt_alarm_log_set_alarm_log_flash_level(&db, nullptr, 16, 1), TQ_ERR_INVALID);
    EXPECT_EQ(db_olt_alarm_log_get_alarm_log_flash_level(&db, nullptr, &len), TQ_ERR_INVALID);
    EXPECT_EQ(db_olt_alarm_log_get_alarm_log_flash_level(&db, buffer, nullptr), TQ_ERR_INVALID);
    EXPECT_EQ(db_olt_alarm_log_show_xml_threshold(&db, nullptr), TQ_ERR_INVALID);
    EXPECT_EQ(db_olt_alarm_log_get_alarm_log_flash_level(nullptr, buffer, &len), TQ_ERR_NO_DB);
    EXPECT_EQ(db_database_init(&db, nullptr), TQ_ERR_INVALID);
}

TEST_F(Settings, the_jump_of_the_clock_is_stored_for_the_time_service)
{
    const int32_t seconds = -3600;
    ASSERT_EQ(db_olt_ntp_set_ntp_diff_time(&db, &seconds, 4, 1), 0);
    const std::string file = folder() + "/ntp.xml";
    ASSERT_EQ(sysrepocfg({"--export=" + file, "--module=olt-ntp", "--format=xml"}), 0);
    Program show({"cat", file});
    std::string all, line;
    while (!(line = show.line()).empty())
        all += line;
    EXPECT_NE(all.find("<ntp-diff-time>-3600</ntp-diff-time>"), all.npos) << all;
}

TEST_F(Settings, port_and_base_records_come_from_the_board)
{
    tq_port_info_t ports_of_board{};
    tq_base_info_t base{};
    EXPECT_EQ(database_dev_get_port_info(&db, &ports_of_board), 0);
    EXPECT_EQ(database_dev_get_base_info(&db, &base), 0);
    EXPECT_STRNE(base.device_model, "");
    EXPECT_EQ(database_dev_get_port_info(&db, nullptr), TQ_ERR_INVALID);
}
