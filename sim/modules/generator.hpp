// SPDX-License-Identifier: GPL-2.0-or-later
// From a module's description in JSON to its memory.
#pragma once

#include <string>
#include <string_view>

#include "sim/modules/module_image.hpp"

namespace sim {

// `file` is used in complaints.  Throws std::exception with one line naming file and field.
ModuleImage generate_module(std::string_view text, const std::string &file);

} // namespace sim
