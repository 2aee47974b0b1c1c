// SPDX-License-Identifier: GPL-2.0-or-later
// The telnet protocol (RFC 854, 1073) as far as a vty needs it.
#include "shell/telnet_decoder.hpp"

#include <arpa/telnet.h>

namespace diagsh {

namespace {

void append_command(std::string &to, int command, std::uint8_t option)
{
    to += static_cast<char>(IAC);
    to += static_cast<char>(command);
    to += static_cast<char>(option);
}

} // namespace

std::string window_size_message(WindowSize window)
{
    std::string size;
    for (const std::uint16_t value : {window.columns, window.rows}) {
        size += static_cast<char>(value >> 8);
        size += static_cast<char>(value & 0xFF);
    }
    std::string message;
    append_command(message, SB, TELOPT_NAWS);
    message += encode_typed(size);
    message += static_cast<char>(IAC);
    message += static_cast<char>(SE);
    return message;
}

std::string encode_typed(std::string_view typed)
{
    std::string out;
    for (const char c : typed) {
        out += c;
        if (c == static_cast<char>(IAC))
            out += c;
    }
    return out;
}

void TelnetDecoder::answer_option(std::uint8_t option, WindowSize window, std::string &replies)
{
    switch (m_command) {
    case WILL:
        append_command(replies, option == TELOPT_ECHO || option == TELOPT_SGA ? DO : DONT, option);
        break;
    case DO:
        append_command(replies, option == TELOPT_NAWS ? WILL : WONT, option);
        if (option == TELOPT_NAWS) {
            m_wants_window_size = true;
            replies += window_size_message(window);
        }
        break;
    default: // WONT and DONT: nothing of the kind was asked for
        break;
    }
}

std::string TelnetDecoder::decode(std::string_view bytes, WindowSize window, std::string &replies)
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<std::uint8_t>(c);
        switch (m_state) {
        case State::text:
            if (byte == IAC)
                m_state = State::command;
            else if (byte != 0) // a NUL is padding (RFC 854)
                text += c;
            break;
        case State::command:
            m_state = State::text;
            if (byte == IAC) {
                text += c;
            } else if (byte == SB) {
                m_state = State::subnegotiation;
            } else if (byte >= WILL) {
                m_command = byte;
                m_state = State::option;
            }
            break;
        case State::option:
            m_state = State::text;
            answer_option(byte, window, replies);
            break;
        case State::subnegotiation:
            if (byte == IAC)
                m_state = State::subnegotiation_command;
            break;
        case State::subnegotiation_command:
            m_state = byte == SE ? State::text : State::subnegotiation;
            break;
        }
    }
    return text;
}

} // namespace diagsh
