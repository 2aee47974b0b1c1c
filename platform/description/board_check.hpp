// SPDX-License-Identifier: GPL-2.0-or-later
// What does not fit together in a description that can be read: ports without cages, cages that no display
// lists, devices where the daemon does not look for them.
#pragma once

#include <string>
#include <vector>

#include "platform/description/board_description.hpp"

namespace board {

// One line for each: the field, as "records[0].pon1[4].port", and what is wrong.  Empty: all fits.
std::vector<std::string> inconsistencies(const Board &board);

} // namespace board
