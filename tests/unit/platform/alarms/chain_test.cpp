// SPDX-License-Identifier: GPL-2.0-or-later
// The chain of alarm records: order, replacement, removal, and damage done by others.
#include "tests/unit/platform/alarms/chain_view.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class AlarmChain : public testing::Test {
protected:
    void add(std::initializer_list<const char *> texts)
    {
        for (const char *text : texts)
            memory.chain().add(record_with(text));
    }
    std::vector<std::string> seen() { return messages(memory.store(), memory.capacity); }
    std::string disorder() { return ::disorder(memory.store(), memory.capacity); }
    tq_alarm_slot_t &slot(std::uint32_t index) { return memory.store().slot[index]; }
    // Slot of the record with this message.
    std::uint32_t slot_of(const std::string &message)
    {
        for (std::uint32_t i = 0; i < memory.capacity; ++i)
            if (slot(i).valid && slot(i).message == message)
                return i;
        return TQ_ALARM_NONE;
    }
    bool remove(const char *message) { return memory.chain().remove(slot_of(message)); }

    StoreMemory memory{4};
};

} // namespace

TEST_F(AlarmChain, a_new_store_is_empty)
{
    EXPECT_EQ(memory.store().head, 0xFFFFFFFFu);
    EXPECT_EQ(memory.store().tail, 0xFFFFFFFFu);
    EXPECT_EQ(memory.store().count, 0u);
    EXPECT_THAT(seen(), IsEmpty());
    EXPECT_TRUE(memory.chain().is_sound());
}

TEST_F(AlarmChain, records_stand_in_the_order_in_which_they_were_added)
{
    add({"a", "b", "c"});
    EXPECT_THAT(seen(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(disorder(), "");
    EXPECT_EQ(memory.store().count, 3u);
}

TEST_F(AlarmChain, the_oldest_gives_way_when_the_store_is_full)
{
    add({"a", "b", "c", "d", "e", "f"});
    EXPECT_THAT(seen(), ElementsAre("c", "d", "e", "f"));
    EXPECT_EQ(disorder(), "");
    EXPECT_EQ(memory.chain().filed(), 6u);
}

TEST_F(AlarmChain, a_record_at_the_head_in_the_middle_at_the_tail_and_alone_can_be_removed)
{
    add({"a", "b", "c", "d"});
    EXPECT_TRUE(remove("a"));
    EXPECT_THAT(seen(), ElementsAre("b", "c", "d"));
    EXPECT_TRUE(remove("c"));
    EXPECT_THAT(seen(), ElementsAre("b", "d"));
    EXPECT_TRUE(remove("d"));
    EXPECT_THAT(seen(), ElementsAre("b"));
    EXPECT_EQ(disorder(), "");
    EXPECT_TRUE(remove("b"));
    EXPECT_THAT(seen(), IsEmpty());
    EXPECT_EQ(disorder(), "");
    EXPECT_EQ(memory.store().head, 0xFFFFFFFFu);
}

TEST_F(AlarmChain, a_freed_slot_is_used_before_any_record_gives_way)
{
    add({"a", "b", "c", "d"});
    remove("b");
    add({"e"});
    EXPECT_THAT(seen(), ElementsAre("a", "c", "d", "e"));
    add({"f"});
    EXPECT_THAT(seen(), ElementsAre("c", "d", "e", "f"));
    EXPECT_EQ(disorder(), "");
}

TEST_F(AlarmChain, a_slot_that_holds_no_record_cannot_be_removed)
{
    add({"a"});
    EXPECT_FALSE(memory.chain().remove(3));
    EXPECT_FALSE(memory.chain().remove(4));
    EXPECT_FALSE(memory.chain().remove(TQ_ALARM_NONE));
    EXPECT_THAT(seen(), ElementsAre("a"));
}

TEST_F(AlarmChain, a_slot_that_others_marked_invalid_keeps_its_place_until_its_turn)
{
    add({"a", "b", "c", "d"});
    slot(slot_of("b")).valid = 0;
    EXPECT_TRUE(memory.chain().is_sound());
    add({"e"});
    EXPECT_THAT(seen(), ElementsAre("c", "d", "e"));
    add({"f"});
    EXPECT_THAT(seen(), ElementsAre("c", "d", "e", "f"));
    EXPECT_EQ(disorder(), "");
}

TEST_F(AlarmChain, a_store_that_readers_take_for_empty_is_left_alone)
{
    add({"a", "b"});
    const std::uint32_t count = std::exchange(memory.store().count, 0u);
    EXPECT_TRUE(memory.chain().is_sound());
    memory.store().count = count;
    memory.store().head = TQ_ALARM_NONE;
    EXPECT_TRUE(memory.chain().is_sound());
    EXPECT_THAT(seen(), IsEmpty());
    add({"c"});
    EXPECT_THAT(seen(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(disorder(), "");
}

struct Damage {
    const char *name;
    void (*apply)(tq_alarm_store_t &store);
};

class DamagedChain : public AlarmChain, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedChain, is_noticed_and_mended_with_no_record_lost)
{
    add({"x", "a", "b", "c", "d"});
    GetParam().apply(memory.store());
    EXPECT_FALSE(memory.chain().is_sound());
    memory.chain().rebuild();
    EXPECT_THAT(seen(), ElementsAre("a", "b", "c", "d"));
    EXPECT_EQ(disorder(), "");
}

TEST_P(DamagedChain, can_be_added_to)
{
    add({"x", "a", "b", "c", "d"});
    GetParam().apply(memory.store());
    for (int i = 0; i < 10; ++i)
        memory.chain().add(record_with(std::to_string(i)));
    if (!memory.chain().is_sound())
        memory.chain().rebuild();
    EXPECT_THAT(seen(), ElementsAre("6", "7", "8", "9"));
    EXPECT_EQ(disorder(), "");
}

TEST_P(DamagedChain, can_be_removed_from)
{
    add({"x", "a", "b", "c", "d"});
    GetParam().apply(memory.store());
    for (const char *message : {"c", "a", "d", "b"})
        EXPECT_TRUE(remove(message));
    if (!memory.chain().is_sound())
        memory.chain().rebuild();
    EXPECT_THAT(seen(), IsEmpty());
    EXPECT_EQ(disorder(), "");
}

// After x gave way: a in slot 1, b in 2, c in 3, d in 0.
INSTANTIATE_TEST_SUITE_P(
    Links, DamagedChain,
    testing::Values(Damage{"next_to_itself", [](tq_alarm_store_t &s) { s.slot[2].next = 2; }},
                    Damage{"next_back_to_the_head", [](tq_alarm_store_t &s) { s.slot[3].next = 1; }},
                    Damage{"next_out_of_range", [](tq_alarm_store_t &s) { s.slot[2].next = 4; }},
                    Damage{"next_far_out_of_range",
                           [](tq_alarm_store_t &s) { s.slot[2].next = 0xFFFFFFFEu; }},
                    Damage{"next_cut_short", [](tq_alarm_store_t &s) { s.slot[2].next = TQ_ALARM_NONE; }},
                    Damage{"prev_to_itself", [](tq_alarm_store_t &s) { s.slot[3].prev = 3; }},
                    Damage{"prev_out_of_range", [](tq_alarm_store_t &s) { s.slot[3].prev = 1000; }},
                    Damage{"tail_goes_on", [](tq_alarm_store_t &s) { s.slot[0].next = 1; }},
                    Damage{"head_in_the_middle", [](tq_alarm_store_t &s) { s.head = 2; }},
                    Damage{"head_out_of_range", [](tq_alarm_store_t &s) { s.head = 4; }},
                    Damage{"tail_in_the_middle", [](tq_alarm_store_t &s) { s.tail = 3; }},
                    Damage{"tail_out_of_range", [](tq_alarm_store_t &s) { s.tail = 77; }},
                    Damage{"count_too_large", [](tq_alarm_store_t &s) { s.count = 5; }},
                    Damage{"count_too_small", [](tq_alarm_store_t &s) { s.count = 2; }}),
    [](const auto &damage) { return damage.param.name; });

TEST_F(AlarmChain, records_without_the_librarys_number_count_as_the_oldest)
{
    add({"a", "b"});
    std::memset(slot(slot_of("b")).lib, 0, 4);
    memory.chain().rebuild();
    EXPECT_THAT(seen(), ElementsAre("b", "a"));
}

TEST_F(AlarmChain, a_slot_that_got_lost_outside_the_chain_comes_back_when_it_is_needed)
{
    add({"a", "b", "c", "d"});
    // "b" is taken out of the chain but stays valid.
    const std::uint32_t lost = slot_of("b");
    slot(slot(lost).prev).next = slot(lost).next;
    slot(slot(lost).next).prev = slot(lost).prev;
    --memory.store().count;
    add({"e"});
    EXPECT_THAT(seen(), ElementsAre("b", "c", "d", "e"));
    EXPECT_EQ(disorder(), "");
}

TEST_F(AlarmChain, a_journal_of_nonsense_is_taken_for_a_broken_chain)
{
    add({"a", "b"});
    auto *trailer = reinterpret_cast<tq::AlarmTrailer *>(static_cast<char *>(memory.data()) +
                                                         tq::AlarmChain::trailer_offset(memory.capacity));
    for (const std::uint32_t journal : {0xFFFFFFFFu, 0x0001FFFFu, 0x00020004u, 0x00090000u, 1u}) {
        trailer->journal = journal;
        memory.store().head = 3;
        memory.chain().recover();
        EXPECT_THAT(seen(), ElementsAre("a", "b"));
        EXPECT_EQ(disorder(), "");
        EXPECT_EQ(trailer->journal, 0u);
    }
}

TEST_F(AlarmChain, any_bytes_at_all_are_survived)
{
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        StoreMemory wild(8);
        for (int i = 0; i < 6; ++i)
            wild.chain().add(record_with(std::to_string(i)));
        auto *bytes = static_cast<unsigned char *>(wild.data());
        for (int i = 0; i < 40; ++i)
            bytes[random() % tq::AlarmChain::size(8)] =
                static_cast<unsigned char>(random() % 8 ? random() % 9 : 255);
        for (int i = 0; i < 20; ++i) {
            if (random() % 3)
                wild.chain().add(record_with("new"));
            else
                wild.chain().remove(static_cast<std::uint32_t>(random() % 8));
        }
        if (!wild.chain().is_sound())
            wild.chain().rebuild();
        ASSERT_LE(messages(wild.store(), 8).size(), 8u);
        ASSERT_TRUE(wild.chain().is_sound());
    }
}

TEST(AlarmChainFull, the_box_capacity_fills_and_turns_over)
{
    StoreMemory memory(TQ_ALARM_CAPACITY);
    for (int i = 0; i < TQ_ALARM_CAPACITY + 1000; ++i)
        memory.chain().add(record_with(std::to_string(i)));
    const auto seen = messages(memory.store(), memory.capacity);
    ASSERT_EQ(seen.size(), std::size_t{TQ_ALARM_CAPACITY});
    EXPECT_EQ(seen.front(), "1000");
    EXPECT_EQ(seen.back(), "5095");
    EXPECT_EQ(disorder(memory.store(), memory.capacity), "");
}

TEST(AlarmChainFull, record_numbers_may_run_over)
{
    StoreMemory memory(4);
    auto *trailer = reinterpret_cast<tq::AlarmTrailer *>(static_cast<char *>(memory.data()) +
                                                         tq::AlarmChain::trailer_offset(4));
    trailer->filed = 0x7FFFFFFEu;
    for (const char *text : {"a", "b", "c", "d"})
        memory.chain().add(record_with(text));
    memory.chain().rebuild();
    EXPECT_THAT(messages(memory.store(), 4), ElementsAre("a", "b", "c", "d"));
}
