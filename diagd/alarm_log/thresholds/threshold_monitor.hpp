// SPDX-License-Identifier: GPL-2.0-or-later
// The threshold monitor: every three seconds it compares the board's and the optical modules' values with
// their thresholds, on the main thread.
#pragma once

namespace diagd {

// Once, before the event loop runs.  Every alarm begins in the unknown state; the optical part is switched
// on.
void start_threshold_monitor();

} // namespace diagd
