// SPDX-License-Identifier: GPL-2.0-or-later
// Where an OLT's daemon can be reached.
#pragma once

#include <cstdint>
#include <string>

namespace diagsh {

constexpr std::uint16_t vty_port = 2709;

struct OltPaths {
    std::string vty_socket; // the daemon's unix vty socket
    std::string state;      // the state folder that was asked for, empty when none was
};

// The OLT whose state folder is `state`; with an empty `state` the one of this machine (/run/frr, as on a
// board and inside a box), else the one that `run` starts from the build folder diagsh lies in.
OltPaths find_olt(const std::string &state);

} // namespace diagsh
