// SPDX-License-Identifier: GPL-2.0-or-later
// Modules as they have been read, for the tests of what shows them.
#pragma once

#include "diagd/transceiver/memory/module_listing.hpp"

#include <limits>

namespace diagd {

inline constexpr Interface pon{PortKind::gpon, 0, 1};
inline constexpr Interface gigabit{PortKind::gigabit_ethernet, 0, 2};
inline constexpr OpticalValues sample{25.5F, 3.3F, 10.0F, 2.5F, -3.25F};
inline const QsfpReading qsfp_sample{{},
                                     25.0F,
                                     3.3F,
                                     {10.0F, 20.0F, 30.0F, 131.07F},
                                     {0.0F, 1.0F, 2.0F, -std::numeric_limits<float>::infinity()},
                                     {-10.0F, -1.5F, -2.5F, -3.5F},
                                     0};

} // namespace diagd
