// SPDX-License-Identifier: GPL-2.0-or-later
// SNMPv2c notifications: each is one element of BER (X.690) within another, to its last byte.
// Input: alarm id, level, what the alarm is about, offset from UTC, uptime; community and message.
#include "platform/sinks/trap_encoder.hpp"
#include "platform/sinks/trap_message.hpp"
#include "tests/fuzz/fuzz.hpp"

namespace {

constexpr unsigned char sequence = 0x30, trap2 = 0xA7;

// Number of elements that the bytes are made of, one behind the other; constructed ones are looked into.
unsigned elements(std::string_view bytes)
{
    unsigned count = 0;
    for (; !bytes.empty(); ++count) {
        const auto at = [bytes](std::size_t i) {
            fuzz::expect(i < bytes.size(), "an element has a head");
            return static_cast<unsigned char>(bytes[i]);
        };
        std::size_t head = 2, length = at(1);
        if (length > 0x80) {
            head += length & 0x7F;
            length = 0;
            for (std::size_t i = 2; i < head; ++i)
                length = length << 8 | at(i);
        }
        fuzz::expect(head + length <= bytes.size(), "an element ends within the one around it");
        if (at(0) == sequence || at(0) == trap2)
            elements(bytes.substr(head, length));
        bytes.remove_prefix(head + length);
    }
    return count;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    tq::Alarm alarm{.id = input.u16(), .level = input.u8(), .time = {}, .message = nullptr};
    for (std::uint32_t *number :
         {&alarm.request.uplink_port, &alarm.request.pon, &alarm.request.onu, &alarm.request.onu_port})
        *number = input.u32();
    alarm.microseconds = static_cast<int>(input.u32() % 1'000'000);
    alarm.time.tm_gmtoff = static_cast<std::int16_t>(input.u16()) * 60L;
    const unsigned long uptime = input.u32();
    const std::string community(input.word().substr(0, tq::max_community));
    const std::string message(input.word());
    alarm.message = message.c_str();

    std::string sent;
    tq_trap_encode(alarm, community, uptime, sent);
    fuzz::expect(!sent.empty() && sent.size() <= 2048, "every alarm makes a notification");
    fuzz::expect(elements(sent) == 1, "a notification is one element");
    return 0;
}
