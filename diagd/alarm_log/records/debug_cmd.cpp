// SPDX-License-Identifier: GPL-2.0-or-later
// Hidden command that files a test record.  It takes no semaphore itself: cli_log does.
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/alarm_log/records/debug_message.hpp"
#include "diagd/core/lock_wait.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include "tq_api.h"

#include <cstdlib>
#include <string>

using namespace diagd;

// Number that follows the keyword, 0 when it is not given.
static std::uint32_t number_argument(int argc, struct cmd_token *argv[], const char *keyword)
{
    const char *const text = cmd_parase_parameters(argc, argv, keyword);
    return text != nullptr ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : 0;
}

// The phrases from the third on are one help line, so the whole run is the help of "send" and libfrr notes
// that it has none for the tokens behind.
DEFUN_HIDDEN(alarm_log_debug, alarm_log_debug_cmd,
             "alarm-log debug send id (0-512) [uplink-port (1-128)] [pon (1-32)] [onu (1-256)] "
             "[onu-port (1-256)] [mac MAC] [state (1-512)] message MESSAGE",
             "alarm-log\n"
             "Debugging functions\n"
             "Sending an alarm"
             "Sending an alarm id"
             "Sending an alarm id number"
             "Sending an alarm uplink-port"
             "Sending an alarm uplink-port number"
             "Sending an alarm pon"
             "Sending an alarm pon number"
             "Sending an alarm onu"
             "Sending an alarm onu number"
             "Sending an alarm onu-port"
             "Sending an alarm onu-port number"
             "Sending an alarm mac"
             "Sending an alarm mac string"
             "Sending an alarm state"
             "Sending an alarm state-id"
             "Sending an alarm message"
             "Sending an alarm message string\n")
{
    tq_alarm_req_t request{};
    request.alarm_id = static_cast<std::uint16_t>(number_argument(argc, argv, "id"));
    request.uplink_port = number_argument(argc, argv, "uplink-port");
    request.pon = number_argument(argc, argv, "pon");
    request.onu = number_argument(argc, argv, "onu");
    request.onu_port = number_argument(argc, argv, "onu-port");
    if (const char *const mac = cmd_parase_parameters(argc, argv, "mac"))
        fill_field({reinterpret_cast<char *>(request.mac), sizeof(request.mac)}, mac);
    request.state = number_argument(argc, argv, "state");

    const char *const typed = cmd_parase_parameters(argc, argv, "message");
    const std::string message = decode_debug_message(typed != nullptr ? typed : "");
    await_free(alarm_log_sem_id);
    return cli_log(&g_diagd_db, &request, "%s", message.c_str());
}

namespace {
constexpr InstallRow commands[] = {
    {config_node, &alarm_log_debug_cmd},
};
} // namespace
constinit const CommandTable diagd::debug_commands{commands};
