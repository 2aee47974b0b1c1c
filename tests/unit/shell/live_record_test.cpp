// SPDX-License-Identifier: GPL-2.0-or-later
// Records of the live log, laid out by the header of the library that sends them.
#include <zebra.h>

#include <zlog_live.h>

#include "shell/live_record.hpp"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

using diagsh::log_line;
using diagsh::parse_live_record;

namespace {

constexpr std::uint64_t noon = 1795262400; // 2026-11-21 12:00:00 UTC

zlog_live_hdr header_for(const std::string &text)
{
    zlog_live_hdr header{};
    header.ts_sec = noon;
    header.ts_nsec = 999'999'999;
    header.hdrlen = sizeof header;
    header.pid = 4711;
    header.tid = 4712;
    header.lost_msgs = 7;
    header.prio = LOG_ERR;
    header.textlen = static_cast<std::uint32_t>(text.size());
    std::memcpy(header.uid, "ABCDE-FGHIJ", sizeof header.uid);
    header.ec = 100;
    return header;
}

std::string bytes_of(const zlog_live_hdr &header)
{
    return {reinterpret_cast<const char *>(&header), sizeof header};
}

std::string packet_of(const std::string &text)
{
    return bytes_of(header_for(text)) + text;
}

} // namespace

TEST(LiveRecord, has_the_time_the_text_and_the_count_of_lost_records)
{
    const std::string packet = packet_of("fan stopped");
    const auto record = parse_live_record(packet);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->time, static_cast<std::time_t>(noon));
    EXPECT_EQ(record->lost, 7U);
    EXPECT_EQ(record->text, "fan stopped");
}

TEST(LiveRecord, text_follows_the_positions_of_its_arguments)
{
    zlog_live_hdr header = header_for("fan 2 stopped");
    header.n_argpos = 2;
    header.hdrlen += 2 * sizeof(fmt_outpos);
    const std::string packet =
        bytes_of(header) + std::string(2 * sizeof(fmt_outpos), '\x01') + "fan 2 stopped";
    const auto record = parse_live_record(packet);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->text, "fan 2 stopped");
}

TEST(LiveRecord, what_follows_the_text_is_not_shown)
{
    const std::string packet = packet_of("fan stopped") + "more";
    const auto record = parse_live_record(packet);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->text, "fan stopped");
}

TEST(LiveRecord, crashing_daemon_leaves_the_header_size_out)
{
    zlog_live_hdr header{};
    header.ts_sec = noon;
    header.prio = LOG_CRIT;
    header.textlen = 8;
    const std::string packet = bytes_of(header) + "crashing";
    const auto record = parse_live_record(packet);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->text, "crashing");
}

TEST(LiveRecord, may_have_no_text)
{
    const std::string packet = packet_of("");
    const auto record = parse_live_record(packet);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->text, "");
}

TEST(LiveRecord, cut_anywhere_is_none)
{
    const std::string packet = packet_of("fan stopped");
    for (std::size_t size = 0; size < packet.size(); ++size)
        EXPECT_FALSE(parse_live_record(std::string_view(packet).substr(0, size))) << size;
}

TEST(LiveRecord, header_size_outside_the_packet_or_inside_the_header_is_none)
{
    const std::string text = "fan stopped";
    for (const std::uint32_t size : {1U, 71U, 84U, 0xFFFFFFFFU}) {
        zlog_live_hdr header = header_for(text);
        header.hdrlen = size;
        EXPECT_FALSE(parse_live_record(bytes_of(header) + text)) << size;
    }
}

TEST(LiveRecord, text_size_beyond_the_packet_is_none)
{
    const std::string text = "fan stopped";
    for (const std::uint32_t size : {12U, 0xFFFFFFFFU}) {
        zlog_live_hdr header = header_for(text);
        header.textlen = size;
        EXPECT_FALSE(parse_live_record(bytes_of(header) + text)) << size;
    }
}

TEST(LogLine, is_that_of_the_log_file_in_local_time)
{
    ::setenv("TZ", "UTC-2", 1);
    ::tzset();
    const std::string packet = packet_of("alarm fan (major): hello");
    EXPECT_EQ(log_line(*parse_live_record(packet)), "2026/11/21 14:00:00 DIAGD: alarm fan (major): hello\n");
    ::unsetenv("TZ");
    ::tzset();
}
