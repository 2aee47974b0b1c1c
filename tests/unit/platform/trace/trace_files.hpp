// SPDX-License-Identifier: GPL-2.0-or-later
// Switches trace and fault table on for a whole test program, with files of its own.  Included once per
// program.
#pragma once

#include "tests/unit/temporary_folder.hpp"

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace trace_files {

inline TemporaryFolder *folder;

// The files must be named in the environment before the library looks there, which it does while the program
// is loaded.
__attribute__((constructor(101))) static void name_files()
{
    folder = new TemporaryFolder;
    setenv("TQ_TRACE", folder->file("trace").c_str(), 1);
    setenv("TQ_FAULTS", folder->file("faults").c_str(), 1);
}

// A program that only lists its tests runs no test environment, so this is left to the end of the process.
__attribute__((destructor)) static void remove_files()
{
    delete folder;
}

inline void write_faults(const std::string &text)
{
    folder->write("faults", text);
}

inline std::vector<std::string> lines()
{
    std::vector<std::string> found;
    std::ifstream file(folder->file("trace"));
    for (std::string line; std::getline(file, line);)
        found.push_back(line);
    return found;
}

// A line without its number and time.
inline std::string event(const std::string &line)
{
    return line.substr(line.find(' ', line.find(' ') + 1) + 1);
}

} // namespace trace_files
