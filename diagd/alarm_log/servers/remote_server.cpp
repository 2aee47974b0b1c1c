// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the remote log servers.
#include "diagd/alarm_log/servers/remote_server.hpp"

#include "diagd/core/state.hpp"

namespace diagd {

bool is_enabled(const RemoteServer &server)
{
    std::uint8_t enabled = 0;
    int length = sizeof enabled;
    return server.get_enable(&g_diagd_db, &enabled, &length) == 0 && enabled != 0;
}

std::optional<ServerAddress> read_address(const RemoteServer &server)
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
