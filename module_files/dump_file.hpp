// SPDX-License-Identifier: GPL-2.0-or-later
// What a file holds that should be one dump.
#pragma once

#include <string>

namespace module_files {

// The whole file; "-" is standard input.  Throws ModuleError when it cannot be read or is too large to be the
// dump of a module.
std::string read_dump_file(const std::string &file);

} // namespace module_files
