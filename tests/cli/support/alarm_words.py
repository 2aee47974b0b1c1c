# SPDX-License-Identifier: GPL-2.0-or-later
"""The words of the alarm commands: names by group in command order, actions, levels, and the catalogue's ids."""

GLOBAL_ALARMS = (
    "temp-high temp-low cpu-usage-high mem-usage-high fan download-file-failed upload-file-failed upgrade-file-failed"
    " port-updown port-loopback mac-flapping port-link-flap power1-updown power2-updown rogue-onu custfs-block-check"
    " device-temperature-high port-apsd access-list"
).split()
PON_ALARMS = (
    "pon-deregister pon-register-failed pon-disable pon-txpower-high pon-txpower-low pon-txbias-high pon-txbias-low"
    " pon-vcc-high pon-vcc-low pon-temp-high pon-temp-low pon-los pon-chip-disconnect pon-apsd"
).split()
ONU_ALARMS = (
    "onu-deregister onu-link-lost onu-illegal-register onu-auth-failed onu-mac-conflict onu-loid-conflict"
    " onu-critical-event onu-dying-gasp onu-link-fault onu-link-event onu-event-notific onu-om-lao-detect"
    " onu-om-lol-detect onu-pon-rxpower-high onu-pon-rxpower-low onu-pon-txpower-high onu-pon-txpower-low"
    " onu-pon-txbias-high onu-pon-txbias-low onu-pon-vcc-high onu-pon-vcc-low onu-pon-temp-high onu-pon-temp-low"
    " onu-port-autoneg-failure onu-port-los onu-port-failure onu-port-loopback onu-pots-failure onu-number-limit"
    " onu-time-limit onu-sn-conflict onu-offline-timeout onu-port-uplink onu-port-no-loopback onu-bip8-errors"
    " onu-pon-rxpower-no-high onu-pon-rxpower-no-low onu-pon-txpower-no-high onu-pon-txpower-no-low"
).split()
ROUTING_ALARMS = "dhcp-sn-illegal-server dhcp-sn-over-rate-limit".split()
GLOBAL_EVENTS = (
    "reset config-save config-erase download-file-success upload-file-success upgrade-file-success time-change"
    " user-login user-logout battery-full battery-low config-auto-save config-auto-backup schedule-reset"
    " port-psg-switch load-config-success"
).split()
PON_EVENTS = "pon-register pon-enable pon-los-recovery pon-psg-switch".split()
ONU_EVENTS = (
    "onu-register onu-link-discover onu-auth-success onu-deauth-success onu-upgrade-over onu-finish onu-vlan-pool"
    " onu-offline-timeout"
).split()
ROUTING_EVENTS = (
    "ospf-adjacency-change rip-adjacency-change ospf6-adjacency-change ripng-adjacency-change"
).split()

# (group, class): names
GROUPS = {
    ("global", "alarm"): GLOBAL_ALARMS,
    ("pon", "alarm"): PON_ALARMS,
    ("onu", "alarm"): ONU_ALARMS,
    ("routing", "alarm"): ROUTING_ALARMS,
    ("global", "event"): GLOBAL_EVENTS,
    ("pon", "event"): PON_EVENTS,
    ("onu", "event"): ONU_EVENTS,
    ("routing", "event"): ROUTING_EVENTS,
}
THRESHOLD_ALARMS = GLOBAL_ALARMS[:4]

ACTIONS = ["print", "record", "trap", "remote"]
LEVELS = ["debug", "info", "notice", "warning", "major", "critical", "alert", "emerg"]

# Every (class, name) that a command can name.
NAMED = [(klass, name) for (_, klass), names in GROUPS.items() for name in names]
# Those that have a level command and an older form.
LEVELLED = [(klass, name) for klass, name in NAMED if name not in THRESHOLD_ALARMS]
