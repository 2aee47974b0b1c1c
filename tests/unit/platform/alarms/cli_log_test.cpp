// SPDX-License-Identifier: GPL-2.0-or-later
// What cli_log does with an alarm: settings, record, log line, and failures.
#include "platform/alarms/alarm.hpp"
#include "tests/unit/platform/alarms/chain_view.hpp"
#include "tests/unit/platform/database_getters_double.hpp"
#include "tests/unit/platform/log_target.hpp"
#include "tests/unit/platform/private_ipc.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <ctime>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

#include <zebra.h>

#include <frrcu.h>
#include <log.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Pair;

namespace {

constexpr std::uint16_t fan = 0;
constexpr std::uint16_t power1 = 77;

class CliLog : public testing::Test {
protected:
    void SetUp() override
    {
        clear_private_ipc();
        tq_alarm_log_shm_pointer = nullptr;
        database_double = {};
        ASSERT_EQ(tq_alarm_log_init(), 0);
        LogTarget::lines.clear(); // a store that replaces that of the test before is said
    }

    int log(std::uint16_t id, const char *message)
    {
        tq_alarm_req_t request{};
        request.alarm_id = id;
        return cli_log(&database, &request, "%s", message);
    }
    // The newest record.
    const tq_alarm_slot_t &newest()
    {
        const tq_alarm_store_t *store = tq_alarm_log_get_shm_pointer();
        static const tq_alarm_slot_t none{};
        return store->tail == TQ_ALARM_NONE ? none : store->slot[store->tail];
    }
    std::vector<std::string> seen() { return messages(*tq_alarm_log_get_shm_pointer(), TQ_ALARM_CAPACITY); }

    tq_database_t database{};
    LogTarget target;
};

} // namespace

TEST_F(CliLog, an_alarm_without_configuration_follows_the_catalogue)
{
    EXPECT_EQ(log(fan, "Open!"), 0);
    EXPECT_EQ(newest().alarm_id, fan);
    EXPECT_EQ(newest().level, 4);
    EXPECT_STREQ(newest().message, "Open!");
    EXPECT_THAT(LogTarget::lines, ElementsAre(std::pair(LOG_ERR, std::string("alarm fan (major): Open!"))));
}

TEST_F(CliLog, level_and_switches_come_from_the_database)
{
    database_double.level[fan] = "critical";
    database_double.record[fan] = true;
    database_double.print[fan] = false;
    EXPECT_EQ(log(fan, "a"), 0);
    EXPECT_EQ(newest().level, 5);
    EXPECT_THAT(LogTarget::lines, IsEmpty());

    database_double.record[fan] = false;
    database_double.print[fan] = true;
    EXPECT_EQ(log(fan, "b"), 0);
    EXPECT_THAT(seen(), ElementsAre("a"));
    ASSERT_EQ(LogTarget::lines.size(), 1u);
    EXPECT_EQ(LogTarget::lines[0].first, LOG_CRIT);
}

TEST_F(CliLog, a_database_that_fails_leaves_the_catalogues_settings)
{
    database_double.level[fan] = "debug";
    database_double.record[fan] = false;
    database_double.result = TQ_ERR_NO_DB;
    EXPECT_EQ(log(fan, "a"), 0);
    EXPECT_EQ(newest().level, 4);
    EXPECT_GT(database_double.calls, 0);
    EXPECT_THAT(seen(), ElementsAre("a"));
}

TEST_F(CliLog, an_unknown_level_text_leaves_the_catalogues_level)
{
    for (const char *text : {"", "all", "loud"}) {
        database_double.level[fan] = text;
        log(fan, "a");
        EXPECT_EQ(newest().level, 4) << text;
    }
}

TEST_F(CliLog, a_threshold_alarm_does_nothing_until_it_is_switched_on)
{
    EXPECT_EQ(log(102, "hot"), 0);
    EXPECT_THAT(seen(), IsEmpty());
    EXPECT_THAT(LogTarget::lines, IsEmpty());
    database_double.record[102] = true;
    EXPECT_EQ(log(102, "hot"), 0);
    EXPECT_THAT(seen(), ElementsAre("hot"));
}

TEST_F(CliLog, an_id_that_the_catalogue_does_not_have_is_recorded_and_printed_as_info)
{
    for (const std::uint16_t id : std::initializer_list<std::uint16_t>{106, 512, 65535}) {
        LogTarget::lines.clear();
        EXPECT_EQ(log(id, "by hand"), 0);
        EXPECT_EQ(newest().alarm_id, id);
        EXPECT_EQ(newest().level, 1);
        EXPECT_THAT(LogTarget::lines,
                    ElementsAre(std::pair(LOG_INFO, "alarm " + std::to_string(id) + " (info): by hand")));
    }
    EXPECT_EQ(database_double.calls, 0);
}

TEST_F(CliLog, levels_are_printed_at_rising_syslog_priority)
{
    const int priorities[] = {LOG_DEBUG, LOG_INFO, LOG_NOTICE, LOG_WARNING,
                              LOG_ERR,   LOG_CRIT, LOG_ALERT,  LOG_EMERG};
    for (int level = 0; level < 8; ++level) {
        LogTarget::lines.clear();
        database_double.level[power1] = tq_alarm_log_level[level];
        log(power1, "x");
        ASSERT_EQ(LogTarget::lines.size(), 1u);
        EXPECT_EQ(LogTarget::lines[0].first, priorities[level]);
    }
}

TEST_F(CliLog, the_time_is_local_with_month_from_one_and_full_year)
{
    setenv("TZ", "XYZ-05:30", 1);
    tzset();
    const time_t before = time(nullptr);
    log(fan, "x");
    const time_t after = time(nullptr);
    std::tm stored{};
    const tq_alarm_slot_t &record = newest();
    stored.tm_sec = record.sec;
    stored.tm_min = record.min;
    stored.tm_hour = record.hour;
    stored.tm_mday = record.mday;
    stored.tm_mon = record.mon - 1;
    stored.tm_year = record.year - 1900;
    const time_t filed = mktime(&stored);
    EXPECT_GE(filed, before);
    EXPECT_LE(filed, after);
    std::int64_t utc_offset_s;
    std::memcpy(&utc_offset_s, record.tm_rest + 16, sizeof utc_offset_s);
    EXPECT_EQ(utc_offset_s, 19800);
    unsetenv("TZ");
    tzset();
}

TEST_F(CliLog, a_record_keeps_127_characters_and_the_log_line_has_all)
{
    const std::string text(319, 'm');
    EXPECT_EQ(log(fan, text.c_str()), 0);
    EXPECT_EQ(std::string(newest().message), std::string(127, 'm'));
    ASSERT_EQ(LogTarget::lines.size(), 1u);
    EXPECT_EQ(LogTarget::lines[0].second, "alarm fan (major): " + text);
}

TEST_F(CliLog, text_of_any_length_is_cut_and_not_a_format)
{
    const std::string text(100000, 'x');
    EXPECT_EQ(log(fan, text.c_str()), 0);
    EXPECT_EQ(log(fan, "%s%n%d"), 0);
    EXPECT_STREQ(newest().message, "%s%n%d");
    EXPECT_EQ(LogTarget::lines.back().second, "alarm fan (major): %s%n%d");
}

TEST_F(CliLog, values_are_formatted)
{
    tq_alarm_req_t request{};
    EXPECT_EQ(cli_log(&database, &request, "%s 0/%u %.2f", "pon", 3u, 1.5), 0);
    EXPECT_STREQ(newest().message, "pon 0/3 1.50");
}

TEST_F(CliLog, an_empty_text_is_a_record_too)
{
    EXPECT_EQ(log(fan, ""), 0);
    EXPECT_THAT(seen(), ElementsAre(""));
}

TEST_F(CliLog, no_request_is_an_error_and_no_database_is_none)
{
    EXPECT_EQ(cli_log(&database, nullptr, "%s", "x"), TQ_ERR_INVALID);
    tq_alarm_req_t request{};
    EXPECT_EQ(cli_log(nullptr, &request, "%s", "x"), 0);
    EXPECT_THAT(seen(), ElementsAre("x"));
}

TEST_F(CliLog, a_store_that_cannot_be_used_is_said_once_and_the_alarm_still_printed)
{
    const auto alarm = Pair(LOG_ERR, "alarm fan (major): x");
    clear_private_ipc();
    close(open("/dev/shm/tq_alarm_log", O_CREAT | O_RDWR | O_CLOEXEC, 0666));
    EXPECT_EQ(log(fan, "x"), TQ_ERR_STORE);
    EXPECT_EQ(log(fan, "x"), TQ_ERR_STORE);
    EXPECT_THAT(
        LogTarget::lines,
        ElementsAre(Pair(LOG_WARNING, EndsWith("alarms do not get out to the alarm store: Protocol error")),
                    alarm, alarm));
    LogTarget::lines.clear();
    unlink("/dev/shm/tq_alarm_log");
    EXPECT_EQ(log(fan, "x"), TQ_OK);
    EXPECT_THAT(LogTarget::lines,
                ElementsAre(Pair(LOG_WARNING, EndsWith("the alarm store was replaced: attached the new one")),
                            Pair(LOG_NOTICE, EndsWith("alarms get out to the alarm store again")), alarm));
}

TEST_F(CliLog, a_store_that_was_replaced_is_said_once)
{
    ASSERT_EQ(unlink("/dev/shm/tq_alarm_log"), 0);
    EXPECT_EQ(log(fan, "x"), TQ_OK);
    EXPECT_EQ(log(fan, "y"), TQ_OK);
    EXPECT_THAT(LogTarget::lines,
                ElementsAre(Pair(LOG_WARNING, EndsWith("the alarm store was replaced: attached the new one")),
                            Pair(testing::_, "alarm fan (major): x"),
                            Pair(testing::_, "alarm fan (major): y")));
    EXPECT_THAT(seen(), ElementsAre("x", "y"));
}

TEST_F(CliLog, a_thread_that_libfrr_knows_may_raise_alarms_too)
{
    struct rcu_thread *known = rcu_thread_prepare();
    int result = -1;
    std::thread([&] {
        rcu_thread_start(known);
        rcu_read_unlock(); // a new thread begins inside
        result = log(fan, "from a thread");
        rcu_read_lock();
    }).join();
    EXPECT_EQ(result, 0);
    EXPECT_THAT(seen(), ElementsAre("from a thread"));
    EXPECT_EQ(LogTarget::lines.size(), 1u);
}

TEST_F(CliLog, flash_level_is_the_stored_keyword_eight_when_unset_and_minus_one_on_failure)
{
    EXPECT_EQ(get_flash_level_from_database(&database), 8);
    database_double.flash_level = "critical";
    EXPECT_EQ(get_flash_level_from_database(&database), 5);
    database_double.flash_level = "debug";
    EXPECT_EQ(get_flash_level_from_database(&database), 0);
    database_double.result = TQ_ERR_NO_DB;
    EXPECT_EQ(get_flash_level_from_database(&database), -1);
    EXPECT_EQ(get_flash_level_from_database(nullptr), -1);
}
