// SPDX-License-Identifier: GPL-2.0-or-later
// Port numbers of the device, in the order in which the daemon counts its ports.
#pragma once

#include <array>
#include <cstdint>

// All zero when the port record could not be read.
extern std::array<std::uint32_t, 8> diag_port;
