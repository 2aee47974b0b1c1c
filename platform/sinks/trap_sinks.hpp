// SPDX-License-Identifier: GPL-2.0-or-later
// Where traps go: a text file, one sink a line,
//
//     ADDRESS[:PORT] COMMUNITY
//
// with an IPv4 or IPv6 address in numbers, the latter in brackets when a port follows ([2001:db8::1]:1162).
// The port is 162 unless given.  '#' at the beginning of a word starts a comment.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tq {

inline constexpr const char *trap_sinks_path = "/etc/olt/trap-sinks.conf";
inline constexpr std::size_t max_trap_sinks = 16;

struct TrapSink {
    std::string address; // not yet known to be one
    std::uint16_t port;
    std::string community;
};

struct TrapSinks {
    std::vector<TrapSink> sinks;
    std::vector<std::string> mistakes; // what is wrong with the lines left out, for people to read
};

TrapSinks parse_trap_sinks(std::string_view text);

} // namespace tq
