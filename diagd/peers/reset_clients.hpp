// SPDX-License-Identifier: GPL-2.0-or-later
// What the peers are told before the board goes down.
#pragma once

// Tells the service bus that the system is about to reset.  The bus library's result; -1 without a client.
int diag_sclient_reset_send();

// Tells zebra the same.  libfrr's result; 0, and nothing is sent, without a client.
int diag_zebra_reset_send();

// Ends the zebra client for a shutdown that wants to.
void diag_zclient_stop();
