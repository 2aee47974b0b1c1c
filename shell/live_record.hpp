// SPDX-License-Identifier: GPL-2.0-or-later
// A record of the live log, as libfrr 8.4 sends it for `terminal monitor` (lib/zlog_live.h): one record a
// packet, in the byte order of the machine.  No input or output of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace diagsh {

constexpr std::size_t longest_live_packet = 256 * 1024; // more than a socket's usual send buffer holds

struct LiveRecord {
    std::time_t time = 0;   // when it was logged, in seconds since 1970
    std::uint32_t lost = 0; // records the daemon could not send since the monitor began, modulo 2^32
    std::string_view text;  // within the packet
};

// The record in `packet`; none when the lengths in it do not fit together.
std::optional<LiveRecord> parse_live_record(std::string_view packet);

// The line that a record makes in the daemon's log file, with its newline: local time to the second, the
// daemon's name in the log, text.
std::string log_line(const LiveRecord &record);

} // namespace diagsh
