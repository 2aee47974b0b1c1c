// SPDX-License-Identifier: GPL-2.0-or-later
// What the daemon measures in the module of each PON port.  Pure.
#pragma once

#include <string>
#include <vector>

namespace diagsh {

struct PortModule {
    std::string port; // "0/3"
    bool plugged = false;
    bool gpon = false;  // the daemon reads values of GPON optics
    bool xgpon = false; // of XG-PON optics; a module may have both
};

// From the answer of "show transceiver json", in its order; empty when that is no JSON object.
std::vector<PortModule> parse_port_modules(const std::string &json);

} // namespace diagsh
