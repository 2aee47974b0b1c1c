// SPDX-License-Identifier: GPL-2.0-or-later
// Bytes of the notifications, read by hand as BER (X.690); a real receiver reads them in the system tests.
#include "platform/sinks/trap_message.hpp"
#include "platform/sinks/trap_sinks.hpp"
#include "tests/unit/platform/sinks/sample_time.hpp"

#include "tq_api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::IsEmpty;

namespace {

enum Tag : unsigned char {
    integer = 0x02,
    octets = 0x04,
    object = 0x06,
    sequence = 0x30,
    unsigned32 = 0x42,
    ticks = 0x43,
    trap2 = 0xA7
};

// One element's content, taken from the front of the bytes.
std::string take(std::string_view &bytes, unsigned char tag)
{
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes.at(i)); };
    EXPECT_EQ(at(0), tag);
    std::size_t head = 2, length = at(1);
    if (length > 0x80) {
        head += length & 0x7F;
        length = 0;
        for (std::size_t i = 2; i < head; ++i)
            length = length << 8 | at(i);
    }
    const std::string content(bytes.substr(head, length));
    EXPECT_EQ(content.size(), length);
    bytes.remove_prefix(head + length);
    return content;
}

std::string oid_of_object(char number)
{
    // 1.3.6.1.4.1.32473.1.1.N.0; 32473 is 0x81 0xFD 0x59 in base 128
    return std::string("\x2B\x06\x01\x04\x01\x81\xFD\x59\x01\x01", 10) + number + '\0';
}

struct Message {
    std::string community;
    std::vector<std::tuple<std::string, unsigned char, std::string>> values; // object, tag, content
};

Message read(const std::string &bytes)
{
    Message message;
    std::string_view all = bytes;
    const std::string outer = take(all, sequence);
    EXPECT_THAT(all, IsEmpty());
    std::string_view inner = outer;
    EXPECT_EQ(take(inner, integer), std::string(1, '\x01')); // SNMPv2c
    message.community = take(inner, octets);
    const std::string pdu = take(inner, trap2);
    EXPECT_THAT(inner, IsEmpty());
    std::string_view fields = pdu;
    take(fields, integer); // request
    EXPECT_EQ(take(fields, integer), std::string(1, '\0'));
    EXPECT_EQ(take(fields, integer), std::string(1, '\0'));
    const std::string list = take(fields, sequence);
    for (std::string_view rest = list; !rest.empty();) {
        const std::string pair = take(rest, sequence);
        std::string_view value = pair;
        const std::string name = take(value, object);
        const auto tag = static_cast<unsigned char>(value.at(0));
        message.values.emplace_back(name, tag, take(value, tag));
    }
    return message;
}

tq::Alarm alarm(std::uint16_t id, const char *message, long east = -12600)
{
    tq::Alarm made{id, 4, sample_time(east), message, 250'000};
    made.request.uplink_port = 128;
    made.request.pon = 3;
    made.request.onu = 17;
    made.request.onu_port = 2;
    return made;
}

} // namespace

TEST(TrapMessage, carries_uptime_name_and_every_object_in_order)
{
    const Message message = read(tq::trap_message(alarm(0, "Open!"), "public", 4711));
    EXPECT_EQ(message.community, "public");
    using Value = std::tuple<std::string, unsigned char, std::string>;
    const std::vector<Value> expected = {
        {std::string("\x2B\x06\x01\x02\x01\x01\x03\0", 8), ticks, "\x12\x67"},
        {std::string("\x2B\x06\x01\x06\x03\x01\x01\x04\x01\0", 10), object,
         std::string("\x2B\x06\x01\x04\x01\x81\xFD\x59\x01\0\x01", 11)},
        {oid_of_object(1), unsigned32, std::string(1, '\0')},
        {oid_of_object(2), octets, "fan"},
        {oid_of_object(3), integer, std::string(1, '\0')},
        {oid_of_object(4), integer, "\x04"},
        {oid_of_object(5), octets, tq_alarm_log_info[0].description},
        {oid_of_object(6), octets, "Open!"},
        {oid_of_object(7), octets, "\x07\xEA\x0B\x15\x0B\x0C\x0D\x02-\x03\x1E"},
        {oid_of_object(8), unsigned32, std::string("\0\x80", 2)},
        {oid_of_object(9), unsigned32, "\x03"},
        {oid_of_object(10), unsigned32, "\x11"},
        {oid_of_object(11), unsigned32, "\x02"},
    };
    EXPECT_EQ(message.values, expected);
}

TEST(TrapMessage, an_alarm_that_the_catalogue_does_not_have_is_an_event_without_name)
{
    const Message message = read(tq::trap_message(alarm(512, "x"), "c", 0));
    ASSERT_EQ(message.values.size(), 13u);
    EXPECT_EQ(std::get<2>(message.values[2]), std::string("\x02\0", 2));
    EXPECT_THAT(std::get<2>(message.values[3]), IsEmpty());
    EXPECT_EQ(std::get<2>(message.values[4]), "\x01");
    EXPECT_THAT(std::get<2>(message.values[6]), IsEmpty());
}

TEST(TrapMessage, the_offset_from_utc_has_its_direction)
{
    const auto time_of = [](long east) {
        return std::get<2>(read(tq::trap_message(alarm(0, "x", east), "c", 0)).values.at(8));
    };
    const std::string date_and_time = "\x07\xEA\x0B\x15\x0B\x0C\x0D\x02";
    EXPECT_EQ(time_of(0), date_and_time + std::string("+\0\0", 3));
    EXPECT_EQ(time_of(20700), date_and_time + "+\x05\x2D");
}

TEST(TrapMessage, the_longest_text_and_community_fit)
{
    const std::string text(1023, 'x'), community(tq::max_community, 'c');
    const Message message = read(tq::trap_message(alarm(0, text.c_str()), community, 1));
    EXPECT_EQ(message.community, community);
    EXPECT_EQ(std::get<2>(message.values[7]), text);
}

TEST(TrapMessage, texts_of_any_bytes_and_none_are_carried)
{
    for (const char *text : {"", "%s%n", "\xFF\x01\n"})
        EXPECT_EQ(std::get<2>(read(tq::trap_message(alarm(0, text), "c", 1)).values[7]), text);
}

TEST(TrapMessage, a_longer_text_is_cut_and_nothing_is_printed)
{
    testing::internal::CaptureStderr();
    const std::string text(70000, 'x'), community(tq::max_community, 'c');
    const Message message = read(tq::trap_message(alarm(0, text.c_str()), community, 1));
    EXPECT_EQ(std::get<2>(message.values[7]), text.substr(0, 1023));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), IsEmpty());
}

TEST(TrapMessage, every_message_has_a_number_of_its_own)
{
    EXPECT_NE(tq::trap_message(alarm(0, "x"), "c", 1), tq::trap_message(alarm(0, "x"), "c", 1));
}
