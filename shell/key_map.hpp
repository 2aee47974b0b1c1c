// SPDX-License-Identifier: GPL-2.0-or-later
// Keys of today's terminals as those that libfrr's own line editing knows, which are Emacs' and the arrows.
// No input or output of its own.
#pragma once

#include <string>
#include <string_view>

namespace diagsh {

class KeyMap {
public:
    // Takes what was typed, cut anywhere; returns what is to be sent.  The beginning of a sequence is kept
    // until its rest comes; a lone Escape, too, which libfrr does not act on either.
    std::string translate(std::string_view typed);

private:
    std::string m_begun;
};

} // namespace diagsh
