// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm catalogue: every alarm and event that the OLT can raise, and the names of levels, types and
// classes. An entry's place is its id, which other programs of the box and stored records keep: entries are
// only ever added at the end.
#include "tq_api.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

char tq_alarm_log_level[TQ_ALARM_LEVEL_COUNT][16] = {
    "debug", "info", "notice", "warning", "major", "critical", "alert", "emerg",
};
char tq_alarm_log_type[][16] = {"environment", "equipment", "communication", "processing"};
char tq_alarm_log_class[][8] = {"alarm", "event"};

namespace {

enum class Type : std::uint32_t { environment, equipment, communication, processing };
enum class Group : std::uint32_t { global, onu, pon, route };
enum : std::uint32_t { level_info = 1, level_major = 4 };

constexpr std::uint32_t usual_actions = TQ_ACTION_PRINT | TQ_ACTION_RECORD;
// Threshold alarms are switched on together with their thresholds; a fresh system has none.
constexpr std::uint32_t no_actions = 0;

template <std::size_t N, std::size_t D>
consteval tq_alarm_info_t entry(std::uint16_t id, const char (&name)[N], const char (&description)[D],
                                std::uint32_t level, Type type, std::uint32_t actions,
                                std::uint32_t class_index, Group group)
{
    static_assert(N <= sizeof tq_alarm_info_t::name && D <= sizeof tq_alarm_info_t::description);
    tq_alarm_info_t info{};
    info.id = id;
    std::copy_n(name, N, info.name);
    std::copy_n(description, D, info.description);
    info.default_level = level;
    info.type = static_cast<std::uint32_t>(type);
    info.default_actions = actions;
    info.class_ = class_index;
    info.group = static_cast<std::uint32_t>(group);
    return info;
}

template <std::size_t N, std::size_t D>
consteval tq_alarm_info_t alarm(std::uint16_t id, const char (&name)[N], const char (&description)[D],
                                Type type, Group group, std::uint32_t actions = usual_actions)
{
    return entry(id, name, description, level_major, type, actions, 0, group);
}

template <std::size_t N, std::size_t D>
consteval tq_alarm_info_t event(std::uint16_t id, const char (&name)[N], const char (&description)[D],
                                Type type, Group group, std::uint32_t actions = usual_actions)
{
    return entry(id, name, description, level_info, type, actions, 1, group);
}

} // namespace

// clang-format off
constinit tq_alarm_info_t tq_alarm_log_info[TQ_ALARM_COUNT] = {
    alarm(0, "fan", "Fan state change", Type::equipment, Group::global),
    alarm(1, "download-file-failed", "File download failed", Type::processing, Group::global),
    alarm(2, "upload-file-failed", "File upload failed", Type::processing, Group::global),
    alarm(3, "upgrade-file-failed", "Software upgrade failed", Type::processing, Group::global),
    alarm(4, "port-updown", "Port link up or down", Type::communication, Group::global),
    alarm(5, "port-loopback", "Port loopback detected", Type::communication, Group::global, TQ_ACTION_PRINT),
    alarm(6, "pon-deregister", "PON deregistered", Type::communication, Group::pon),
    alarm(7, "pon-register-failed", "PON registration failed", Type::communication, Group::pon),
    alarm(8, "pon-disable", "PON port disabled", Type::communication, Group::pon),
    alarm(9, "pon-txpower-high", "PON transmit power high", Type::communication, Group::pon),
    alarm(10, "pon-txpower-low", "PON transmit power low", Type::communication, Group::pon),
    alarm(11, "pon-txbias-high", "PON bias current high", Type::communication, Group::pon),
    alarm(12, "pon-txbias-low", "PON bias current low", Type::communication, Group::pon),
    alarm(13, "pon-vcc-high", "PON supply voltage high", Type::equipment, Group::pon),
    alarm(14, "pon-vcc-low", "PON supply voltage low", Type::equipment, Group::pon),
    alarm(15, "pon-temp-high", "PON temperature high", Type::environment, Group::pon),
    alarm(16, "pon-temp-low", "PON temperature low", Type::environment, Group::pon),
    alarm(17, "pon-los", "PON loss of signal", Type::communication, Group::pon),
    alarm(18, "onu-deregister", "ONU deregistered", Type::communication, Group::onu),
    alarm(19, "onu-link-lost", "ONU link lost", Type::communication, Group::onu),
    alarm(20, "onu-illegal-register", "ONU registration illegal", Type::communication, Group::onu),
    alarm(21, "onu-auth-failed", "ONU authentication failed", Type::communication, Group::onu),
    alarm(22, "onu-mac-conflict", "ONU MAC address conflict", Type::communication, Group::onu),
    alarm(23, "onu-loid-conflict", "ONU LOID conflict", Type::communication, Group::onu),
    alarm(24, "onu-critical-event", "ONU critical event", Type::equipment, Group::onu),
    alarm(25, "onu-dying-gasp", "ONU dying gasp", Type::equipment, Group::onu),
    alarm(26, "onu-link-fault", "ONU link fault", Type::communication, Group::onu),
    alarm(27, "onu-link-event", "ONU link event", Type::communication, Group::onu),
    alarm(28, "onu-event-notific", "ONU event notification", Type::communication, Group::onu),
    event(29, "reset", "System reset", Type::processing, Group::global),
    event(30, "config-save", "Configuration saved", Type::processing, Group::global, TQ_ACTION_RECORD | TQ_ACTION_TRAP | TQ_ACTION_REMOTE),
    event(31, "config-erase", "Configuration erased", Type::processing, Group::global),
    event(32, "download-file-success", "File download succeeded", Type::processing, Group::global),
    event(33, "upload-file-success", "File upload succeeded", Type::processing, Group::global),
    event(34, "upgrade-file-success", "Software upgrade succeeded", Type::processing, Group::global),
    event(35, "time-change", "System time changed", Type::processing, Group::global),
    event(36, "user-login", "User logged in", Type::processing, Group::global),
    event(37, "user-logout", "User logged out", Type::processing, Group::global),
    event(38, "pon-register", "PON registered", Type::communication, Group::pon),
    event(39, "pon-enable", "PON port enabled", Type::communication, Group::pon),
    event(40, "pon-los-recovery", "PON signal recovered", Type::communication, Group::pon),
    event(41, "onu-register", "ONU registered", Type::communication, Group::onu),
    event(42, "onu-link-discover", "ONU link discovered", Type::communication, Group::onu),
    event(43, "onu-auth-success", "ONU authentication succeeded", Type::communication, Group::onu),
    event(44, "onu-deauth-success", "ONU deauthentication succeeded", Type::communication, Group::onu),
    event(45, "onu-upgrade-over", "ONU upgrade finished", Type::processing, Group::onu),
    event(46, "onu-finish", "ONU operation finished", Type::processing, Group::onu),
    event(47, "onu-vlan-pool", "ONU VLAN pool event", Type::processing, Group::onu),
    event(48, "battery-full", "Battery full", Type::equipment, Group::global),
    event(49, "battery-low", "Battery low", Type::equipment, Group::global),
    alarm(50, "onu-om-lao-detect", "ONU optical module aging", Type::equipment, Group::onu),
    alarm(51, "onu-om-lol-detect", "ONU optical module lost", Type::equipment, Group::onu),
    alarm(52, "onu-pon-rxpower-high", "ONU receive power high", Type::communication, Group::onu),
    alarm(53, "onu-pon-rxpower-low", "ONU receive power low", Type::communication, Group::onu),
    alarm(54, "onu-pon-txpower-high", "ONU transmit power high", Type::communication, Group::onu),
    alarm(55, "onu-pon-txpower-low", "ONU transmit power low", Type::communication, Group::onu),
    alarm(56, "onu-pon-txbias-high", "ONU bias current high", Type::communication, Group::onu),
    alarm(57, "onu-pon-txbias-low", "ONU bias current low", Type::communication, Group::onu),
    alarm(58, "onu-pon-vcc-high", "ONU supply voltage high", Type::equipment, Group::onu),
    alarm(59, "onu-pon-vcc-low", "ONU supply voltage low", Type::equipment, Group::onu),
    alarm(60, "onu-pon-temp-high", "ONU temperature high", Type::environment, Group::onu),
    alarm(61, "onu-pon-temp-low", "ONU temperature low", Type::environment, Group::onu),
    alarm(62, "onu-port-autoneg-failure", "ONU port autonegotiation failed", Type::communication, Group::onu),
    alarm(63, "onu-port-los", "ONU port loss of signal", Type::communication, Group::onu),
    alarm(64, "onu-port-failure", "ONU port failure", Type::equipment, Group::onu),
    alarm(65, "onu-port-loopback", "ONU port loopback detected", Type::communication, Group::onu),
    alarm(66, "onu-pots-failure", "ONU POTS failure", Type::equipment, Group::onu),
    alarm(67, "onu-number-limit", "ONU number limit reached", Type::processing, Group::onu),
    alarm(68, "onu-time-limit", "ONU time limit reached", Type::processing, Group::onu),
    event(69, "ospf-adjacency-change", "OSPF adjacency changed", Type::communication, Group::route),
    event(70, "rip-adjacency-change", "RIP adjacency changed", Type::communication, Group::route),
    event(71, "ospf6-adjacency-change", "OSPFv3 adjacency changed", Type::communication, Group::route),
    event(72, "ripng-adjacency-change", "RIPng adjacency changed", Type::communication, Group::route),
    alarm(73, "mac-flapping", "MAC address flapping", Type::communication, Group::global),
    alarm(74, "onu-sn-conflict", "ONU serial number conflict", Type::communication, Group::onu),
    alarm(75, "port-link-flap", "Port link flapping", Type::communication, Group::global),
    alarm(76, "pon-chip-disconnect", "PON chip disconnected", Type::equipment, Group::pon),
    alarm(77, "power1-updown", "Power supply 1 up or down", Type::equipment, Group::global),
    alarm(78, "power2-updown", "Power supply 2 up or down", Type::equipment, Group::global),
    alarm(79, "onu-offline-timeout", "ONU offline for too long", Type::communication, Group::onu),
    alarm(80, "onu-port-uplink", "ONU uplink port event", Type::communication, Group::onu),
    alarm(81, "onu-port-no-loopback", "ONU port loopback cleared", Type::communication, Group::onu),
    alarm(82, "rogue-onu", "Rogue ONU detected", Type::communication, Group::global),
    event(83, "config-auto-save", "Configuration saved by timer", Type::processing, Group::global),
    event(84, "config-auto-backup", "Configuration backup by timer", Type::processing, Group::global),
    event(85, "schedule-reset", "Scheduled reset", Type::processing, Group::global),
    alarm(86, "custfs-block-check", "Flash file system block check", Type::equipment, Group::global),
    alarm(87, "dhcp-sn-illegal-server", "Illegal DHCP server", Type::communication, Group::route),
    alarm(88, "dhcp-sn-over-rate-limit", "DHCP rate limit exceeded", Type::communication, Group::route),
    alarm(89, "onu-bip8-errors", "ONU BIP-8 errors", Type::communication, Group::onu),
    event(90, "pon-psg-switch", "PON protection switched", Type::communication, Group::pon),
    event(91, "port-psg-switch", "Port protection switched", Type::communication, Group::global),
    alarm(92, "onu-pon-rxpower-no-high", "ONU receive power high cleared", Type::communication, Group::onu),
    alarm(93, "onu-pon-rxpower-no-low", "ONU receive power low cleared", Type::communication, Group::onu),
    alarm(94, "onu-pon-txpower-no-high", "ONU transmit power high cleared", Type::communication, Group::onu),
    alarm(95, "onu-pon-txpower-no-low", "ONU transmit power low cleared", Type::communication, Group::onu),
    alarm(96, "device-temperature-high", "Device temperature high", Type::environment, Group::global),
    event(97, "load-config-success", "Configuration loaded", Type::processing, Group::global),
    alarm(98, "port-apsd", "Port automatic power shutdown", Type::equipment, Group::global),
    alarm(99, "pon-apsd", "PON automatic power shutdown", Type::equipment, Group::pon),
    alarm(100, "access-list", "Access list event", Type::processing, Group::global),
    event(101, "onu-offline-timeout", "ONU offline timeout", Type::communication, Group::onu),
    alarm(102, "temp-high", "Board temperature high", Type::environment, Group::global, no_actions),
    alarm(103, "temp-low", "Board temperature low", Type::environment, Group::global, no_actions),
    alarm(104, "cpu-usage-high", "CPU usage high", Type::processing, Group::global, no_actions),
    alarm(105, "mem-usage-high", "Memory usage high", Type::processing, Group::global, no_actions),
};
// clang-format on
