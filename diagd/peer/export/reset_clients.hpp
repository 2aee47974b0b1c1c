// SPDX-License-Identifier: GPL-2.0-or-later
// What is done just before the board goes down: the peers are told, the logs saved, the watchdog stopped.
#pragma once

// Tells the service bus that the system is about to reset.  The bus library's result; -1 without a client.
int diag_sclient_reset_send();

// Tells zebra the same.  libfrr's result; 0, and nothing is sent, without a client.
int diag_zebra_reset_send();

// Ends the zebra client for a shutdown that wants to.
void diag_zclient_stop();

// Copies the current logs to flash.  What cannot be copied is lost: a reset goes ahead.
void system_backup();

// Stops the watchdog that would restart daemons.  `reason` names the operation and must be a literal.
void stop_watchdog(const char *reason);

// Stops the watchdog and writes out the file systems.  The board itself is not reset.
void system_reboot();
