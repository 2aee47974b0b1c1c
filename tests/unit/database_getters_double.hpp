// SPDX-License-Identifier: GPL-2.0-or-later
// The database getters that libtqapi calls, answered from this record.
#pragma once

#include <map>
#include <string>

struct DatabaseDouble {
    int result = 0;                                  // of every getter that has a value
    std::map<int, std::string> level;                // by alarm id
    std::map<int, bool> print, record, trap, remote; // by alarm id
    std::string flash_level;
    int calls = 0;
};
extern DatabaseDouble database_double;
