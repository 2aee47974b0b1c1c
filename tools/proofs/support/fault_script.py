# SPDX-License-Identifier: GPL-2.0-or-later
"""The session in which calls are made to fail: a line or more of each command, and what operators are told when a call
of theirs fails.

A line of SCRIPT is a node, the line, and lines to run before it, unharmed."""
import re
from dataclasses import dataclass

from fault_calls import UNREACHABLE, UNREACHABLE_TEXT
from jtag import put_in_tmp
from silent_servers import reachable

FLASH_LOG = "/media/config/var/alarm_log.log"
IMAGE = b"CPLD image \x00\xff" * 100


@dataclass(frozen=True)
class Step:
    node: str
    line: str
    before: tuple[str, ...] = ()
    with_faults: tuple[str, ...] = ()  # of other calls, without which this one's fault would not come to pass

    @property
    def varies(self):
        """What it shows is of the moment."""
        return re.match(r"show (sys (mem|cpu|running-time)|time|task|alarm-log( (level|head|tail).*)?$)", self.line) is not None

    def __str__(self):
        return f"{self.node}: {self.line}"

    def prepare(self, olt, session):
        if self.line.startswith("cpld upgrade usb"):
            put_in_tmp(olt, self.line.split()[-1], IMAGE)
        for line in self.before:
            session.run(reachable(line))


RECORDS = ("alarm-log debug send id 77 message one", "alarm-log debug send id 28 message two")

_CONFIG = """
fan temperature 30
fan mode auto
fan speed low
fan speed auto
show temperature
show fan json
show running-config fan
show alarm-log
show alarm-log level major
show alarm-log head 5
show alarm-log tail 5
alarm-log remote server ipv4 enable
alarm-log remote server ipv6 disable
alarm-log remote server ipv4 192.0.2.9 port 514
syslog server ip 192.0.2.9 port 514
alarm-log remote server ipv6 2001:db8::9 port 514
alarm-log flash level major
show alarm-log flash level
save alarm-log flash
clear alarm-log flash
show alarm-log all configuration
show alarm-log configuration name fan
show alarm-log configuration id 77
alarm-log alarm fan enable print
alarm-log alarm fan enable record
alarm-log alarm fan enable trap
alarm-log alarm fan enable remote
alarm-log alarm fan disable all
alarm fan all enable
alarm-log alarm fan level major
alarm-log event reset disable trap
event name reset print enable
alarm-log alarm all enable record
event all print disable
alarm-event config_all trap disable
alarm-event default all
alarm-log threshold temp-high enable 70 65
alarm-log threshold temp-high disable
alarm-log threshold temp-low enable 5 10
alarm-log threshold temp-low disable
alarm-log threshold cpu-usage-high enable 99 98
alarm-log threshold mem-usage-high enable 99 98
alarm temp-high print enable 70 65
alarm temp-high print disable
alarm-log debug send id 77 message one
show version
show version json
show sys power
show sys power json
show sys mem
show sys cpu
show sys running-time
show time
show task
time set year 2026 month 11 day 2 hour 3 minute 4 second 5
reboot
reload
show idprom interface gpon 0/1
show idprom interface gigabitEthernet 0/1
show idprom interface xgpon 0/4
show transceiver
show transceiver json
show transceiver detail
show optical transceiver interface gpon 0/1
show optical transceiver interface gigabitEthernet 0/1
show optical transceiver interface xgpon 0/4
interface gpon 0/1
"""

_DIAGNOSE = """
phy read 1 2
phy read 1 2 rdb
phy read 1 2 clause45 1
phy write 1 4 0x1e1
phy info 1
phy reset 1
phy dump 1
i2c 1 read 0x50 0 4
i2c 1 write 0x50 0x80 0xa5
show debugging
show diag monitor
system led on
usb led on
pon led on 1
pon led off
pon power on 1
pon power on
pon tx on 1
sfp power on 1
sfp power on
show pon led
show pon power
show pon tx
show sfp power
show optical transceiver
show optical transceiver interface gpon 0/1
fan mode open
fan speed low
show logic version
show device type
show sys power
cpld upgrade usb prove.jed
cpld restore
cpld erase
"""

_PON = """
transceiver rssi-txdis rssi
show transceiver rssi-txdis
show pon optical transceiver
alarm-log threshold pon-temp-high enable 50 40
show alarm-log threshold configuration
alarm-log threshold pon-temp-high disable
"""

# Of these the running configuration has a line only when they are set.
SET = ("alarm-log remote server ipv4 192.0.2.9 port 514", "alarm-log remote server ipv6 2001:db8::9 port 514",
       *(f"alarm-log threshold {name} enable 50 40" for name in ("temp-high", "cpu-usage-high", "mem-usage-high")),
       "alarm-log threshold temp-low enable 5 10")

SCRIPT = [
    *(Step("config", line) for line in reachable(_CONFIG).split("\n") if line),
    Step("config", "show running-config", SET),
    Step("config", "show running-config alarm-log", SET),
    Step("config", "show alarm-log remote server", SET[:2]),
    Step("config", "alarm-log threshold temp-high enable 60 55",
         with_faults=(f"db_olt_alarm_log_del_temp_high_clear_threshold ret={UNREACHABLE}",)),
    Step("config", "clear alarm-log", RECORDS),
    Step("config", "clear alarm-log level info", RECORDS),
    Step("config", "no alarm-log remote server ipv4", ("alarm-log remote server ipv4 192.0.2.9 port 514",)),
    Step("config", "no alarm-log remote server ipv6", ("alarm-log remote server ipv6 2001:db8::9 port 514",)),
    *(Step("diagnose", line) for line in _DIAGNOSE.split("\n") if line),
    *(Step(node, line) for node in ("gpon 0/1", "xgpon 0/4") for line in _PON.split("\n") if line),
]

_SET, _GET, _DEL = ("db_olt_alarm_log_" + word for word in ("set_", "get_", "del_"))
_CONFIGURATION = f"set alarm log configuration failed : {UNREACHABLE_TEXT}\n"
_BULK = r"alarm-log alarm all|event all|alarm-event config_all"

TABLE_HEADING = ("Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)    Optical Tx Power(dBm)           "
                 "Optical Rx Power(dBm)\r\n"
                 "----------    ---------------------    ---------------    ------------    ----------------------------    "
                 "---------------------------- \r\n")

# Line, with its node where that matters; call; the whole answer when that call fails, wherever among the line's it is.
ANSWERS = [
    (r"alarm-log remote server ipv(4|6) (en|dis)able", _SET + r"remote_server_ipv._enable",
     f"set alarm log remote server enable failed : {UNREACHABLE_TEXT}\n"),
    (r"(alarm-log remote server ipv4|syslog server ip) .* port .*", _SET + "remote_server_ipv4_ipv4_addr",
     f"set alarm log remote server ipv4 failed : {UNREACHABLE_TEXT}\n"),
    (r"alarm-log remote server ipv6 .* port .*", _SET + "remote_server_ipv6_ipv6_addr",
     f"set alarm log remote server ipv6 failed : {UNREACHABLE_TEXT}\n"),
    (r"(alarm-log remote server|syslog server) .* port .*", _SET + r"remote_server_ipv._port",
     f"set alarm log remote server port failed : {UNREACHABLE_TEXT}\n"),
    (r"no alarm-log remote server ipv4", _DEL + "remote_server_ipv4_ipv4_addr",
     f"delete alarm log remote server ipv4 failed : {UNREACHABLE_TEXT}\n"),
    (r"no alarm-log remote server ipv6", _DEL + "remote_server_ipv6_ipv6_addr",
     f"delete alarm log remote server ipv6 failed : {UNREACHABLE_TEXT}\n"),
    (r"no alarm-log remote server ipv.", _DEL + r"remote_server_ipv._port",
     f"delete alarm log remote server port failed : {UNREACHABLE_TEXT}\n"),
    (r"alarm-log flash level .*", _SET + "alarm_log_flash_level",
     f"set alarm log flash level failed : {UNREACHABLE_TEXT}\n"),
    (r"show alarm-log flash level", _GET + "alarm_log_flash_level",
     f"get alarm log flash level failed : {UNREACHABLE_TEXT}\n"),
    (r"save alarm-log flash", "get_flash_level_from_database", "get flash level failed\n"),
    (r"(save|clear) alarm-log flash", "fopen", f"open flash log file {FLASH_LOG} failed\n"),
    (r"save alarm-log flash", "fsync", "flash log file sync failed : Input/output error\n"),
    (r"show alarm-log all configuration", "db_olt_alarm_log_show_xml_alarm_id", "get alarm log list data xml failed!\n"),
    *((rf"(alarm-log )?(alarm|event) (name )?(fan|reset) (?!level).*", f"{_SET}action_{action}",
       f"set alarm log {action} failed : {UNREACHABLE_TEXT}\n{_CONFIGURATION}")
      for action in ("print", "record", "trap", "remote")),
    (r"alarm-log alarm fan level .*", _SET + "alarm_level", f"set alarm log level failed : {UNREACHABLE_TEXT}\n{_CONFIGURATION}"),
    (_BULK + ".*", _SET + r"action_\w+", _CONFIGURATION),
    (r"alarm-event default all", _SET + "action_remote", _CONFIGURATION),
    (r"alarm-event default all", _SET + "action_(print|record|trap)", ""),
    (r"(system|usb|pon|sfp) (led|power|tx) .*|show (pon|sfp) .*|fan (mode|speed) (open|low)|show (logic version|device type|sys power)",
     "misc_cpld_i2c_open", ""),
    (r"show sys power", "misc_cpld_i2c_power_state_get", "not get power state\r\n"),
    (r"show logic version", "misc_cpld_i2c_logic_version_get", "not get logic version\r\n"),
    (r"show device type", "misc_cpld_i2c_device_type_get", "not get device type\r\n"),
    (r"config: show optical transceiver.*|\S+ \S+: show pon optical transceiver", "misc_cpld_i2c_open", ""),
    (r"diagnose: show optical transceiver interface .*", "misc_cpld_i2c_open", TABLE_HEADING),
    (r"(show )?transceiver rssi-txdis.*", "misc_cpld_i2c_open|misc_cpld_channel_select", ""),
    (r"phy info 1", "misc_phy_info", ""),
    (r"phy read 1 2", "misc_phy_read", "phy 0x1 register 0x2 value 0x0\r\n"),
    (r"i2c 1 (read|write) .*", "misc_i2c_device_init", ""),
    (r"i2c 1 read .*", "misc_i2c_read", "\r\n\r\n0x0000 0x0000 0x0000 0x0000 \r\n"),
]


def required_answer(step, op):
    """The whole answer that the line must give when this call of it fails; None where no text is laid down."""
    for line, call, answer in ANSWERS:
        if re.fullmatch(line, str(step) if ": " in line else step.line) and re.fullmatch(call, op):
            return answer
    return None
