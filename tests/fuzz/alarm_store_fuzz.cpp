// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm store, which any member of the box's group may fill with anything: walks end, writers repair.
// Input: the store's memory, cyclically; then what is done with it.
#include "diagd/alarm_log/records/record_chain.hpp"
#include "platform/alarms/chain.hpp"
#include "tests/fuzz/fuzz.hpp"

#include <cstring>
#include <vector>

namespace {

constexpr std::uint32_t capacity = 8;

std::vector<std::uint8_t> memory(tq::AlarmChain::size(capacity)); // as malloc aligns it

tq_alarm_store_t &store()
{
    return *reinterpret_cast<tq_alarm_store_t *>(memory.data());
}

// What the commands do, which trust nothing in the store.
void view(std::uint16_t count)
{
    const diagd::RecordChain chain(store(), capacity);
    std::size_t seen = 0;
    const auto see = [&seen](const tq_alarm_slot_t &) { ++seen; };
    diagd::view_all(chain, TQ_ALARM_LEVEL_ALL, see);
    diagd::view_oldest(chain, count, see);
    diagd::view_newest(chain, count, see);
    fuzz::expect(seen <= std::size_t{3} * capacity, "no walk is longer than the store");
}

} // namespace

// The command that removes records asks the library to; here it is the chain itself.
extern "C" int tq_alarm_log_delete_by_index(tq_alarm_store_t *, tq_alarm_slot_t *first, tq_alarm_slot_t *slot)
{
    tq::AlarmChain(memory.data(), capacity).remove(static_cast<std::uint32_t>(slot - first));
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const std::uint16_t count = input.u16();
    const unsigned steps = input.u8();
    // Head, links and trailer from the input; the texts between them do not matter.
    std::ranges::fill(memory, std::uint8_t{0});
    tq::AlarmChain::format(memory.data(), capacity);
    store().head = input.u8();
    store().tail = input.u8();
    store().count = input.u8();
    for (std::uint32_t i = 0; i < capacity; ++i) {
        tq_alarm_slot_t &slot = store().slot[i];
        const std::uint8_t flags = input.u8();
        slot.valid = flags & 3;
        slot.level = flags >> 4;
        slot.prev = (flags & 4) != 0 ? TQ_ALARM_NONE : input.u8();
        slot.next = (flags & 8) != 0 ? TQ_ALARM_NONE : input.u8();
        for (std::uint8_t &byte : slot.lib)
            byte = input.u8();
    }
    tq::AlarmTrailer trailer;
    auto *const at = memory.data() + tq::AlarmChain::trailer_offset(capacity);
    std::memcpy(&trailer, at, sizeof trailer);
    trailer.journal = input.u32();
    trailer.next_free = input.u8();
    trailer.filed = input.u32();
    trailer.staged_number = input.u32();
    std::memcpy(at, &trailer, sizeof trailer);

    view(count);
    tq::AlarmChain chain(memory.data(), capacity);
    static_cast<void>(chain.is_sound());
    tq_alarm_slot_t record{};
    for (unsigned step = 0; step < steps % 16; ++step) {
        const std::uint8_t what = input.u8();
        switch (what % 4) {
        case 0:
            chain.recover();
            break;
        case 1:
            chain.remove(what >> 2);
            break;
        case 2:
            diagd::delete_records({store(), capacity}, static_cast<std::uint8_t>(what >> 2) % 9);
            break;
        default:
            chain.add(record);
        }
        view(count);
    }
    chain.recover();
    chain.rebuild();
    fuzz::expect(chain.is_sound(), "a store that was built again is sound");
    const std::uint64_t filed = chain.filed();
    chain.add(record);
    fuzz::expect(chain.is_sound() && chain.filed() == filed + 1, "and takes a record");
    return 0;
}
