// SPDX-License-Identifier: GPL-2.0-or-later
// A module from files: a description of ours (.json) or dumps.
#pragma once

#include <string>
#include <vector>

#include "module_files/dump_reader.hpp"

namespace sim {

using module_files::ModuleFile;

// One description, or the dumps of one module (see assemble_module()).  Throws std::exception with one line
// that names the file.
ModuleFile read_module(const std::vector<std::string> &files, bool pad);

} // namespace sim
