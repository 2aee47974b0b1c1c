// SPDX-License-Identifier: GPL-2.0-or-later
// Text displays of the module listing.
#pragma once

#include "diagd/transceiver/memory/module_listing.hpp"

#include <span>
#include <string>

namespace diagd {

// Stands before both displays.
[[nodiscard]] std::string legend_text();
// One table per interface: diagnostic values, or "N/A" without a module.
[[nodiscard]] std::string diagnosis_text(std::span<const InterfaceReading> listing);
// Five threshold tables per interface with a module: their headings and the interface's name.
// No value stands under them: thresholds are set, shown and watched by the alarm log.
[[nodiscard]] std::string threshold_text(std::span<const InterfaceReading> listing);

} // namespace diagd
