// SPDX-License-Identifier: GPL-2.0-or-later
// Reports about where alarms go (see sink_state.hpp).
#include "platform/sinks/sink_state.hpp"

#include "tq_api.h"

#include <zebra.h>

#include <log.h>

namespace tq {

void SinkState::note(const std::string &receiver, int error)
{
    if (error == error_ && (error == 0 || receiver == receiver_))
        return;
    error_ = error;
    receiver_ = receiver;
    if (error != 0)
        zlog_warn("alarms do not get out to %s: %s", receiver.c_str(), tq_strerror(error));
    else
        zlog_notice("alarms get out to %s again", receiver.c_str());
}

} // namespace tq
