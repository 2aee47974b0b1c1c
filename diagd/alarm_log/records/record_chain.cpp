// SPDX-License-Identifier: GPL-2.0-or-later
// Walking the chain of alarm records.
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

} // namespace diagd
