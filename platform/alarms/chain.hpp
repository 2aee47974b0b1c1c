// SPDX-License-Identifier: GPL-2.0-or-later
// The records of the alarm store and the chain that orders them, in memory that other processes share and
// that any of them may leave half changed when it is killed.
//
// Whoever changes the store holds its semaphore.  Every change is announced in the journal word first and can
// be finished from there: a record to be added lies complete beside the slots before its slot is touched, and
// the chain can always be built again from the valid slots, whose bytes 12..15 carry the record's place in
// time. Thus a record that was readable stays readable, whenever its writer dies.
//
// Failure policy: links are trusted only after a look at both neighbours; one that leads astray makes the
// chain be built again.  Every walk is bounded by the capacity.
#pragma once

#include "tq_types.h"

#include <cstddef>
#include <cstdint>

namespace tq {

// Bookkeeping behind the last slot, at 16 + 200 * capacity.
struct AlarmTrailer {
    char magic[8];
    std::uint32_t version;
    std::uint32_t capacity; // slots
    std::uint32_t slot_size;
    std::uint32_t journal;       // what is being done, with which slot; 0 when nothing is
    std::uint32_t next_free;     // where to look for a free slot first
    std::uint32_t reserved;      // 0
    std::uint64_t filed;         // records ever filed, the number of the newest one
    std::uint64_t staged_number; // number of the record in `staged`
    tq_alarm_slot_t staged;      // record being added
};
static_assert(sizeof(AlarmTrailer) == 248 && offsetof(AlarmTrailer, staged) == 48);

class AlarmChain {
public:
    // Bytes that a store of `capacity` slots takes, and where its trailer lies.
    static constexpr std::size_t trailer_offset(std::uint32_t capacity)
    {
        return sizeof(tq_alarm_store_t) + std::size_t{capacity} * sizeof(tq_alarm_slot_t);
    }
    static constexpr std::size_t size(std::uint32_t capacity)
    {
        return trailer_offset(capacity) + sizeof(AlarmTrailer);
    }

    // Writes head and trailer of an empty store; the slots must be zero.
    static void format(void *memory, std::uint32_t capacity) noexcept;

    // Magic, version and sizes are those of a store of `capacity` slots.
    static bool is_ours(const AlarmTrailer &trailer, std::uint32_t capacity) noexcept;

    // `memory` is a formatted store of `capacity` (at most TQ_ALARM_CAPACITY) slots.
    AlarmChain(void *memory, std::uint32_t capacity) noexcept;

    // Finishes what a killed writer began.  False: nobody had.
    bool recover() noexcept;

    // Every walk along `next` or `prev` ends within the capacity, and the count fits.  A store that readers
    // take for empty (head or tail TQ_ALARM_NONE or count 0) is sound, too.
    [[nodiscard]] bool is_sound() const noexcept;

    // Builds the chain again from the valid slots, oldest first.
    void rebuild() noexcept;

    // Appends a copy of the record as the newest; the oldest gives way when no slot is free.  prev, next,
    // valid and the library's bytes of `record` do not matter.
    void add(const tq_alarm_slot_t &record) noexcept;

    // Takes slot `index` out of the chain and frees it.  False when it holds no record.
    bool remove(std::uint32_t index) noexcept;

    [[nodiscard]] std::uint64_t filed() const noexcept { return trailer_->filed; }

private:
    enum class Change : std::uint32_t { none, add, remove, rebuild };

    void announce(Change change, std::uint32_t index) noexcept;
    void done() noexcept;
    void relink_all() noexcept;
    void unlink(std::uint32_t index) noexcept;
    [[nodiscard]] bool neighbours_agree(std::uint32_t index) const noexcept;
    [[nodiscard]] bool is_free(std::uint32_t index) const noexcept;
    [[nodiscard]] bool ends_agree() const noexcept;
    [[nodiscard]] std::uint32_t find_free() const noexcept;
    std::uint32_t slot_for_new_record() noexcept;

    tq_alarm_store_t *store_;
    AlarmTrailer *trailer_;
    std::uint32_t capacity_;
};

} // namespace tq
