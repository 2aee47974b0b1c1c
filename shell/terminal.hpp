// SPDX-License-Identifier: GPL-2.0-or-later
// The terminal of a session: keys one by one without echo, its size, the signals that concern it.  It is
// given back as it was, whatever ends the session.
#pragma once

#include "base/fd.hpp"

#include <termios.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace diagsh {

struct WindowSize {
    std::uint16_t columns = 80;
    std::uint16_t rows = 24;
};

// Size of the window that standard output shows; 80 by 24 where it does not say.
WindowSize terminal_size();

// Writes all of it; false when that cannot be.
bool write_all(int fd, std::string_view bytes);

namespace key {
constexpr char interrupt = 0x03; // Control-C
constexpr char escape = 0x1B;
constexpr char leave = 0x1D; // Control-], as in every telnet
} // namespace key

class Terminal {
public:
    enum class Newlines {
        translated, // a newline leads to the first column as well
        passed,     // for a peer that writes both
    };
    // Throws Failure when standard input is no terminal.
    explicit Terminal(Newlines newlines);
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    // Takes the terminal again from a library that has set it otherwise.
    void take();

    enum class Event {
        keys,   // read_keys() does not wait
        peer,   // `peer` is readable or closed
        second, // `second` is
        window, // the window has another size
        end,    // a signal ends the session
    };
    // Waits for what comes first.  A descriptor of -1 is not waited for.
    Event wait(int peer, int second = -1) const;

    // The keys that have come, at least one; none when the terminal has gone away.
    std::string read_keys();
    // The next key alone; waits.  None at the end of the session.
    std::optional<char> read_key();
    // Those that read_key() has left for the next time.
    const std::string &unread() const { return m_keys; }
    // Keys that came while nobody wanted them; they are read next.
    void put_back(const std::string &keys) { m_keys = keys + m_keys; }

private:
    termios m_saved{};
    termios m_raw{};
    base::Fd m_signals;
    std::string m_keys;
};

} // namespace diagsh
