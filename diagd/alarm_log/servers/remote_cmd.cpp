// SPDX-License-Identifier: GPL-2.0-or-later
// Commands of the remote log servers.  They only store the settings: whoever forwards records reads them from
// the database.
// Failure policy: a value that the database refuses is said in one line and does not keep the next from being
// stored.
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/alarm_log/servers/remote_server.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include "tq_api.h"

#include <cstdlib>

using namespace diagd;

namespace {

const RemoteServer &server_of(const struct cmd_token *family)
{
    return std::string_view{family->text} == ipv6_server.family ? ipv6_server : ipv4_server;
}

// "set alarm log remote server ipv4 failed : ..." and the like.
void tell_failure(struct vty *vty, const char *verb, const char *what, int code)
{
    if (code != 0)
        vty_out(vty, "%s alarm log remote server %s failed : %s\n", verb, what, tq_strerror(code));
}

// The older forms have one word less before the address.
int set_server(struct vty *vty, const RemoteServer &server, int argc, struct cmd_token *argv[])
{
    constexpr int visible_words = 7;
    const int address_index = argc == visible_words ? 4 : 3;
    char address[largest_address_size];
    copy_text(std::span{address}.first(server.address_size), argv[address_index]->arg);
    const auto port = static_cast<std::uint16_t>(std::strtoul(argv[address_index + 2]->arg, nullptr, 10));

    tell_failure(vty, "set", server.family,
                 server.set_address(&g_diagd_db, address, static_cast<int>(server.address_size), 1));
    tell_failure(vty, "set", "port", server.set_port(&g_diagd_db, &port, sizeof port, 1));
    return CMD_SUCCESS;
}

int delete_server(struct vty *vty, const RemoteServer &server)
{
    tell_failure(vty, "delete", server.family, server.delete_address(&g_diagd_db));
    tell_failure(vty, "delete", "port", server.delete_port(&g_diagd_db));
    return CMD_SUCCESS;
}

void show_server(struct vty *vty, const RemoteServer &server)
{
    vty_out(vty, "alarm-log remote server %s : %s\n", server.family,
            is_enabled(server) ? "enable" : "disable");
    if (const std::optional<ServerAddress> address = read_address(server))
        vty_out(vty, "alarm-log remote server %s is %s port %d\n", server.family, address->text,
                address->port);
    else
        vty_out(vty, "no alarm-log remote server %s\n", server.family);
}

} // namespace

DEFUN(enable_alarm_log_server, enable_alarm_log_server_cmd,
      "alarm-log remote server <ipv4|ipv6> <enable|disable>",
      "Specify alarm log information.\n"
      "Specify remote sever.\n"
      "Specify remote sever.\n"
      "Specify remote server ipv4.\n"
      "Specify remote server ipv6.\n"
      "Specify remote server enable.\n"
      "Specify remote server disable.\n")
{
    const std::uint8_t enable = std::string_view{argv[4]->text} == "enable" ? 1 : 0;
    tell_failure(vty, "set", "enable", server_of(argv[3]).set_enable(&g_diagd_db, &enable, sizeof enable, 1));
    return CMD_SUCCESS;
}

DEFUN(config_alarm_log_server_ipv4, config_alarm_log_server_ipv4_cmd,
      "alarm-log remote server ipv4 <A.B.C.D> port (1-65535)",
      "Specify alarm log information.\n"
      "Specify remote sever.\n"
      "Specify remote sever.\n"
      "Specify remote server ipv4.\n"
      "Specify remote server ipv4.\n"
      "Specify remote server port.\n"
      "Specify remote server port.\n")
{
    return set_server(vty, ipv4_server, argc, argv);
}

ALIAS_HIDDEN(config_alarm_log_server_ipv4, config_syslog_server_ipv4_cmd,
             "syslog server ip <A.B.C.D> port (1-65535)",
             "Specify alarm log information.\n"
             "Specify remote sever.\n"
             "Specify remote server ipv4.\n"
             "Specify remote server ipv4.\n"
             "Specify remote server port.\n"
             "Specify remote server port.\n")

DEFUN(delete_alarm_log_server_ipv4, delete_alarm_log_server_ipv4_cmd, "no alarm-log remote server ipv4",
      "Disable alarm log remote server.\n"
      "Specify alarm log information.\n"
      "Specify remote sever.\n"
      "Specify remote sever.\n"
      "Specify remote sever ipv4.\n")
{
    return delete_server(vty, ipv4_server);
}

ALIAS_HIDDEN(delete_alarm_log_server_ipv4, delete_syslog_server_ipv4_cmd, "no syslog server ip",
             "Disable alarm log remote server.\n"
             "Specify alarm log information.\n"
             "Specify remote sever.\n"
             "Specify remote sever ipv4.\n")

DEFUN(config_alarm_log_server_ipv6, config_alarm_log_server_ipv6_cmd,
      "alarm-log remote server ipv6 X:X::X:X port (1-65535)",
      "Specify alarm log information.\n"
      "Specify remote sever.\n"
      "Specify remote sever.\n"
      "Specify remote server ipv6.\n"
      "Specify remote server ipv6.\n"
      "Specify remote server port.\n"
      "Specify remote server port.\n")
{
    return set_server(vty, ipv6_server, argc, argv);
}

ALIAS_HIDDEN(config_alarm_log_server_ipv6, config_syslog_server_ipv6_cmd,
             "syslog server ipv6 X:X::X:X port (1-65535)",
             "Specify alarm log information.\n"
             "Specify remote sever.\n"
             "Specify remote server ipv6.\n"
             "Specify remote server ipv6.\n"
             "Specify remote server port.\n"
             "Specify remote server port.\n")

DEFUN(delete_alarm_log_server_ipv6, delete_alarm_log_server_ipv6_cmd, "no alarm-log remote server ipv6",
      "Disable alarm log remote server.\n"
      "Specify alarm log information.\n"
      "Specify remote sever.\n"
      "Specify remote sever.\n"
      "Specify remote sever ipv6.\n")
{
    return delete_server(vty, ipv6_server);
}

ALIAS_HIDDEN(delete_alarm_log_server_ipv6, delete_syslog_server_ipv6_cmd, "no syslog server ipv6",
             "Disable alarm log remote server.\n"
             "Specify alarm log information.\n"
             "Specify remote sever.\n"
             "Specify remote sever ipv6.\n")

DEFUN(show_alarm_log_server, show_alarm_log_server_cmd, "show alarm-log remote server [ipv4|ipv6]",
      "Show information.\n"
      "Specify alarm log information.\n"
      "Specify remote sever.\n"
      "Specify remote sever.\n"
      "Specify remote sever ipv4.\n"
      "Specify remote sever ipv6.\n")
{
    constexpr int family_index = 4;
    if (argc > family_index) {
        show_server(vty, server_of(argv[family_index]));
    } else {
        show_server(vty, ipv4_server);
        show_server(vty, ipv6_server);
    }
    return CMD_SUCCESS;
}

namespace {
constexpr InstallRow commands[] = {
    {config_node, &enable_alarm_log_server_cmd},   {config_node, &config_alarm_log_server_ipv4_cmd},
    {config_node, &config_syslog_server_ipv4_cmd}, {config_node, &delete_alarm_log_server_ipv4_cmd},
    {config_node, &delete_syslog_server_ipv4_cmd}, {config_node, &config_alarm_log_server_ipv6_cmd},
    {config_node, &config_syslog_server_ipv6_cmd}, {config_node, &delete_alarm_log_server_ipv6_cmd},
    {config_node, &delete_syslog_server_ipv6_cmd}, {config_node, &show_alarm_log_server_cmd},
};
} // namespace
constinit const CommandTable diagd::remote_server_commands{commands};
