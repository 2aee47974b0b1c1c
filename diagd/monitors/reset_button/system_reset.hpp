// SPDX-License-Identifier: GPL-2.0-or-later
// What every reset does just before the board goes down: the logs are saved, the watchdog is stopped.
#pragma once

// Copies the current logs to flash.  What cannot be copied is lost: a reset goes ahead.
void system_backup();

// Stops the watchdog that would restart daemons.  `reason` names the operation and must be a literal.
void stop_watchdog(const char *reason);

// Stops the watchdog and writes out the file systems.  The board itself is not reset.
void system_reboot();
