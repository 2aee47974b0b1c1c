// SPDX-License-Identifier: GPL-2.0-or-later
// Making and attaching the shared alarm store.
// Failure policy: a store appears under its name only when it is complete, so nobody ever sees half of one. A
// store of another make (size, magic, version) is left alone and refused with EPROTO.  A store that was
// unlinked is left for the one that has the name now, at the same address, and that is said in the log.
#include "platform/alarms/mapping.hpp"

#include "platform/alarms/store_semaphore.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <zebra.h>

#include <log.h>

tq_alarm_store_t *tq_alarm_log_shm_pointer = nullptr;

namespace tq {

namespace {

constexpr char store_name[] = "/tq_alarm_log";
constexpr char store_folder[] = "/dev/shm"; // where the C library keeps shared memory objects
constexpr char store_path[] = "/dev/shm/tq_alarm_log";
constexpr mode_t access_mode = 0666; // written by daemons of several users
constexpr std::uint32_t capacity = TQ_ALARM_CAPACITY;
constexpr std::size_t store_size = AlarmChain::size(capacity);

// Makes an empty store and gives it the name.  EEXIST when another process was faster.
bool create_store() noexcept
{
    const base::Fd fd(open(store_folder, O_TMPFILE | O_RDWR | O_CLOEXEC, access_mode));
    if (!fd || fchmod(fd.get(), access_mode) < 0)
        return false;
    // All pages at once: a full file system shows here and not as a fault at some later record.
    if (const int error = posix_fallocate(fd.get(), 0, static_cast<off_t>(store_size)); error != 0) {
        errno = error;
        return false;
    }
    void *memory = mmap(nullptr, store_size, PROT_READ | PROT_WRITE, MAP_SHARED, fd.get(), 0);
    if (memory == MAP_FAILED)
        return false;
    AlarmChain::format(memory, capacity);
    munmap(memory, store_size);
    char self[32];
    std::snprintf(self, sizeof self, "/proc/self/fd/%d", fd.get());
    return linkat(AT_FDCWD, self, AT_FDCWD, store_path, AT_SYMLINK_FOLLOW) == 0;
}

bool is_store(int fd) noexcept
{
    struct stat status {};
    if (fstat(fd, &status) < 0)
        return false;
    AlarmTrailer trailer{};
    if (!S_ISREG(status.st_mode) || status.st_size != static_cast<off_t>(store_size) ||
        pread(fd, &trailer, sizeof trailer, AlarmChain::trailer_offset(capacity)) != sizeof trailer ||
        !AlarmChain::is_ours(trailer, capacity)) {
        errno = EPROTO;
        return false;
    }
    return true;
}

} // namespace

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
           AlarmChain::is_ours(*reinterpret_cast<const AlarmTrailer *>(static_cast<const char *>(memory_) +
                                                                       AlarmChain::trailer_offset(capacity)),
                               capacity);
}

bool AlarmMapping::map_named_store() noexcept
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        base::Fd fd(shm_open(store_name, O_RDWR | O_CLOEXEC, 0));
        if (!fd) {
            if (errno != ENOENT || (!create_store() && errno != EEXIST))
                return false;
            continue;
        }
        if (!is_store(fd.get()))
            return false;
        // Over the old store, if there was one: addresses that others keep stay good.
        void *memory = mmap(memory_, store_size, PROT_READ | PROT_WRITE,
                            MAP_SHARED | (memory_ ? MAP_FIXED : 0), fd.get(), 0);
        if (memory == MAP_FAILED)
            return false;
        if (fd_)
            zlog_warn("the alarm store was replaced: attached the new one");
        fd_ = std::move(fd);
        memory_ = memory;
        return true;
    }
    return false;
}

std::optional<AlarmChain> AlarmMapping::current_chain() noexcept
{
    if (!is_current())
        return std::nullopt;
    AlarmChain chain(memory_, capacity);
    chain.recover();
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
    return offset % sizeof(tq_alarm_slot_t) == 0 && index < capacity ? static_cast<std::uint32_t>(index)
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
            return chain->remove(index) ? TQ_OK : TQ_ERR_NOT_FOUND;
        },
        tq::arg("slot", static_cast<long long>(index)));
}
