// SPDX-License-Identifier: GPL-2.0-or-later
// The remote action: an alarm goes as a syslog message over UDP (RFC 5426) to the log servers that are
// configured and switched on, one of each address family.  Their settings are read from the database
// library's memory at every alarm, so a change takes effect with the next one.
// Failure policy: what cannot be sent is lost and said in the log once; the other server gets it
// nevertheless.
#include "platform/alarms/alarm.hpp"
#include "platform/sinks/sink_state.hpp"
#include "platform/sinks/syslog_message.hpp"
#include "platform/sinks/udp_receiver.hpp"
#include "tq_database.h"

#include <array>
#include <cerrno>
#include <climits>
#include <mutex>
#include <new>
#include <unistd.h>

namespace tq {

namespace {

struct Family {
    int family;
    int (*is_enabled)(tq_database_t *, void *, int *);
    int (*address)(tq_database_t *, void *, int *);
    int (*port)(tq_database_t *, void *, int *);
};

constexpr std::array families = {
    Family{AF_INET, db_olt_alarm_log_get_remote_server_ipv4_enable,
           db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr, db_olt_alarm_log_get_remote_server_ipv4_port},
    Family{AF_INET6, db_olt_alarm_log_get_remote_server_ipv6_enable,
           db_olt_alarm_log_get_remote_server_ipv6_ipv6_addr, db_olt_alarm_log_get_remote_server_ipv6_port},
};

struct Server {
    std::string address;
    std::uint16_t port = 0; // 0: there is no server to send to
};

// 0 or a platform error code.  A server that was never configured, or is switched off, is none.
int read_server(const Family &family, tq_database_t *db, Server &server)
{
    std::uint8_t is_enabled = 0;
    char address[64 + 1] = "";
    std::uint16_t port = 0;
    int length = sizeof is_enabled;
    int code = family.is_enabled(db, &is_enabled, &length);
    if (code == TQ_OK && !is_enabled)
        return TQ_OK;
    length = sizeof address - 1;
    if (code == TQ_OK)
        code = family.address(db, address, &length);
    length = sizeof port;
    if (code == TQ_OK)
        code = family.port(db, &port, &length);
    if (code == TQ_OK)
        server = {address, port};
    return code == TQ_ERR_NOT_FOUND ? TQ_OK : code;
}

SyslogOrigin this_process()
{
    char host[HOST_NAME_MAX + 1] = "";
    ::gethostname(host, sizeof host - 1);
    return {host, program_invocation_short_name, ::getpid()};
}

int send_to_servers(const Alarm &alarm)
{
    static std::mutex mutex;
    static std::array<SinkState, families.size()> states;
    const std::lock_guard lock(mutex);

    std::string message;
    int result = TQ_OK;
    for (std::size_t i = 0; i < families.size(); ++i) {
        Server server;
        const int code = read_server(families[i], alarm.db, server);
        if (code != TQ_OK) {
            states[i].note(families[i].family == AF_INET ? "the IPv4 log server" : "the IPv6 log server",
                           code);
            result = code;
            continue;
        }
        if (server.port == 0) {
            states[i].forget();
            continue;
        }
        if (message.empty())
            message = syslog_message(alarm, this_process());
        const auto receiver = UdpReceiver::at(server.address, server.port, families[i].family);
        const int error = receiver ? receiver->send(message) : EINVAL;
        states[i].note("log server " + server.address + " port " + std::to_string(server.port), error);
        if (error != 0)
            result = TQ_ERR_PEER;
    }
    return result;
}

} // namespace

int remote_alarm(const Alarm &alarm) noexcept
{
    if (!alarm.db)
        return TQ_OK;
    try {
        return send_to_servers(alarm);
    } catch (const std::bad_alloc &) {
        return TQ_ERR_NO_MEMORY;
    }
}

} // namespace tq
