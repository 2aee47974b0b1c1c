// SPDX-License-Identifier: GPL-2.0-or-later
// Writers of the running configuration.
// Failure policy: a setting that cannot be read has no line.  The switches of the remote servers always have
// one, because start-up switches them off.
#include "diagd/alarm_log/alarm_log_cli.hpp"

#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/command_tables.hpp"
#include "diagd/alarm_log/servers/remote_server.hpp"
#include "diagd/alarm_log/thresholds/thresholds.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include <cmath>
#include <cstdlib>

using namespace diagd;

namespace {

void write_server(struct vty *vty, const RemoteServer &server)
{
    vty_out(vty, "alarm-log remote server %s %s%s", server.family, is_enabled(server) ? "enable" : "disable",
            line_end);
    if (const std::optional<ServerAddress> address = read_address(server))
        vty_out(vty, "alarm-log remote server %s %s port %d%s", server.family, address->text, address->port,
                line_end);
}

void write_flash_level(struct vty *vty)
{
    char level[16 + 1] = "";
    int length = sizeof level - 1;
    if (db_olt_alarm_log_get_alarm_log_flash_level(&g_diagd_db, level, &length) == 0 && level[0] != '\0')
        vty_out(vty, "alarm-log flash level %s%s", level, line_end);
}

void write_alarm(struct vty *vty, std::uint16_t id, const tq_alarm_cfg_t &configured)
{
    const tq_alarm_info_t &entry = tq_alarm_log_info[id];
    const std::string_view name = alarm_name(id);
    const std::string_view class_name = alarm_class_name(id);
    const std::string_view level = field_text(configured.level);
    if (level != field_text(tq_alarm_log_level[entry.default_level]))
        vty_out(vty, "alarm-log %.*s %.*s level %.*s%s", print_length(class_name), class_name.data(),
                print_length(name), name.data(), print_length(level), level.data(), line_end);

    for (const ActionSwitch &one : action_switches) {
        const bool on = configured.*one.configured != 0;
        if (on != ((entry.default_actions & one.default_bit) != 0))
            vty_out(vty, "alarm-log %.*s %.*s %s %.*s%s", print_length(class_name), class_name.data(),
                    print_length(name), name.data(), on ? "enable" : "disable", print_length(one.word),
                    one.word.data(), line_end);
    }
}

void write_alarms(struct vty *vty)
{
    const std::optional<AlarmConfiguration> configuration = read_alarm_configuration();
    if (!configuration)
        return;
    for (std::uint16_t id = 0; id < TQ_ALARM_COUNT; ++id)
        write_alarm(vty, id, (*configuration)[id]);
}

struct StoredText {
    char text[threshold_text_size + 1];
};

std::optional<StoredText> read_threshold(StoredThresholds::Getter get)
{
    StoredText stored{};
    int length = threshold_text_size;
    if (get(&g_diagd_db, stored.text, &length) != 0)
        return std::nullopt;
    return stored;
}

// The print switch alone says whether the alarm is switched on.
bool is_printed(std::uint16_t id)
{
    std::uint8_t on = 0;
    int length = sizeof on;
    return db_olt_alarm_log_get_action_print(id, &g_diagd_db, &on, &length) == 0 && on != 0;
}

// Thresholds of 0 are as good as none.
void write_board_thresholds(struct vty *vty, std::size_t i)
{
    if (!is_printed(board_alarms[i].id))
        return;
    const std::optional<StoredText> alarm = read_threshold(stored_thresholds[i].get_alarm);
    const std::optional<StoredText> clear = read_threshold(stored_thresholds[i].get_clear);
    if (!alarm || !clear)
        return;
    const auto is_set = [](const StoredText &stored) {
        constexpr double zero = 1e-06;
        return std::fabs(std::strtod(stored.text, nullptr)) > zero;
    };
    if (is_set(*alarm) || is_set(*clear))
        vty_out(vty, "alarm-log threshold %s enable %s %s%s", board_alarms[i].name, alarm->text, clear->text,
                line_end);
}

// libfrr writes the line that opens the interface only when a line follows.
void write_interfaces(struct vty *vty, const char *name, PortKind kind)
{
    const auto &ports = thresholds_of(kind);
    const auto last = std::min(intf.last_port, static_cast<std::uint32_t>(ports.size()));
    for (std::uint32_t port = std::max(intf.first_port, 1U); port <= last; ++port) {
        vty_frame(vty, "interface %s 0/%u\n", name, port);
        const PonPortThresholds &thresholds = ports[port - 1];
        for (std::size_t i = 0; i < thresholds.size(); ++i) {
            if (thresholds[i].enabled != 0)
                vty_out(vty, " alarm-log threshold %s enable %s %s %s", pon_alarms_with_threshold[i].name,
                        ThresholdText{thresholds[i].alarm}.c_str(),
                        ThresholdText{thresholds[i].clear}.c_str(), line_end);
        }
        vty_endframe(vty, nullptr);
    }
}

} // namespace

// A writer's result of 0 keeps libfrr from closing its lines with one of its own.
int diagd::alarm_log_config_write(struct vty *vty) noexcept
{
    write_server(vty, ipv4_server);
    write_server(vty, ipv6_server);
    write_flash_level(vty);
    write_alarms(vty);
    for (std::size_t i = 0; i < board_alarms.size(); ++i)
        write_board_thresholds(vty, i);
    return 0;
}

int diagd::gpon_config_write(struct vty *vty) noexcept
{
    write_interfaces(vty, "gpon", PortKind::gpon);
    return 0;
}

int diagd::xgpon_config_write(struct vty *vty) noexcept
{
    write_interfaces(vty, "xgpon", PortKind::xgpon);
    return 0;
}

DEFUN(show_alarm_log_running_config, show_alarm_log_running_config_cmd, "show running-config alarm-log",
      "Show running system information\n"
      "running configuration (same as write terminal)\n"
      "Alarm log.\n")
{
    alarm_log_config_write(vty);
    return CMD_SUCCESS;
}

namespace {
constexpr InstallRow commands[] = {
    {config_node, &show_alarm_log_running_config_cmd},
};
} // namespace
constinit const CommandTable diagd::running_config_commands{commands};
