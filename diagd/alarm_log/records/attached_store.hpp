// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm store as this process sees it.
#pragma once

#include "tq_api.h"

namespace diagd {

// Attaches the store on first use; null with errno set when there is none.  The caller holds
// alarm_log_sem_id.
[[nodiscard]] inline tq_alarm_store_t *attached_store() noexcept
{
    if (tq_alarm_log_shm_pointer == nullptr)
        tq_alarm_log_shm_pointer = tq_alarm_log_get_shm_pointer();
    return tq_alarm_log_shm_pointer;
}

} // namespace diagd
