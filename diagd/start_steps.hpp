// SPDX-License-Identifier: GPL-2.0-or-later
// What of the start belongs to no unit: the daemon as libfrr knows it, and steps of the start order.  "Ends
// the process" is exit status 0: whoever supervises the daemon must not take a board without semaphore or
// database for a crash and restart it in a circle.
#pragma once

struct frr_daemon_info;

// What libfrr is told about the daemon: names, vty port, signals, privileges.
extern struct frr_daemon_info diagd_di;

// Messages on standard output reach a log when they are printed, not when a buffer is full.
void line_buffer_stdout();

// Bounds what libc keeps of freed memory.  Left alone it keeps twice the largest block that was ever freed:
// reading the database frees one of a megabyte.
void limit_kept_memory();

// Makes the board's records.  Without them there are no ports.
void board_records_init();

// Creates or opens the board-access semaphore; ends the process when there is none.
void board_semaphore_init();

// The iptables tools that the system shows run find their extensions here, whatever the environment said.
void xtables_libdir_init();

// Opens the configuration database; ends the process when it cannot be opened.
void diagd_database_init();

// Port counts and interface table; without the port record both stay zero and the daemon runs with no ports.
void diagd_get_base_cfg();

// Where the CPLD is.
void cpld_bus_init();

// What the PON ports are for.
void pon_mode_init();

// The client of the service bus, which is instance 0 of the daemon.
void service_bus_init();

// Attaches the store of alarm records.
void alarm_store_init();

// Has what the start could not do told once libfrr has read the configuration, and errors in that on standard
// error, too.
void start_report_init();
