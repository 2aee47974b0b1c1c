// SPDX-License-Identifier: GPL-2.0-or-later
// Filing the board's alarm records, and the end of it.
#include "diagd/core/alarm_record.hpp"

#include "diagd/core/state.hpp"

#include "tq_api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdarg>
#include <future>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using diagd::AlarmState;
using testing::ElementsAre;

namespace {

std::vector<std::string> filed;
std::promise<void> *begun;  // told when a record is in the making
std::future<void> *may_end; // what that record waits for

} // namespace

extern "C" {
int alarm_log_sem_id = -1;
int cli_log(tq_database_t *db, tq_alarm_req_t *request, const char *format, ...)
{
    EXPECT_EQ(db, &g_diagd_db);
    EXPECT_STREQ(format, "%s");
    va_list values;
    va_start(values, format);
    const std::string text = va_arg(values, const char *);
    va_end(values);
    if (begun != nullptr) {
        begun->set_value();
        may_end->wait();
    }
    filed.push_back(std::to_string(request->alarm_id) + " " + std::to_string(request->state) + " " + text);
    return -1; // the library's to report
}
}

// Filing stops once in the life of a process: each test has one of its own.
class AlarmRecordDeathTest : public testing::Test {
protected:
    template <typename Body>
    static void in_a_process(Body body)
    {
        EXPECT_EXIT(
            {
                body();
                std::exit(HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "");
    }
};

TEST_F(AlarmRecordDeathTest, a_record_goes_to_the_alarm_library_as_it_is)
{
    in_a_process([] {
        diagd::file_alarm(TQ_ALARM_POWER1_UPDOWN, AlarmState::event, "Power1 %s Up");
        diagd::file_alarm(TQ_ALARM_FAN, AlarmState::off, "");
        diagd::file_alarm(TQ_ALARM_FAN, AlarmState::on, "Open!");
        EXPECT_THAT(filed, ElementsAre("77 2 Power1 %s Up", "0 0 ", "0 1 Open!"));
    });
}

TEST_F(AlarmRecordDeathTest, after_the_end_of_filing_records_are_dropped)
{
    in_a_process([] {
        EXPECT_TRUE(diagd::stop_filing_alarms(1min)) << "there is nothing to wait for";
        diagd::file_alarm(TQ_ALARM_POWER1_UPDOWN, AlarmState::event, "late");
        EXPECT_THAT(filed, testing::IsEmpty());
    });
}

TEST_F(AlarmRecordDeathTest, the_end_of_filing_waits_for_the_record_in_the_making)
{
    in_a_process([] {
        std::promise<void> beginning, end;
        std::future<void> ending = end.get_future();
        begun = &beginning;
        may_end = &ending;
        std::thread monitor{[] { diagd::file_alarm(TQ_ALARM_POWER1_UPDOWN, AlarmState::event, "in time"); }};
        beginning.get_future().wait();
        EXPECT_FALSE(diagd::stop_filing_alarms(1ms)) << "it is still being filed";
        end.set_value();
        EXPECT_TRUE(diagd::stop_filing_alarms(1min));
        EXPECT_THAT(filed, ElementsAre("77 2 in time"));
        monitor.join();
    });
}

namespace {

// Whether a process that keeps the store until it ends had it, and how the semaphore stands after that.
int value_after_keeping(int initial, std::chrono::milliseconds limit, int &kept)
{
    alarm_log_sem_id = semget(IPC_PRIVATE, 1, 0600);
    semctl(alarm_log_sem_id, 0, SETVAL, initial);
    const pid_t child = fork();
    if (child == 0) {
        diagd::keep_alarm_store(limit);
        _exit(semctl(alarm_log_sem_id, 0, GETVAL));
    }
    int status = 0;
    waitpid(child, &status, 0);
    kept = WEXITSTATUS(status) == 0 && initial > 0;
    const int value = semctl(alarm_log_sem_id, 0, GETVAL);
    semctl(alarm_log_sem_id, 0, IPC_RMID);
    return value;
}

} // namespace

TEST(AlarmStore, is_kept_from_others_until_the_process_ends_and_free_after_that)
{
    int kept = 0;
    EXPECT_EQ(value_after_keeping(1, 1min, kept), 1);
    EXPECT_TRUE(kept);
}

TEST(AlarmStore, that_stays_somebody_elses_is_let_be)
{
    int kept = 0;
    EXPECT_EQ(value_after_keeping(0, 10ms, kept), 0);
    EXPECT_FALSE(kept);
}
