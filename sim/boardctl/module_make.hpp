// SPDX-License-Identifier: GPL-2.0-or-later
// "module make": a description file from options.
#pragma once

#include <string>
#include <vector>

namespace sim {

// `words`: file to write, then options (see module_make_usage).  The result is read back before the file is
// written, so that what is written can be plugged.  Throws std::exception with one line.
void make_module(const std::vector<std::string> &words);

extern const char module_make_usage[];

} // namespace sim
