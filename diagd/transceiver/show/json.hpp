// SPDX-License-Identifier: GPL-2.0-or-later
// JSON display of the module listing.
#pragma once

#include "diagd/core/command.hpp"
#include "diagd/transceiver/memory/module_listing.hpp"

#include <span>

namespace diagd {

// An object with one member per interface, each an array of one object.  Values are texts, wavelengths
// integers; what a module does not have is the empty text.
[[nodiscard]] Json module_listing_json(std::span<const InterfaceReading> listing);

} // namespace diagd
