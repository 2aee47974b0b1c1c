// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's side of the configuration database: a connection for every vty session, and the subscriptions
// of the alarm log.  A session whose connection cannot be opened goes on without it.
#include "diagd/alarm_log/servers/remote_server.hpp"
#include "diagd/core/state.hpp"

#include <cstdio>

namespace {

int vty_connected(struct vty *vty, tq_database_t *db) noexcept
{
    if (db_connect_init_with_vty(vty, db) != 0)
        return std::printf("DIAG Msg: vty connect to database %s!\n", "failed");
    return 0;
}

int vty_disconnected(struct vty *vty, tq_database_t *db) noexcept
{
    return db_disconnect_free_with_vty(vty, db);
}

constexpr tq_db_entry alarm_log_entries[] = {
    {"/olt-alarm-log:alarm-log/remote-server-ipv4/ipv4-addr", alarm_log_remote_server_ip_addr_change_cb,
     alarm_log_remote_server_ip_addr_get_cb},
    {"/olt-alarm-log:alarm-log/remote-server-ipv4/port", alarm_log_remote_server_port_change_cb,
     alarm_log_remote_server_port_get_cb},
    {},
};
constexpr tq_db_module alarm_log_module = {"olt-alarm-log", alarm_log_entries};
constexpr const tq_db_module *modules[] = {&alarm_log_module, nullptr};

} // namespace

void alarm_log_database_init()
{
    tq_db_cb_init_func(vty_connected, &g_diagd_db);
    tq_db_cb_free_func(vty_disconnected, &g_diagd_db);
    db_database_init(&g_diagd_db, modules);
    diagd::register_database_debug();
}

void alarm_log_database_free()
{
    database_disconnect(&g_diagd_db);
}
