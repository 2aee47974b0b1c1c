// SPDX-License-Identifier: GPL-2.0-or-later
// Walks and selections over the chain of alarm records.
#include "diagd/alarm_log/records/record_chain.hpp"

namespace diagd {

std::uint32_t RecordChain::newest(std::uint16_t count) const noexcept
{
    const std::uint32_t oldest = store_->head;
    std::uint32_t index = store_->tail;
    for (std::uint16_t left = count; left > 1 && index != oldest; --left) {
        const tq_alarm_slot_t *const at = slot(index);
        if (at == nullptr)
            return TQ_ALARM_NONE;
        index = at->prev;
    }
    return index;
}

static bool selected(const tq_alarm_slot_t &slot, LevelFilter level)
{
    return slot.valid != 0 && (level == TQ_ALARM_LEVEL_ALL || slot.level == level);
}

int view_all(const RecordChain &chain, LevelFilter level, const RecordSink &sink)
{
    int shown = 0;
    chain.walk(chain.head(), [&](const tq_alarm_slot_t &slot) {
        if (selected(slot, level)) {
            sink(slot);
            ++shown;
        }
        return true;
    });
    return shown;
}

void view_oldest(const RecordChain &chain, std::uint16_t count, const RecordSink &sink)
{
    std::uint16_t left = count;
    chain.walk(chain.head(), [&](const tq_alarm_slot_t &slot) {
        if (slot.valid != 0)
            sink(slot);
        return --left != 0;
    });
}

void view_newest(const RecordChain &chain, std::uint16_t count, const RecordSink &sink)
{
    chain.walk(chain.newest(count), [&](const tq_alarm_slot_t &slot) {
        if (slot.valid != 0)
            sink(slot);
        return true;
    });
}

void delete_records(const RecordChain &chain, LevelFilter level)
{
    tq_alarm_store_t &store = chain.store();
    chain.walk(chain.head(), [&](tq_alarm_slot_t &slot) {
        if (selected(slot, level))
            tq_alarm_log_delete_by_index(&store, &store.slot[0], &slot);
        return true;
    });
}

} // namespace diagd
