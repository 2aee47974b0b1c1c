// SPDX-License-Identifier: GPL-2.0-or-later
// A record of the live log.
#include "shell/live_record.hpp"

#include <array>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace diagsh {

namespace {

struct Header {
    std::uint64_t seconds;
    std::uint32_t nanoseconds;
    std::uint32_t header_size; // with the argument positions: where the text starts
    std::int64_t process;
    std::int64_t thread;
    std::uint32_t lost;
    std::uint32_t priority;
    std::uint32_t flags;
    std::uint32_t text_size; // something else may follow the text
    std::uint32_t text_prefix_size;
    std::array<char, 12> message_id;
    std::uint32_t error_code;
    std::uint32_t argument_count;
};
static_assert(sizeof(Header) == 72 && std::is_trivially_copyable_v<Header>);

} // namespace

std::optional<LiveRecord> parse_live_record(std::string_view packet)
{
    Header header;
    if (packet.size() < sizeof header)
        return std::nullopt;
    std::memcpy(&header, packet.data(), sizeof header);

    // What a crashing daemon still says comes with nothing but its time, priority and text size.
    const std::size_t start = header.header_size == 0 ? sizeof header : header.header_size;
    if (start < sizeof header || start > packet.size() || header.text_size > packet.size() - start)
        return std::nullopt;
    return LiveRecord{static_cast<std::time_t>(header.seconds), header.lost,
                      packet.substr(start, header.text_size)};
}

std::string log_line(const LiveRecord &record)
{
    std::tm time{};
    ::localtime_r(&record.time, &time);
    std::array<char, 64> stamp{};
    const std::size_t size = std::strftime(stamp.data(), stamp.size(), "%Y/%m/%d %H:%M:%S DIAGD: ", &time);
    return std::string(stamp.data(), size).append(record.text).append("\n");
}

} // namespace diagsh
