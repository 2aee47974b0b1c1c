// SPDX-License-Identifier: GPL-2.0-or-later
// The alarms and events that commands can name, in groups.  The words are names of the catalogue; the order
// is that of the command line.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace diagd {

struct AlarmGroup {
    std::string_view class_word; // "alarm" or "event"
    std::span<const std::string_view> names;
};

inline constexpr auto global_alarm_names = std::to_array<std::string_view>({
    "temp-high",
    "temp-low",
    "cpu-usage-high",
    "mem-usage-high",
    "fan",
    "download-file-failed",
    "upload-file-failed",
    "upgrade-file-failed",
    "port-updown",
    "port-loopback",
    "mac-flapping",
    "port-link-flap",
    "power1-updown",
    "power2-updown",
    "rogue-onu",
    "custfs-block-check",
    "device-temperature-high",
    "port-apsd",
    "access-list",
});

inline constexpr auto pon_alarm_names = std::to_array<std::string_view>({
    "pon-deregister",
    "pon-register-failed",
    "pon-disable",
    "pon-txpower-high",
    "pon-txpower-low",
    "pon-txbias-high",
    "pon-txbias-low",
    "pon-vcc-high",
    "pon-vcc-low",
    "pon-temp-high",
    "pon-temp-low",
    "pon-los",
    "pon-chip-disconnect",
    "pon-apsd",
});

inline constexpr auto onu_alarm_names = std::to_array<std::string_view>({
    "onu-deregister",         "onu-link-lost",           "onu-illegal-register",   "onu-auth-failed",
    "onu-mac-conflict",       "onu-loid-conflict",       "onu-critical-event",     "onu-dying-gasp",
    "onu-link-fault",         "onu-link-event",          "onu-event-notific",      "onu-om-lao-detect",
    "onu-om-lol-detect",      "onu-pon-rxpower-high",    "onu-pon-rxpower-low",    "onu-pon-txpower-high",
    "onu-pon-txpower-low",    "onu-pon-txbias-high",     "onu-pon-txbias-low",     "onu-pon-vcc-high",
    "onu-pon-vcc-low",        "onu-pon-temp-high",       "onu-pon-temp-low",       "onu-port-autoneg-failure",
    "onu-port-los",           "onu-port-failure",        "onu-port-loopback",      "onu-pots-failure",
    "onu-number-limit",       "onu-time-limit",          "onu-sn-conflict",        "onu-offline-timeout",
    "onu-port-uplink",        "onu-port-no-loopback",    "onu-bip8-errors",        "onu-pon-rxpower-no-high",
    "onu-pon-rxpower-no-low", "onu-pon-txpower-no-high", "onu-pon-txpower-no-low",
});

inline constexpr auto routing_alarm_names = std::to_array<std::string_view>({
    "dhcp-sn-illegal-server",
    "dhcp-sn-over-rate-limit",
});

inline constexpr auto global_event_names = std::to_array<std::string_view>({
    "reset",
    "config-save",
    "config-erase",
    "download-file-success",
    "upload-file-success",
    "upgrade-file-success",
    "time-change",
    "user-login",
    "user-logout",
    "battery-full",
    "battery-low",
    "config-auto-save",
    "config-auto-backup",
    "schedule-reset",
    "port-psg-switch",
    "load-config-success",
});

inline constexpr auto pon_event_names = std::to_array<std::string_view>({
    "pon-register",
    "pon-enable",
    "pon-los-recovery",
    "pon-psg-switch",
});

// The platform takes "onu-offline-timeout", which is an alarm's name, too, for the alarm.
inline constexpr auto onu_event_names = std::to_array<std::string_view>({
    "onu-register",
    "onu-link-discover",
    "onu-auth-success",
    "onu-deauth-success",
    "onu-upgrade-over",
    "onu-finish",
    "onu-vlan-pool",
    "onu-offline-timeout",
});

inline constexpr auto routing_event_names = std::to_array<std::string_view>({
    "ospf-adjacency-change",
    "rip-adjacency-change",
    "ospf6-adjacency-change",
    "ripng-adjacency-change",
});

inline constexpr std::string_view alarm_word = "alarm";
inline constexpr std::string_view event_word = "event";

inline constexpr AlarmGroup global_alarms{alarm_word, global_alarm_names};
inline constexpr AlarmGroup pon_alarms{alarm_word, pon_alarm_names};
inline constexpr AlarmGroup onu_alarms{alarm_word, onu_alarm_names};
inline constexpr AlarmGroup routing_alarms{alarm_word, routing_alarm_names};
inline constexpr AlarmGroup global_events{event_word, global_event_names};
inline constexpr AlarmGroup pon_events{event_word, pon_event_names};
inline constexpr AlarmGroup onu_events{event_word, onu_event_names};
inline constexpr AlarmGroup routing_events{event_word, routing_event_names};

// The four board alarms that have thresholds, first of the global ones: they have a level of their own in no
// command, and their older commands take the thresholds along.
inline constexpr std::size_t board_threshold_count = 4;
inline constexpr AlarmGroup global_alarms_without_threshold{
    alarm_word, std::span<const std::string_view>{global_alarm_names}.subspan(board_threshold_count)};

} // namespace diagd
