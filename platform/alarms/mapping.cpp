// SPDX-License-Identifier: GPL-2.0-or-later
// Attaching the shared alarm store.
// Failure policy: a store that was unlinked is left for the one that has the name now, at the same address,
// and that is said in the log.  One that is cut short is left behind, even in the middle of a change: what is
// lost is lost, and the process goes on.
#include "platform/alarms/mapping.hpp"

#include "platform/alarms/store_fault.hpp"
#include "platform/alarms/store_file.hpp"
#include "platform/alarms/store_semaphore.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <cerrno>
#include <sys/mman.h>
#include <sys/stat.h>
#include <utility>

#include <zebra.h>

#include <log.h>

tq_alarm_store_t *tq_alarm_log_shm_pointer = nullptr;

namespace tq {

AlarmMapping &alarm_mapping() noexcept
{
    static AlarmMapping the_mapping;
    return the_mapping;
}

// The mapped store still has its name and its size, and nobody has overwritten its bookkeeping.
bool AlarmMapping::is_current() const noexcept
{
    struct stat status {};
    return fd_ && fstat(fd_.get(), &status) == 0 && status.st_nlink > 0 &&
           status.st_size == static_cast<off_t>(store_size) &&
           AlarmChain::is_ours(
               *reinterpret_cast<const AlarmTrailer *>(static_cast<const char *>(memory_) +
                                                       AlarmChain::trailer_offset(store_capacity)),
               store_capacity);
}

bool AlarmMapping::is_lost() noexcept
{
    if (!is_store_lost())
        return false;
    errno = EPROTO; // as for a store that is found cut short
    return true;
}

bool AlarmMapping::map_named_store() noexcept
{
    base::Fd fd = open_store();
    if (!fd)
        return false;
    // Over the old store, if there was one: addresses that others keep stay good.
    void *memory = mmap(memory_, store_size, PROT_READ | PROT_WRITE, MAP_SHARED | (memory_ ? MAP_FIXED : 0),
                        fd.get(), 0);
    if (memory == MAP_FAILED)
        return false;
    if (fd_)
        zlog_warn("the alarm store was replaced: attached the new one");
    fd_ = std::move(fd);
    memory_ = memory;
    guard_store(memory_, store_size);
    return true;
}

std::optional<AlarmChain> AlarmMapping::current_chain() noexcept
{
    if (!is_current())
        return std::nullopt;
    AlarmChain chain(memory_, store_capacity);
    const bool is_recovered = chain.recover();
    if (is_lost())
        return std::nullopt;
    if (is_recovered)
        zlog_warn("a process died while it changed the alarm store: its change was finished");
    return chain;
}

std::optional<AlarmChain> AlarmMapping::chain() noexcept
{
    auto chain = current_chain();
    if (!chain && map_named_store())
        chain = current_chain();
    return chain;
}

tq_alarm_store_t *AlarmMapping::attach() noexcept
{
    auto chain = this->chain();
    if (!chain)
        return nullptr;
    if (!chain->is_sound())
        chain->rebuild();
    if (is_lost())
        return nullptr;
    return static_cast<tq_alarm_store_t *>(memory_);
}

void AlarmMapping::refresh_for_reader() noexcept
{
    if (memory_ && !attach())
        tq_alarm_log_shm_pointer = nullptr;
}

std::uint32_t AlarmMapping::index_of(const tq_alarm_store_t *store, const tq_alarm_slot_t *slot0,
                                     const tq_alarm_slot_t *slot) const noexcept
{
    const auto *mapped = static_cast<const tq_alarm_store_t *>(memory_);
    if (!mapped || store != mapped || slot0 != mapped->slot)
        return TQ_ALARM_NONE;
    const auto offset = reinterpret_cast<std::uintptr_t>(slot) - reinterpret_cast<std::uintptr_t>(slot0);
    const auto index = offset / sizeof(tq_alarm_slot_t);
    return offset % sizeof(tq_alarm_slot_t) == 0 && index < store_capacity ? static_cast<std::uint32_t>(index)
                                                                           : TQ_ALARM_NONE;
}

} // namespace tq

int tq_alarm_log_init(void)
{
    return tq::traced("tq_alarm_log_init", [] {
        if (tq::open_alarm_semaphore() < 0)
            return -1;
        const tq::StoreGuard guard;
        return guard && tq::alarm_mapping().attach() ? 0 : -1;
    });
}

tq_alarm_store_t *tq_alarm_log_get_shm_pointer(void)
{
    return tq::traced("tq_alarm_log_get_shm_pointer", [] { return tq::alarm_mapping().attach(); });
}

int tq_alarm_log_delete_by_index(tq_alarm_store_t *store, tq_alarm_slot_t *slot0, tq_alarm_slot_t *slot)
{
    const std::uint32_t index = tq::alarm_mapping().index_of(store, slot0, slot);
    return tq::traced(
        "tq_alarm_log_delete_by_index",
        [&]() -> int {
            if (index == TQ_ALARM_NONE)
                return TQ_ERR_INVALID;
            // No other store is attached here: the slot that the caller means is one of this store.
            auto chain = tq::alarm_mapping().current_chain();
            if (!chain)
                return TQ_ERR_STORE;
            const bool is_removed = chain->remove(index);
            if (tq::AlarmMapping::is_lost())
                return TQ_ERR_STORE;
            return is_removed ? TQ_OK : TQ_ERR_NOT_FOUND;
        },
        tq::arg("slot", static_cast<long long>(index)));
}
