// SPDX-License-Identifier: GPL-2.0-or-later
// Catalogue, level names and error texts as other programs of the box know them.
#include "tq_api.h"
#include "tq_errno.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <span>
#include <string>

namespace {

constexpr std::size_t name_offset = 2;
constexpr std::size_t description_offset = 34;

const tq_alarm_info_t &info(int id)
{
    return tq_alarm_log_info[id];
}

// The alarms that every OLT has; what came later is not what other programs were built with.
constexpr int first_count = 106;
std::span<const tq_alarm_info_t> first_catalogue()
{
    return std::span{tq_alarm_log_info}.first<first_count>();
}

} // namespace

TEST(AlarmCatalogue, an_entry_is_88_bytes_with_its_texts_and_indexes_where_others_read_them)
{
    static_assert(sizeof(tq_alarm_info_t) == 88);
    const char *bytes = reinterpret_cast<const char *>(&tq_alarm_log_info[77]);
    std::uint16_t id;
    std::uint32_t type;
    std::uint32_t class_index;
    std::memcpy(&id, bytes, 2);
    std::memcpy(&type, bytes + 72, 4);
    std::memcpy(&class_index, bytes + 80, 4);
    EXPECT_EQ(id, 77);
    EXPECT_STREQ(bytes + name_offset, "power1-updown");
    EXPECT_STREQ(bytes + description_offset, info(77).description);
    EXPECT_STREQ(tq_alarm_log_type[type], "equipment");
    EXPECT_STREQ(tq_alarm_log_class[class_index], "alarm");
}

TEST(AlarmCatalogue, every_place_holds_its_own_id_a_name_and_a_terminated_description)
{
    for (int id = 0; id < TQ_ALARM_COUNT; ++id) {
        EXPECT_EQ(info(id).id, id);
        EXPECT_GT(strnlen(info(id).name, 32), 0u) << id;
        EXPECT_LT(strnlen(info(id).name, 32), 32u) << id;
        EXPECT_GT(strnlen(info(id).description, 32), 0u) << id;
        EXPECT_LT(strnlen(info(id).description, 32), 32u) << id;
        EXPECT_LT(info(id).type, 4u);
        EXPECT_LT(info(id).class_, 2u);
        EXPECT_LT(info(id).group, 4u);
    }
}

TEST(AlarmCatalogue, ids_that_the_daemon_uses_by_number_have_their_names)
{
    const std::map<int, std::string> names = {
        {0, "fan"},
        {1, "download-file-failed"},
        {9, "pon-txpower-high"},
        {10, "pon-txpower-low"},
        {11, "pon-txbias-high"},
        {12, "pon-txbias-low"},
        {13, "pon-vcc-high"},
        {14, "pon-vcc-low"},
        {15, "pon-temp-high"},
        {16, "pon-temp-low"},
        {29, "reset"},
        {31, "config-erase"},
        {32, "download-file-success"},
        {77, "power1-updown"},
        {78, "power2-updown"},
        {96, "device-temperature-high"},
        {102, "temp-high"},
        {103, "temp-low"},
        {104, "cpu-usage-high"},
        {105, "mem-usage-high"},
    };
    for (const auto &[id, name] : names)
        EXPECT_EQ(info(id).name, name);
}

TEST(AlarmCatalogue, ids_have_the_names_of_their_alarms)
{
    const std::map<tq_alarm_id, int> ids = {
        {TQ_ALARM_FAN, 0},
        {TQ_ALARM_DOWNLOAD_FILE_FAILED, 1},
        {TQ_ALARM_RESET, 29},
        {TQ_ALARM_CONFIG_SAVE, 30},
        {TQ_ALARM_CONFIG_ERASE, 31},
        {TQ_ALARM_DOWNLOAD_FILE_SUCCESS, 32},
        {TQ_ALARM_POWER1_UPDOWN, 77},
        {TQ_ALARM_POWER2_UPDOWN, 78},
        {TQ_ALARM_ONU_OFFLINE_TIMEOUT, 79},
        {TQ_ALARM_DEVICE_TEMPERATURE_HIGH, 96},
        {TQ_ALARM_ONU_OFFLINE_TIMEOUT_EVENT, 101},
        {TQ_ALARM_TEMP_HIGH, 102},
        {TQ_ALARM_MEM_USAGE_HIGH, 105},
    };
    for (const auto &[alarm, id] : ids)
        EXPECT_EQ(alarm, id);
}

TEST(AlarmCatalogue, each_group_has_as_many_alarms_and_events_as_its_commands_have_keywords)
{
    std::map<std::pair<std::uint32_t, std::uint32_t>, int> count;
    for (const tq_alarm_info_t &entry : first_catalogue())
        ++count[{entry.class_, entry.group}];
    EXPECT_EQ((count[{0, 0}]), 19); // alarms: global, onu, pon, route
    EXPECT_EQ((count[{0, 1}]), 39);
    EXPECT_EQ((count[{0, 2}]), 14);
    EXPECT_EQ((count[{0, 3}]), 2);
    EXPECT_EQ((count[{1, 0}]), 16); // events
    EXPECT_EQ((count[{1, 1}]), 8);
    EXPECT_EQ((count[{1, 2}]), 4);
    EXPECT_EQ((count[{1, 3}]), 4);
}

TEST(AlarmCatalogue, alarms_are_major_and_events_are_info)
{
    for (const tq_alarm_info_t &entry : tq_alarm_log_info)
        EXPECT_STREQ(tq_alarm_log_level[entry.default_level], entry.class_ == 0 ? "major" : "info")
            << entry.name;
}

TEST(AlarmCatalogue, all_print_and_record_but_two_and_the_threshold_alarms)
{
    for (int id = 0; id < first_count; ++id) {
        const std::uint32_t expected = id == 5 ? 1u : id == 30 ? 14u : id >= 102 ? 0u : 3u;
        EXPECT_EQ(info(id).default_actions, expected) << id;
    }
}

TEST(AlarmNames, every_name_gives_its_id_and_a_name_that_stands_twice_the_lower_one)
{
    std::set<std::string> seen;
    for (int id = 0; id < TQ_ALARM_COUNT; ++id) {
        const std::string name = info(id).name;
        EXPECT_EQ(get_alarm_id_by_name(name.c_str()), seen.insert(name).second ? id : 79) << name;
    }
    EXPECT_STREQ(info(101).name, "onu-offline-timeout");
}

TEST(AlarmNames, a_name_that_is_in_no_entry_gives_minus_one)
{
    for (const char *name :
         {"", "fa", "fanx", "Fan", "a-name-that-is-longer-than-the-thirty-two-bytes-of-an-entry"})
        EXPECT_EQ(get_alarm_id_by_name(name), -1) << name;
    EXPECT_EQ(get_alarm_id_by_name(nullptr), -1);
}

TEST(AlarmLevels, numbers_rise_with_severity)
{
    int number = 0;
    for (const char *name : {"debug", "info", "notice", "warning", "major", "critical", "alert", "emerg"}) {
        EXPECT_STREQ(tq_alarm_log_level[number], name);
        EXPECT_EQ(get_level_num_by_string(name), number++);
    }
}

TEST(AlarmLevels, any_other_text_means_all)
{
    for (const char *text : {"all", "", "crit", "INFO", "emergency"})
        EXPECT_EQ(get_level_num_by_string(text), 8) << text;
    EXPECT_EQ(get_level_num_by_string(nullptr), 8);
}

TEST(ErrorTexts, every_code_of_the_platform_has_a_text_of_its_own)
{
    std::set<std::string> texts;
    for (int code = TQ_ERR_PEER; code <= TQ_OK; ++code) {
        const std::string text = tq_strerror(code);
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(text.find("Unknown"), std::string::npos) << code;
        EXPECT_TRUE(texts.insert(text).second) << text;
    }
}

TEST(ErrorTexts, positive_codes_are_errno_values)
{
    EXPECT_STREQ(tq_strerror(EIO), "Input/output error");
    EXPECT_STREQ(tq_strerror(EPROTO), "Protocol error");
}

TEST(ErrorTexts, an_unknown_code_is_named_by_its_number)
{
    for (int code : {-12, -1000, 100000, INT32_MIN, INT32_MAX})
        EXPECT_EQ(tq_strerror(code), "Unknown error " + std::to_string(code));
}
