// SPDX-License-Identifier: GPL-2.0-or-later
// A terminal at which nobody types, to be the input of a tool: who reads finds the end at once, as with
// /dev/null, and tools that want a terminal before they show anything (top) have one.
#pragma once

#include "base/fd.hpp"

#include <fcntl.h>
#include <termios.h>

#include <array>
#include <cstdlib>
#include <utility>

class EmptyTerminal {
public:
    EmptyTerminal() noexcept
    {
        std::array<char, 64> name;
        if (!master_ || grantpt(master_.get()) != 0 || unlockpt(master_.get()) != 0 ||
            ptsname_r(master_.get(), name.data(), name.size()) != 0)
            return;
        base::Fd slave(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
        struct termios settings {};
        if (!slave || tcgetattr(slave.get(), &settings) != 0)
            return;
        settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        settings.c_cc[VMIN] = 0; // a read never waits
        settings.c_cc[VTIME] = 0;
        if (tcsetattr(slave.get(), TCSANOW, &settings) == 0)
            slave_ = std::move(slave);
    }

    // To be handed on as an input while this lives; negative when the system has no terminal to give.
    [[nodiscard]] int get() const noexcept { return slave_.get(); }

private:
    base::Fd master_{posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
    base::Fd slave_;
};
