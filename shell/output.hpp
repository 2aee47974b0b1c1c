// SPDX-License-Identifier: GPL-2.0-or-later
// What a command says, on its way to the screen: a page at a time, and laid out when it is too wide.
#pragma once

#include "shell/terminal.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

// What becomes of lines that are wider than the terminal.
enum class Wide {
    as_is,  // the terminal wraps them
    fold,   // tables in parts, other lines continued
    scroll, // all of it in a view that scrolls both ways
};

class Output {
public:
    // `lines`: of a page, -1 those of the terminal, 0 no pages.
    Output(Terminal &terminal, int lines, Wide wide);

    // Shows whole lines as they come; whoever reads a page holds up the daemon.  False once the person wants
    // no more.
    bool add(std::string_view text);
    // Shows what is left.
    void end();
    // The person wants no more of it: what still comes is dropped.
    void stop() { m_stopped = true; }
    // A table was wider than the terminal, which broke its lines.
    bool broke_table() const { return m_broken > 1; }
    // The person leaves the session.
    bool left() const { return m_left; }

private:
    void show_block();
    void show_line(std::string_view line);
    void ask_for_more();

    Terminal &m_terminal;
    int m_lines;
    Wide m_wide;
    std::string m_rest;               // a line not yet ended
    std::vector<std::string> m_block; // lines that are laid out together
    std::size_t m_used = 0;           // rows of this page
    std::size_t m_broken = 0;         // lines that the terminal had to break
    bool m_stopped = false;
    bool m_left = false;
};

} // namespace diagsh
