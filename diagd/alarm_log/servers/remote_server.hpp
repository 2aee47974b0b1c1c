// SPDX-License-Identifier: GPL-2.0-or-later
// The remote log servers, one of each address family, in the database.
#pragma once

#include "diagd/core/state.hpp"

#include "tq_database.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace diagd {

// The server of one address family.
struct RemoteServer {
    using Setter = int (*)(tq_database_t *, const void *value, int width, int apply);
    using Getter = int (*)(tq_database_t *, void *buffer, int *length);
    using Deleter = int (*)(tq_database_t *);

    const char *family;
    std::size_t address_size; // of the buffer that is stored
    Setter set_enable;
    Getter get_enable;
    Setter set_address;
    Getter get_address;
    Deleter delete_address;
    Setter set_port;
    Getter get_port;
    Deleter delete_port;
};

inline constexpr std::size_t largest_address_size = 64;

inline constexpr RemoteServer ipv4_server{
    "ipv4",
    16,
    db_olt_alarm_log_set_remote_server_ipv4_enable,
    db_olt_alarm_log_get_remote_server_ipv4_enable,
    db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr,
    db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr,
    db_olt_alarm_log_del_remote_server_ipv4_ipv4_addr,
    db_olt_alarm_log_set_remote_server_ipv4_port,
    db_olt_alarm_log_get_remote_server_ipv4_port,
    db_olt_alarm_log_del_remote_server_ipv4_port,
};

inline constexpr RemoteServer ipv6_server{
    "ipv6",
    largest_address_size,
    db_olt_alarm_log_set_remote_server_ipv6_enable,
    db_olt_alarm_log_get_remote_server_ipv6_enable,
    db_olt_alarm_log_set_remote_server_ipv6_ipv6_addr,
    db_olt_alarm_log_get_remote_server_ipv6_ipv6_addr,
    db_olt_alarm_log_del_remote_server_ipv6_ipv6_addr,
    db_olt_alarm_log_set_remote_server_ipv6_port,
    db_olt_alarm_log_get_remote_server_ipv6_port,
    db_olt_alarm_log_del_remote_server_ipv6_port,
};

struct ServerAddress {
    char text[largest_address_size + 1]; // terminated, even one that fills the value
    std::uint16_t port;
};

// A switch that cannot be read is off.
[[nodiscard]] inline bool is_enabled(const RemoteServer &server)
{
    std::uint8_t enabled = 0;
    int length = sizeof enabled;
    return server.get_enable(&g_diagd_db, &enabled, &length) == 0 && enabled != 0;
}

// Nothing unless both address and port can be read; the port is asked for only behind an address.
[[nodiscard]] inline std::optional<ServerAddress> read_address(const RemoteServer &server)
{
    ServerAddress address{};
    int length = largest_address_size;
    if (server.get_address(&g_diagd_db, address.text, &length) != 0)
        return std::nullopt;
    length = sizeof address.port;
    if (server.get_port(&g_diagd_db, &address.port, &length) != 0)
        return std::nullopt;
    return address;
}

} // namespace diagd

// Callbacks of the database.  Every change is accepted: whoever forwards records reads the settings from the
// database.  They run on a thread of the database library and must not log.
int alarm_log_remote_server_ip_addr_change_cb(void *session, const char *module, const char *xpath, int event,
                                              std::uint32_t request, void *priv);
int alarm_log_remote_server_port_change_cb(void *session, const char *module, const char *xpath, int event,
                                           std::uint32_t request, void *priv);
// Provide nothing: the values are configuration, not state.
int alarm_log_remote_server_ip_addr_get_cb(void *session, const char *module, const char *xpath,
                                           std::uint32_t request, void **parent, void *priv);
int alarm_log_remote_server_port_get_cb(void *session, const char *module, const char *xpath,
                                        std::uint32_t request, void **parent, void *priv);
