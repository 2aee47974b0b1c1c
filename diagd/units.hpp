// SPDX-License-Identifier: GPL-2.0-or-later
// Every initialiser, in the order in which the daemon calls it.  Each reports its own failures; the results
// say nothing that the start order would act on.
#pragma once

#include <cstdint>

struct thread_master;
struct zebra_privs_t;

// Configuration database: hooks for every vty session, and the subscriptions of the alarm log.
void alarm_log_database_init();
void alarm_log_database_free(); // at the end: closes the daemon's connection

// Peers: the service bus, zebra, and the port numbers in their order.
int diag_sclient_init(struct thread_master *master, std::uint32_t instance, struct zebra_privs_t *privs);
int diag_zclient_init(struct thread_master *master);
int diag_port_init();
void diag_zebra_reset_send_waiting(); // at the end: sends what other threads have asked zebra's client for

// Alarm log defaults and the threshold monitor's timer.
int initial_alarm_log_config();

// Hardware monitors, each with a thread of its own.
int fan_init();
int usb_init();
int power_init();
int reset_init();

// Commands.
int phy_cmd_init();
int i2c_cmd_init();
int diag_cmd_init();
int cpld_init();
int system_cmd_init();
int transceiver_cmd_init();
