// SPDX-License-Identifier: GPL-2.0-or-later
// Whether alarms get out to one receiver, told in the log of this process when it changes and not at every
// alarm.  Whoever uses it keeps other threads away; the thread must be one that libfrr knows.
#pragma once

#include <string>

namespace tq {

class SinkState {
public:
    // What became of an alarm to `receiver`, such as "log server 192.0.2.1 port 514": 0, an errno value or a
    // platform error code.
    void note(const std::string &receiver, int error);

    // Nothing is to be sent there any more; the next failure is news again.
    void forget() { error_ = 0; }

private:
    int error_ = 0;
    std::string receiver_; // that of error_
};

} // namespace tq
