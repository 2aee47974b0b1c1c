// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's peers, the service bus and zebra: what they are told before the board goes down, and the port
// numbers that the device's port record gives.
#pragma once

#include <array>
#include <cstdint>

// Tells the service bus that the system is about to reset.  The bus library's result; -1 without a client.
int diag_sclient_reset_send();

// Tells zebra the same; from any thread.  libfrr's result; 0, and nothing is sent, without a client.  The
// client belongs to the event loop: for another thread the notice is sent as soon as that is free, and a
// caller who has waited for a second goes on with the result for a message that is still to leave, 1.
int diag_zebra_reset_send();

// Ends the zebra client for a shutdown that wants to.
void diag_zclient_stop();

// Port numbers of the device, in the order in which the daemon counts its ports; all zero when the port
// record could not be read.
extern std::array<std::uint32_t, 8> diag_port;
