// SPDX-License-Identifier: GPL-2.0-or-later
// What libtqapi's calls look like in the trace, and how they fail when the fault table says so.
#include "tests/unit/platform/private_ipc.hpp"
#include "tests/unit/platform/trace/trace_files.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/sem.h>
#include <vector>

using testing::ElementsAre;
using trace_files::write_faults;

namespace {

class ApiTrace : public testing::Test {
protected:
    void SetUp() override
    {
        clear_private_ipc();
        write_faults("");
        tq_alarm_log_init();
        events();
    }
    // What was traced since the last look, without numbers and times.
    std::vector<std::string> events()
    {
        std::vector<std::string> found;
        const auto lines = trace_files::lines();
        for (; seen_ < lines.size(); ++seen_)
            found.push_back(trace_files::event(lines[seen_]));
        return found;
    }

private:
    static inline std::size_t seen_ = 0;
};

} // namespace

TEST_F(ApiTrace, semaphores_are_called_by_what_they_guard)
{
    int id = -1;
    semaphore_create(&id, 0x102410, 1);
    semaphore_p(id);
    semaphore_p(alarm_log_sem_id);
    semaphore_v(alarm_log_sem_id);
    semaphore_v(id);
    EXPECT_THAT(events(), ElementsAre("main semaphore_create key=0x00102410 count=1 -> 0",
                                      "main semaphore_p id=board -> 0", "main semaphore_p id=alarm -> 0",
                                      "main semaphore_v id=alarm -> 0", "main semaphore_v id=board -> 0"));
}

TEST_F(ApiTrace, an_alarm_is_one_line_with_its_whole_request)
{
    tq_alarm_req_t request{};
    request.alarm_id = 30;
    request.state = 2;
    cli_log(nullptr, &request, "%s", "saved by command");
    EXPECT_THAT(events(), ElementsAre("main cli_log id=30 rec=1e00" + std::string(52, '0') +
                                      "02000000 text=\"saved by command\" -> 0"));
}

TEST_F(ApiTrace, a_store_that_is_to_fail_gives_null_and_errno)
{
    write_faults("tq_alarm_log_get_shm_pointer ret=0 errno=13\n");
    errno = 0;
    EXPECT_EQ(tq_alarm_log_get_shm_pointer(), nullptr);
    EXPECT_EQ(errno, EACCES);
    write_faults("");
    EXPECT_NE(tq_alarm_log_get_shm_pointer(), nullptr);
}

TEST_F(ApiTrace, a_semaphore_that_is_to_fail_is_not_taken)
{
    int id = -1;
    semaphore_create(&id, 0x102410, 1);
    write_faults("semaphore_p nth=2 ret=-1 errno=43\n");
    EXPECT_EQ(semaphore_p(id), 0);
    EXPECT_EQ(semaphore_v(id), 0);
    EXPECT_EQ(semaphore_p(id), -1);
    EXPECT_EQ(errno, EIDRM);
    EXPECT_EQ(semctl(id, 0, GETVAL), 1);
    EXPECT_EQ(semaphore_p(id), 0);
    EXPECT_EQ(semaphore_v(id), 0);
}

TEST_F(ApiTrace, an_alarm_name_can_be_given_any_id)
{
    write_faults("get_alarm_id_by_name ret=300\n");
    EXPECT_EQ(get_alarm_id_by_name("fan"), 300);
}
