// SPDX-License-Identifier: GPL-2.0-or-later
// Database callbacks of the remote log server's settings.  Every change is accepted: whoever forwards records
// reads the settings from the database.  They run on a thread of the database library and must not log.
#pragma once

#include <cstdint>

int alarm_log_remote_server_ip_addr_change_cb(void *session, const char *module, const char *xpath, int event,
                                              std::uint32_t request, void *priv);
int alarm_log_remote_server_port_change_cb(void *session, const char *module, const char *xpath, int event,
                                           std::uint32_t request, void *priv);
// Provide nothing: the values are configuration, not state.
int alarm_log_remote_server_ip_addr_get_cb(void *session, const char *module, const char *xpath,
                                           std::uint32_t request, void **parent, void *priv);
int alarm_log_remote_server_port_get_cb(void *session, const char *module, const char *xpath,
                                        std::uint32_t request, void **parent, void *priv);
