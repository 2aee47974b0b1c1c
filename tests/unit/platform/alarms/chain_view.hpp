// SPDX-License-Identifier: GPL-2.0-or-later
// What a reader of the alarm store sees, and whether the store is in order; for tests.
#pragma once

#include "platform/alarms/chain.hpp"

#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

// A store in memory of the test's own.
class StoreMemory {
public:
    explicit StoreMemory(std::uint32_t slots) : capacity(slots), memory_(tq::AlarmChain::size(slots) / 8)
    {
        tq::AlarmChain::format(memory_.data(), slots);
    }
    StoreMemory(const void *from, std::uint32_t slots)
        : capacity(slots), memory_(tq::AlarmChain::size(slots) / 8)
    {
        std::memcpy(memory_.data(), from, tq::AlarmChain::size(slots));
    }
    [[nodiscard]] void *data() { return memory_.data(); }
    [[nodiscard]] tq_alarm_store_t &store() { return *reinterpret_cast<tq_alarm_store_t *>(memory_.data()); }
    [[nodiscard]] tq::AlarmChain chain() { return {memory_.data(), capacity}; }

    const std::uint32_t capacity;

private:
    std::vector<std::uint64_t> memory_; // for its alignment
};

inline tq_alarm_slot_t record_with(const std::string &message, std::uint8_t level = 1)
{
    tq_alarm_slot_t record{};
    record.level = level;
    record.alarm_id = 29;
    std::snprintf(record.message, sizeof record.message, "%s", message.c_str());
    return record;
}

// Messages from the oldest to the newest, as far as the links lead within the capacity.
inline std::vector<std::string> messages(const tq_alarm_store_t &store, std::uint32_t capacity)
{
    std::vector<std::string> found;
    if (store.head == TQ_ALARM_NONE || store.tail == TQ_ALARM_NONE || store.count == 0)
        return found;
    std::uint32_t index = store.head;
    for (std::uint32_t steps = 0; index < capacity && steps < capacity; ++steps) {
        if (store.slot[index].valid)
            found.emplace_back(store.slot[index].message);
        index = store.slot[index].next;
    }
    return found;
}

// Empty when the chain is consistent both ways, holds exactly the valid slots, and the count is right.
inline std::string disorder(const tq_alarm_store_t &store, std::uint32_t capacity)
{
    std::set<std::uint32_t> seen;
    std::uint32_t previous = TQ_ALARM_NONE;
    for (std::uint32_t index = store.head; index != TQ_ALARM_NONE; index = store.slot[index].next) {
        const std::string at = " at slot " + std::to_string(index);
        if (index >= capacity)
            return "link out of range" + at;
        if (!seen.insert(index).second)
            return "cycle" + at;
        if (store.slot[index].prev != previous)
            return "prev does not match" + at;
        if (!store.slot[index].valid)
            return "slot without a record in the chain" + at;
        previous = index;
    }
    if (store.tail != previous)
        return "tail is not the last slot";
    if (store.count != seen.size())
        return "count is " + std::to_string(store.count) + ", records are " + std::to_string(seen.size());
    for (std::uint32_t index = 0; index < capacity; ++index)
        if (store.slot[index].valid && !seen.contains(index))
            return "record outside the chain at slot " + std::to_string(index);
    return "";
}
