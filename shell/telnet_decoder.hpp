// SPDX-License-Identifier: GPL-2.0-or-later
// The telnet protocol (RFC 854, 1073) as far as a vty needs it: separates text from commands and answers the
// options offered.  No input or output of its own.
#pragma once

#include "shell/terminal.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace diagsh {

class TelnetDecoder {
public:
    // Takes bytes from the daemon, cut anywhere; returns the text among them.  Answers to commands are added
    // to `replies`: the daemon may echo and suppress go-ahead, we tell the window size, all else is declined.
    std::string decode(std::string_view bytes, WindowSize window, std::string &replies);

    // True once the daemon wants to know the window size.
    bool wants_window_size() const { return m_wants_window_size; }

private:
    enum class State { text, command, option, subnegotiation, subnegotiation_command };

    void answer_option(std::uint8_t option, WindowSize window, std::string &replies);

    State m_state = State::text;
    std::uint8_t m_command = 0;
    bool m_wants_window_size = false;
};

// The window size as a subnegotiation (RFC 1073).
std::string window_size_message(WindowSize window);

// What a person typed, ready to send: a byte that telnet takes for a command is doubled.
std::string encode_typed(std::string_view typed);

} // namespace diagsh
