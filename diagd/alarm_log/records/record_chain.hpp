// SPDX-License-Identifier: GPL-2.0-or-later
// The chain of alarm records in the shared store, and what the commands see and remove of it.
// Failure policy: other processes write the store, so no index is trusted; one outside the store ends the
// walk, and no walk makes more steps than the store has slots.  The caller holds the store's semaphore.
#pragma once

#include "tq_api.h"

#include <cstdint>
#include <functional>

namespace diagd {

// Attaches the store on first use; null with errno set when there is none.  The caller holds
// alarm_log_sem_id.
[[nodiscard]] inline tq_alarm_store_t *attached_store() noexcept
{
    if (tq_alarm_log_shm_pointer == nullptr)
        tq_alarm_log_shm_pointer = tq_alarm_log_get_shm_pointer();
    return tq_alarm_log_shm_pointer;
}

class RecordChain {
public:
    // `capacity` is the number of slots behind the store's head.
    RecordChain(tq_alarm_store_t &store, std::uint32_t capacity) noexcept
        : store_(&store), capacity_(capacity)
    {
    }

    [[nodiscard]] bool empty() const noexcept
    {
        return store_->head == TQ_ALARM_NONE || store_->tail == TQ_ALARM_NONE || store_->count == 0;
    }
    [[nodiscard]] std::uint32_t head() const noexcept { return store_->head; }
    [[nodiscard]] tq_alarm_store_t &store() const noexcept { return *store_; }

    // Slot `index`, null when the store has no such slot.
    [[nodiscard]] tq_alarm_slot_t *slot(std::uint32_t index) const noexcept
    {
        return index < capacity_ ? &store_->slot[index] : nullptr;
    }

    // Slot to start from to see the `count` newest slots, valid or not; no slot when a link on the way is
    // broken.
    [[nodiscard]] std::uint32_t newest(std::uint16_t count) const noexcept;

    // Calls `visit(slot)` for each slot from `first` to the newest, valid or not, until it returns false. The
    // slot may be deleted in the visit: its link is read before.
    template <typename Visit>
    void walk(std::uint32_t first, Visit visit) const
    {
        std::uint32_t index = first;
        for (std::uint32_t steps = 0; steps < capacity_; ++steps) {
            tq_alarm_slot_t *const at = slot(index);
            if (at == nullptr)
                return;
            index = at->next;
            if (!visit(*at))
                return;
        }
    }

private:
    tq_alarm_store_t *store_;
    std::uint32_t capacity_;
};

// 0..7, or TQ_ALARM_LEVEL_ALL for records of every level.  A level selects exactly itself, not what is above.
using LevelFilter = std::uint8_t;

using RecordSink = std::function<void(const tq_alarm_slot_t &)>;

// Valid records of the level, oldest first.  Returns how many.
int view_all(const RecordChain &chain, LevelFilter level, const RecordSink &sink);

// The `count` oldest slots: a slot without a record uses up one of them and shows nothing.
void view_oldest(const RecordChain &chain, std::uint16_t count, const RecordSink &sink);

// The `count` newest slots, oldest of them first, counted in the same way.
void view_newest(const RecordChain &chain, std::uint16_t count, const RecordSink &sink);

// Has the alarm library delete the valid records of the level.
void delete_records(const RecordChain &chain, LevelFilter level);

} // namespace diagd
