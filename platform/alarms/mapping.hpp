// SPDX-License-Identifier: GPL-2.0-or-later
// This process's view of the shared alarm store.
#pragma once

#include "base/fd.hpp"
#include "platform/alarms/chain.hpp"

#include <optional>
#include <sys/types.h>

namespace tq {

// All members are called by whoever holds the store's semaphore, which is also what keeps the threads of this
// process apart.
class AlarmMapping {
public:
    // The store, attached (made when there is none) and whole; nullptr with errno set.  Its address never
    // changes while the process lives, even when the store itself is replaced.
    tq_alarm_store_t *attach() noexcept;

    // For somebody who is about to walk the chain by its links: when the store is attached, makes sure that
    // it still is the one that others use and that every walk ends.  When there is no usable store any more,
    // tq_alarm_log_shm_pointer is cleared, so that the next user asks and is told why.
    void refresh_for_reader() noexcept;

    // The chain for a change; nothing, with errno set, when there is no usable store.
    std::optional<AlarmChain> chain() noexcept;

    // The same, but never attaches another store than the one attached now.
    std::optional<AlarmChain> current_chain() noexcept;

    // The store was cut short while it was looked at or changed: what was read or written since is void.
    // errno is set then.
    static bool is_lost() noexcept;

    // Index of a slot of the attached store; TQ_ALARM_NONE for any other address.
    [[nodiscard]] std::uint32_t index_of(const tq_alarm_store_t *store, const tq_alarm_slot_t *slot0,
                                         const tq_alarm_slot_t *slot) const noexcept;

private:
    [[nodiscard]] bool is_current() const noexcept;
    bool map_named_store() noexcept;

    base::Fd fd_; // stays open: by it a store that was replaced or cut is known
    void *memory_ = nullptr;
};

AlarmMapping &alarm_mapping() noexcept;

} // namespace tq
