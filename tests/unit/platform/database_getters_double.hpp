// SPDX-License-Identifier: GPL-2.0-or-later
// The database getters that libtqapi calls, answered from this record.
#pragma once

#include <map>
#include <string>

struct ServerDouble {
    int enable = -1;     // not set
    std::string address; // not set when empty
    int port = -1;       // not set
};

struct DatabaseDouble {
    int result = 0;                                  // of every getter that has a value
    std::map<int, std::string> level;                // by alarm id
    std::map<int, bool> print, record, trap, remote; // by alarm id
    std::string flash_level;
    ServerDouble ipv4, ipv6;
    int server_result = 0; // of every getter of a server that has a value
    int calls = 0;
};
extern DatabaseDouble database_double;
