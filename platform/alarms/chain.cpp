// SPDX-License-Identifier: GPL-2.0-or-later
// Records of the alarm store: adding, removing, and repair of what a killed writer left.
#include "platform/alarms/chain.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

namespace tq {

namespace {

constexpr char store_magic[8] = {'T', 'Q', 'A', 'L', 'A', 'R', 'M', 'S'};
constexpr std::uint32_t store_version = 1;

// Bytes 12..15 of a slot: the upper bit says that the slot belongs to the chain, the rest is the number of
// its record, cut to 31 bits.
constexpr std::uint32_t in_chain = 0x8000'0000u;
constexpr std::uint32_t number_mask = 0x7fff'ffffu;

// Journal word: change in the upper half, slot index in the lower one.
constexpr unsigned change_shift = 16;
constexpr std::uint32_t index_mask = 0xffffu;
static_assert(TQ_ALARM_CAPACITY <= index_mask);

std::uint32_t mark_of(const tq_alarm_slot_t &slot) noexcept
{
    std::uint32_t mark;
    std::memcpy(&mark, slot.lib, sizeof mark);
    return mark;
}

void set_mark(tq_alarm_slot_t &slot, std::uint32_t mark) noexcept
{
    std::memcpy(slot.lib, &mark, sizeof mark);
}

void release(tq_alarm_slot_t &slot) noexcept
{
    slot.valid = 0;
    slot.prev = slot.next = TQ_ALARM_NONE;
    set_mark(slot, 0);
}

} // namespace

void AlarmChain::format(void *memory, std::uint32_t capacity) noexcept
{
    auto *store = static_cast<tq_alarm_store_t *>(memory);
    store->head = store->tail = TQ_ALARM_NONE;
    store->count = 0;
    store->lib = capacity;
    AlarmTrailer trailer{};
    std::memcpy(trailer.magic, store_magic, sizeof trailer.magic);
    trailer.version = store_version;
    trailer.capacity = capacity;
    trailer.slot_size = sizeof(tq_alarm_slot_t);
    std::memcpy(static_cast<char *>(memory) + trailer_offset(capacity), &trailer, sizeof trailer);
}

bool AlarmChain::is_ours(const AlarmTrailer &trailer, std::uint32_t capacity) noexcept
{
    return std::memcmp(trailer.magic, store_magic, sizeof store_magic) == 0 &&
           trailer.version == store_version && trailer.capacity == capacity &&
           trailer.slot_size == sizeof(tq_alarm_slot_t);
}

AlarmChain::AlarmChain(void *memory, std::uint32_t capacity) noexcept
    : store_(static_cast<tq_alarm_store_t *>(memory)),
      trailer_(reinterpret_cast<AlarmTrailer *>(static_cast<char *>(memory) + trailer_offset(capacity))),
      capacity_(capacity)
{
}

// A process dies between two of its instructions, and what it stored before is all there: it is the compiler
// that must be kept from moving stores over the announcement.
void AlarmChain::announce(Change change, std::uint32_t index) noexcept
{
    std::atomic_signal_fence(std::memory_order_seq_cst);
    std::atomic_ref(trailer_->journal)
        .store(static_cast<std::uint32_t>(change) << change_shift | index, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

void AlarmChain::done() noexcept
{
    announce(Change::none, 0);
}

bool AlarmChain::recover() noexcept
{
    const std::uint32_t journal = std::atomic_ref(trailer_->journal).load(std::memory_order_acquire);
    if (journal == 0)
        return false;
    const std::uint32_t index = journal & index_mask;
    if (index < capacity_) {
        switch (static_cast<Change>(journal >> change_shift)) {
        case Change::add:
            store_->slot[index] = trailer_->staged;
            trailer_->filed = trailer_->staged_number;
            break;
        case Change::remove:
            store_->slot[index].valid = 0;
            break;
        default:
            break;
        }
    }
    // The journal stands until the chain is whole: dying here again only means doing it again.
    relink_all();
    done();
    return true;
}

void AlarmChain::rebuild() noexcept
{
    announce(Change::rebuild, 0);
    relink_all();
    done();
}

void AlarmChain::relink_all() noexcept
{
    std::array<std::uint16_t, TQ_ALARM_CAPACITY> order;
    std::size_t count = 0;
    for (std::uint32_t i = 0; i < capacity_; ++i) {
        if (store_->slot[i].valid)
            order[count++] = static_cast<std::uint16_t>(i);
        else
            release(store_->slot[i]);
    }
    // Records that did not come from this library have no number; they count as the oldest.
    const auto newest = static_cast<std::uint32_t>(trailer_->filed);
    const auto age = [&](std::uint16_t index) {
        const std::uint32_t mark = mark_of(store_->slot[index]);
        return mark & in_chain ? (newest - mark) & number_mask : number_mask;
    };
    std::sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count),
              [&](std::uint16_t a, std::uint16_t b) {
                  const std::uint32_t age_a = age(a);
                  const std::uint32_t age_b = age(b);
                  return age_a != age_b ? age_a > age_b : a < b;
              });
    for (std::size_t i = 0; i < count; ++i) {
        tq_alarm_slot_t &slot = store_->slot[order[i]];
        slot.prev = i == 0 ? TQ_ALARM_NONE : order[i - 1];
        slot.next = i + 1 == count ? TQ_ALARM_NONE : order[i + 1];
    }
    store_->head = count == 0 ? TQ_ALARM_NONE : order[0];
    store_->tail = count == 0 ? TQ_ALARM_NONE : order[count - 1];
    store_->count = static_cast<std::uint32_t>(count);
}

bool AlarmChain::is_sound() const noexcept
{
    if (store_->head == TQ_ALARM_NONE || store_->tail == TQ_ALARM_NONE || store_->count == 0)
        return true;
    std::uint32_t previous = TQ_ALARM_NONE;
    std::uint32_t index = store_->head;
    std::uint32_t steps = 0;
    std::uint32_t valid = 0;
    for (; steps < capacity_ && index < capacity_; ++steps) {
        if (store_->slot[index].prev != previous)
            return false;
        valid += store_->slot[index].valid != 0;
        previous = index;
        index = store_->slot[index].next;
    }
    // Whether an invalid slot counts as a record is a matter of opinion.
    return index == TQ_ALARM_NONE && previous == store_->tail && store_->count >= valid &&
           store_->count <= steps;
}

bool AlarmChain::neighbours_agree(std::uint32_t index) const noexcept
{
    const std::uint32_t prev = store_->slot[index].prev;
    const std::uint32_t next = store_->slot[index].next;
    const bool before =
        prev == TQ_ALARM_NONE ? store_->head == index : prev < capacity_ && store_->slot[prev].next == index;
    const bool behind =
        next == TQ_ALARM_NONE ? store_->tail == index : next < capacity_ && store_->slot[next].prev == index;
    return before && behind && store_->count > 0;
}

// Neither a record nor a link of the chain: a slot that somebody else marked invalid stays in the chain until
// its turn comes.
bool AlarmChain::is_free(std::uint32_t index) const noexcept
{
    const tq_alarm_slot_t &slot = store_->slot[index];
    return !slot.valid && !(mark_of(slot) & in_chain) && !neighbours_agree(index);
}

bool AlarmChain::ends_agree() const noexcept
{
    if (store_->count == 0)
        return store_->head == TQ_ALARM_NONE && store_->tail == TQ_ALARM_NONE;
    return store_->count <= capacity_ && store_->head < capacity_ && store_->tail < capacity_ &&
           neighbours_agree(store_->head) && neighbours_agree(store_->tail) &&
           store_->slot[store_->head].prev == TQ_ALARM_NONE &&
           store_->slot[store_->tail].next == TQ_ALARM_NONE;
}

void AlarmChain::unlink(std::uint32_t index) noexcept
{
    const std::uint32_t prev = store_->slot[index].prev;
    const std::uint32_t next = store_->slot[index].next;
    (prev == TQ_ALARM_NONE ? store_->head : store_->slot[prev].next) = next;
    (next == TQ_ALARM_NONE ? store_->tail : store_->slot[next].prev) = prev;
    store_->count = store_->head == TQ_ALARM_NONE ? 0 : store_->count - 1;
}

std::uint32_t AlarmChain::find_free() const noexcept
{
    const std::uint32_t start = trailer_->next_free < capacity_ ? trailer_->next_free : 0;
    for (std::uint32_t i = start; i < capacity_; ++i)
        if (is_free(i))
            return i;
    for (std::uint32_t i = 0; i < start; ++i)
        if (is_free(i))
            return i;
    return TQ_ALARM_NONE;
}

// A free slot, or else the oldest record's, still linked.
std::uint32_t AlarmChain::slot_for_new_record() noexcept
{
    if (!ends_agree())
        rebuild();
    if (store_->count < capacity_) {
        if (const std::uint32_t index = find_free(); index != TQ_ALARM_NONE)
            return index;
        rebuild(); // slots got lost outside the chain
        if (const std::uint32_t index = find_free(); index != TQ_ALARM_NONE)
            return index;
    }
    return store_->head;
}

void AlarmChain::add(const tq_alarm_slot_t &record) noexcept
{
    recover();
    const std::uint32_t index = slot_for_new_record();

    const std::uint64_t number = trailer_->filed + 1;
    trailer_->staged = record;
    trailer_->staged.valid = 1;
    set_mark(trailer_->staged, in_chain | (static_cast<std::uint32_t>(number) & number_mask));
    trailer_->staged_number = number;
    announce(Change::add, index);

    tq_alarm_slot_t &slot = store_->slot[index];
    if (neighbours_agree(index))
        unlink(index);
    slot = trailer_->staged;
    slot.prev = store_->tail;
    slot.next = TQ_ALARM_NONE;
    (store_->tail == TQ_ALARM_NONE ? store_->head : store_->slot[store_->tail].next) = index;
    store_->tail = index;
    ++store_->count;
    trailer_->filed = number;
    trailer_->next_free = index + 1;
    done();
}

bool AlarmChain::remove(std::uint32_t index) noexcept
{
    recover();
    if (index >= capacity_ || is_free(index))
        return false;
    announce(Change::remove, index);
    if (neighbours_agree(index)) {
        unlink(index);
        release(store_->slot[index]);
        trailer_->next_free = index;
    } else {
        store_->slot[index].valid = 0;
        relink_all();
    }
    done();
    return true;
}

} // namespace tq
