// SPDX-License-Identifier: GPL-2.0-or-later
// Alarm records selected from hand-made stores, sound and corrupted.
#include "diagd/alarm_log/records/record_chain.hpp"

#include "tq_api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::uint32_t capacity = 8;
constexpr std::uint8_t all = TQ_ALARM_LEVEL_ALL;

std::vector<std::uint32_t> deleted; // slot numbers

// A store of eight slots whose alarm ids are their slot numbers.
class Store {
public:
    Store()
        : memory_(static_cast<tq_alarm_store_t *>(
              std::calloc(1, sizeof(tq_alarm_store_t) + capacity * sizeof(tq_alarm_slot_t))))
    {
        memory_->head = memory_->tail = TQ_ALARM_NONE;
    }

    // Links the slots, oldest first; every record is valid and of level info.
    Store &chain(const std::vector<std::uint32_t> &slots)
    {
        memory_->count = static_cast<std::uint32_t>(slots.size());
        memory_->head = slots.front();
        memory_->tail = slots.back();
        for (std::size_t i = 0; i < slots.size(); ++i) {
            tq_alarm_slot_t &slot = (*this)[slots[i]];
            slot.valid = 1;
            slot.level = 1;
            slot.alarm_id = static_cast<std::uint16_t>(slots[i]);
            slot.prev = i > 0 ? slots[i - 1] : TQ_ALARM_NONE;
            slot.next = i + 1 < slots.size() ? slots[i + 1] : TQ_ALARM_NONE;
        }
        return *this;
    }

    tq_alarm_slot_t &operator[](std::uint32_t index) { return memory_->slot[index]; }
    tq_alarm_store_t *operator->() { return memory_.get(); }
    [[nodiscard]] diagd::RecordChain records() const { return {*memory_, capacity}; }

private:
    struct Free {
        void operator()(void *memory) const { std::free(memory); }
    };
    std::unique_ptr<tq_alarm_store_t, Free> memory_;
};

using Ids = std::vector<int>;

Ids shown_all(const Store &store, std::uint8_t level = all)
{
    Ids ids;
    const int count =
        diagd::view_all(store.records(), level, [&](const auto &slot) { ids.push_back(slot.alarm_id); });
    EXPECT_EQ(static_cast<std::size_t>(count), ids.size());
    return ids;
}

Ids shown_oldest(const Store &store, std::uint16_t count)
{
    Ids ids;
    diagd::view_oldest(store.records(), count, [&](const auto &slot) { ids.push_back(slot.alarm_id); });
    return ids;
}

Ids shown_newest(const Store &store, std::uint16_t count)
{
    Ids ids;
    diagd::view_newest(store.records(), count, [&](const auto &slot) { ids.push_back(slot.alarm_id); });
    return ids;
}

} // namespace

// As the library does it: the slot leaves the chain and is wiped.
extern "C" int tq_alarm_log_delete_by_index(tq_alarm_store_t *store, tq_alarm_slot_t *slot0,
                                            tq_alarm_slot_t *slot)
{
    EXPECT_EQ(slot0, &store->slot[0]);
    deleted.push_back(static_cast<std::uint32_t>(slot - slot0));
    *slot = {};
    slot->prev = slot->next = TQ_ALARM_NONE;
    return 0;
}

TEST(RecordChain, is_empty_by_head_by_tail_or_by_count)
{
    Store store;
    store.chain({0, 1});
    EXPECT_FALSE(store.records().empty());
    store->head = TQ_ALARM_NONE;
    EXPECT_TRUE(store.records().empty());
    store.chain({0, 1});
    store->tail = TQ_ALARM_NONE;
    EXPECT_TRUE(store.records().empty());
    store.chain({0, 1});
    store->count = 0;
    EXPECT_TRUE(store.records().empty());
}

TEST(ViewAll, shows_valid_records_oldest_first)
{
    Store store;
    store.chain({3, 1, 7});
    EXPECT_THAT(shown_all(store), ElementsAre(3, 1, 7));
    store[1].valid = 0;
    EXPECT_THAT(shown_all(store), ElementsAre(3, 7));
}

TEST(ViewAll, a_level_selects_exactly_itself)
{
    Store store;
    store.chain({0, 1, 2, 3});
    store[1].level = 4;
    store[2].level = 5;
    EXPECT_THAT(shown_all(store, 4), ElementsAre(1));
    EXPECT_THAT(shown_all(store, 1), ElementsAre(0, 3));
    EXPECT_THAT(shown_all(store, 0), IsEmpty());
}

TEST(ViewOldest, shows_the_first_slots_and_stops_at_the_end)
{
    Store store;
    store.chain({4, 5, 6, 7, 0});
    EXPECT_THAT(shown_oldest(store, 2), ElementsAre(4, 5));
    EXPECT_THAT(shown_oldest(store, 1000), ElementsAre(4, 5, 6, 7, 0));
}

TEST(ViewOldest, a_slot_without_record_uses_up_one)
{
    Store store;
    store.chain({0, 1, 2, 3, 4, 5});
    store[1].valid = 0;
    EXPECT_THAT(shown_oldest(store, 5), ElementsAre(0, 2, 3, 4));
}

TEST(ViewNewest, shows_the_last_slots_oldest_of_them_first)
{
    Store store;
    store.chain({0, 1, 2, 3, 4});
    EXPECT_THAT(shown_newest(store, 3), ElementsAre(2, 3, 4));
    EXPECT_THAT(shown_newest(store, 1), ElementsAre(4));
    EXPECT_THAT(shown_newest(store, 5), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(shown_newest(store, 1000), ElementsAre(0, 1, 2, 3, 4));
}

TEST(ViewNewest, shows_the_only_record)
{
    Store store;
    store.chain({6});
    EXPECT_THAT(shown_newest(store, 5), ElementsAre(6));
}

TEST(ViewNewest, steps_back_by_slots_not_by_records)
{
    Store store;
    store.chain({0, 1, 2, 3, 4});
    store[3].valid = 0;
    EXPECT_THAT(shown_newest(store, 3), ElementsAre(2, 4));
}

TEST(DeleteRecords, removes_only_the_level_and_reads_the_link_before)
{
    deleted.clear();
    Store store;
    store.chain({2, 4, 6});
    store[4].level = 2;
    diagd::delete_records(store.records(), 1);
    EXPECT_THAT(deleted, ElementsAre(2u, 6u));
}

TEST(DeleteRecords, passes_over_slots_without_record)
{
    deleted.clear();
    Store store;
    store.chain({0, 1, 2});
    store[1].valid = 0;
    diagd::delete_records(store.records(), all);
    EXPECT_THAT(deleted, ElementsAre(0u, 2u));
}

TEST(CorruptedStore, a_circle_ends)
{
    Store store;
    store.chain({0, 1, 2});
    store[2].next = 0;
    EXPECT_LE(shown_all(store).size(), capacity);
    EXPECT_LE(shown_newest(store, 2).size(), capacity);
    EXPECT_EQ(shown_oldest(store, 1000).size(), capacity);

    store[1].prev = 1; // steps back without ever reaching the head
    EXPECT_LE(shown_newest(store, 1000).size(), capacity);
}

TEST(CorruptedStore, an_index_outside_the_store_ends_the_walk)
{
    Store store;
    store.chain({0, 1, 2});
    store[1].next = capacity;
    EXPECT_THAT(shown_all(store), ElementsAre(0, 1));
    store[1].next = 0x7FFFFFFF;
    EXPECT_THAT(shown_oldest(store, 9), ElementsAre(0, 1));

    store->head = 4000;
    EXPECT_THAT(shown_all(store), IsEmpty());
    store->tail = 4000;
    EXPECT_THAT(shown_newest(store, 2), IsEmpty());
}

TEST(CorruptedStore, a_broken_link_back_shows_nothing)
{
    Store store;
    store.chain({0, 1, 2});
    store[2].prev = TQ_ALARM_NONE;
    EXPECT_THAT(shown_newest(store, 2), IsEmpty());
    store[2].prev = 12345;
    EXPECT_THAT(shown_newest(store, 3), IsEmpty());
}
