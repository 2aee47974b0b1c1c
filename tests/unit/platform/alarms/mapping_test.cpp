// SPDX-License-Identifier: GPL-2.0-or-later
// The shared alarm store between processes: making, attaching, replacing, refusing, and writers that are
// killed.
#include "tests/unit/platform/alarms/chain_view.hpp"
#include "tests/unit/platform/private_ipc.hpp"
#include "tests/unit/process.hpp"
#include "tq_api.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char store_file[] = "/dev/shm/tq_alarm_log";
constexpr std::size_t store_size = tq::AlarmChain::size(TQ_ALARM_CAPACITY);

int file(const std::string &message, std::uint16_t id = 29)
{
    tq_alarm_req_t request{};
    request.alarm_id = id;
    return cli_log(nullptr, &request, "%s", message.c_str());
}

// The store as a command sees it: semaphore, pointer.
template <class F>
auto with_store(F &&look)
{
    semaphore_p(alarm_log_sem_id);
    if (!tq_alarm_log_shm_pointer)
        tq_alarm_log_shm_pointer = tq_alarm_log_get_shm_pointer();
    auto result = look(tq_alarm_log_shm_pointer);
    semaphore_v(alarm_log_sem_id);
    return result;
}

std::vector<std::string> seen()
{
    return with_store([](const tq_alarm_store_t *store) {
        EXPECT_NE(store, nullptr);
        return store ? messages(*store, TQ_ALARM_CAPACITY) : std::vector<std::string>{};
    });
}

std::string store_disorder()
{
    return with_store([](const tq_alarm_store_t *store) {
        return store ? disorder(*store, TQ_ALARM_CAPACITY) : "no store";
    });
}

std::uint64_t filed()
{
    return with_store(
        [](tq_alarm_store_t *store) { return tq::AlarmChain(store, TQ_ALARM_CAPACITY).filed(); });
}

void put_file(std::size_t size)
{
    const int fd = open(store_file, O_RDWR | O_CREAT | O_TRUNC, 0666);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0);
    close(fd);
}

class AlarmStore : public testing::Test {
protected:
    void SetUp() override
    {
        clear_private_ipc();
        tq_alarm_log_shm_pointer = nullptr;
    }
};

} // namespace

TEST_F(AlarmStore, is_made_at_the_first_start)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    struct stat status {};
    ASSERT_EQ(stat(store_file, &status), 0);
    EXPECT_GE(status.st_size, 16 + 4096 * 200);
    EXPECT_EQ(tq_alarm_log_shm_pointer, nullptr) << "the pointer is the program's to fetch";
    EXPECT_THAT(seen(), IsEmpty());
}

TEST_F(AlarmStore, keeps_its_records_over_a_restart)
{
    Process first([] { return tq_alarm_log_init() == 0 && file("before") == 0; });
    ASSERT_EQ(first.wait(), 0);
    ASSERT_EQ(tq_alarm_log_init(), 0);
    EXPECT_THAT(seen(), ElementsAre("before"));
}

TEST_F(AlarmStore, is_one_store_when_many_processes_start_at_once)
{
    std::vector<Process> processes;
    for (int i = 0; i < 8; ++i)
        processes.emplace_back([] { return tq_alarm_log_init() == 0 && file("x") == 0; });
    for (auto &process : processes)
        EXPECT_EQ(process.wait(), 0);
    ASSERT_EQ(tq_alarm_log_init(), 0);
    EXPECT_EQ(seen().size(), 8u);
    EXPECT_EQ(store_disorder(), "");
}

TEST_F(AlarmStore, loses_no_record_of_processes_and_threads_that_write_together)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    std::vector<Process> processes;
    for (int p = 0; p < 4; ++p)
        processes.emplace_back([] {
            for (int i = 0; i < 2000; ++i)
                if (file("record") != 0)
                    return false;
            return true;
        });
    for (auto &process : processes)
        EXPECT_EQ(process.wait(), 0);
    EXPECT_EQ(filed(), 8000u);
    EXPECT_EQ(seen().size(), std::size_t{TQ_ALARM_CAPACITY});
    EXPECT_EQ(store_disorder(), "");
}

TEST_F(AlarmStore, of_another_size_is_refused_and_left_alone)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{100}, store_size - 1, store_size + 1}) {
        clear_private_ipc();
        put_file(size);
        EXPECT_LT(tq_alarm_log_init(), 0);
        EXPECT_EQ(errno, EPROTO);
        EXPECT_TRUE(with_store([](const tq_alarm_store_t *store) {
            const int error = errno;
            return !store && error == EPROTO;
        }));
        EXPECT_NE(file("x"), 0);
        struct stat status {};
        ASSERT_EQ(stat(store_file, &status), 0);
        EXPECT_EQ(status.st_size, static_cast<off_t>(size));
    }
}

TEST_F(AlarmStore, of_another_make_is_refused)
{
    put_file(store_size); // right size, no magic
    EXPECT_LT(tq_alarm_log_init(), 0);
    EXPECT_EQ(errno, EPROTO);
}

TEST_F(AlarmStore, that_others_overwrote_is_no_longer_used)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    ASSERT_EQ(file("x"), 0);
    EXPECT_THAT(seen(), ElementsAre("x"));
    std::memset(reinterpret_cast<char *>(tq_alarm_log_shm_pointer) +
                    tq::AlarmChain::trailer_offset(TQ_ALARM_CAPACITY),
                0x55, 16);
    EXPECT_NE(file("y"), 0);
    EXPECT_TRUE(with_store([](const tq_alarm_store_t *store) { return !store; }));
    EXPECT_EQ(semctl(alarm_log_sem_id, 0, GETVAL), 1);
}

TEST_F(AlarmStore, that_others_cut_short_is_no_longer_touched)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    EXPECT_THAT(seen(), IsEmpty());
    ASSERT_EQ(truncate(store_file, 4096), 0);
    EXPECT_NE(file("y"), 0);
    EXPECT_TRUE(with_store([](const tq_alarm_store_t *store) { return !store; }));
}

TEST_F(AlarmStore, that_was_deleted_and_made_anew_is_followed_at_the_same_address)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    ASSERT_EQ(file("old"), 0);
    EXPECT_THAT(seen(), ElementsAre("old"));
    const tq_alarm_store_t *address = tq_alarm_log_shm_pointer;
    ASSERT_EQ(shm_unlink("/tq_alarm_log"), 0);
    Process other([] { return tq_alarm_log_init() == 0 && file("new") == 0; });
    ASSERT_EQ(other.wait(), 0);
    EXPECT_THAT(seen(), ElementsAre("new"));
    EXPECT_EQ(tq_alarm_log_shm_pointer, address);
    EXPECT_EQ(file("mine"), 0);
    EXPECT_THAT(seen(), ElementsAre("new", "mine"));
}

TEST_F(AlarmStore, that_was_deleted_is_made_anew_by_the_next_writer)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    ASSERT_EQ(file("old"), 0);
    ASSERT_EQ(shm_unlink("/tq_alarm_log"), 0);
    EXPECT_EQ(file("new"), 0);
    EXPECT_THAT(seen(), ElementsAre("new"));
}

TEST_F(AlarmStore, is_usable_again_when_a_wrong_one_has_gone)
{
    put_file(100);
    EXPECT_LT(tq_alarm_log_init(), 0);
    ASSERT_EQ(shm_unlink("/tq_alarm_log"), 0);
    EXPECT_EQ(file("x"), 0);
    EXPECT_THAT(seen(), ElementsAre("x"));
}

TEST_F(AlarmStore, gets_a_new_semaphore_when_somebody_removed_it)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    ASSERT_EQ(semctl(alarm_log_sem_id, 0, IPC_RMID), 0);
    EXPECT_EQ(file("x"), 0);
    EXPECT_THAT(seen(), ElementsAre("x"));
}

TEST_F(AlarmStore, delete_by_index_removes_under_the_callers_semaphore)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    for (const char *text : {"a", "b", "c"})
        file(text);
    const int result = with_store([](tq_alarm_store_t *store) {
        return tq_alarm_log_delete_by_index(store, &store->slot[0],
                                            &store->slot[store->slot[store->head].next]);
    });
    EXPECT_EQ(result, 0);
    EXPECT_THAT(seen(), ElementsAre("a", "c"));
}

TEST_F(AlarmStore, delete_by_index_refuses_what_is_no_record_of_the_store)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    file("a");
    tq_alarm_slot_t elsewhere{};
    with_store([&](tq_alarm_store_t *store) {
        tq_alarm_slot_t *first = &store->slot[0];
        EXPECT_LT(tq_alarm_log_delete_by_index(store, first, &store->slot[1]), 0) << "free slot";
        EXPECT_LT(tq_alarm_log_delete_by_index(store, first, &store->slot[TQ_ALARM_CAPACITY]), 0);
        EXPECT_LT(tq_alarm_log_delete_by_index(store, first, first - 1), 0);
        EXPECT_LT(tq_alarm_log_delete_by_index(
                      store, first, reinterpret_cast<tq_alarm_slot_t *>(reinterpret_cast<char *>(first) + 4)),
                  0);
        EXPECT_LT(tq_alarm_log_delete_by_index(store, first, &elsewhere), 0);
        EXPECT_LT(tq_alarm_log_delete_by_index(store, first + 1, first), 0);
        EXPECT_LT(tq_alarm_log_delete_by_index(store, first, nullptr), 0);
        EXPECT_LT(tq_alarm_log_delete_by_index(nullptr, nullptr, nullptr), 0);
        return 0;
    });
    EXPECT_THAT(seen(), ElementsAre("a"));
}

TEST_F(AlarmStore, a_cycle_written_by_others_is_mended_before_a_reader_walks)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    for (const char *text : {"a", "b", "c"})
        file(text);
    seen();
    tq_alarm_log_shm_pointer->slot[2].next = 0;
    EXPECT_THAT(seen(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(store_disorder(), "");
}

TEST_F(AlarmStore, an_invalid_slot_in_the_chain_is_no_damage)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    for (const char *text : {"a", "b", "c"})
        file(text);
    seen();
    tq_alarm_log_shm_pointer->slot[1].valid = 0;
    const auto next_of_head = with_store([](const tq_alarm_store_t *store) { return store->slot[0].next; });
    EXPECT_EQ(next_of_head, 1u);
    EXPECT_THAT(seen(), ElementsAre("a", "c"));
}

TEST_F(AlarmStore, writers_killed_at_any_time_leave_it_whole_and_free)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    std::mt19937 random(7);
    std::uint64_t filed_before = 0;
    for (int round = 0; round < 150; ++round) {
        std::vector<Process> writers;
        for (int w = 0; w < 2; ++w)
            writers.emplace_back([&] {
                for (unsigned i = 0;; ++i) {
                    file("record");
                    if (i % 3 == 0)
                        with_store([](tq_alarm_store_t *store) {
                            return store && store->head != TQ_ALARM_NONE &&
                                   tq_alarm_log_delete_by_index(store, &store->slot[0],
                                                                &store->slot[store->head]) == 0;
                        });
                }
                return true;
            });
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
        for (auto &writer : writers)
            writer.kill();
        for (auto &writer : writers)
            writer.wait();
        ASSERT_EQ(store_disorder(), "");
        ASSERT_EQ(semctl(alarm_log_sem_id, 0, GETVAL), 1);
        ASSERT_GE(filed(), filed_before);
        filed_before = filed();
    }
    EXPECT_GT(filed_before, 0u);
}
