# SPDX-License-Identifier: GPL-2.0-or-later
"""The remote log servers: what their commands store in the database, and what is shown of it."""
import pytest
from alarm_fixtures import calls_of, edit_database, olt  # noqa: F401
from olt import wait_until

FAMILIES = {"ipv4": ("ipv4_ipv4_addr", 16, "10.0.0.1"), "ipv6": ("ipv6_ipv6_addr", 64, "2001:db8::1")}
NOTHING = "alarm-log remote server {0} : disable\nno alarm-log remote server {0}\n"
PREFIX = "db_olt_alarm_log_"


@pytest.fixture(autouse=True)
def nothing_configured(olt):
    """No server, both switched off."""
    olt.faults()
    for family in FAMILIES:
        olt.run(f"no alarm-log remote server {family}")
        olt.run(f"alarm-log remote server {family} disable")
    yield
    olt.faults()


def stored(olt, command):
    """What the command prints, and its setter and deleter calls: name, value, width, apply."""
    text, rc, calls = calls_of(olt, command, PREFIX + "(set|del)_.*")
    assert rc == 0
    return text, [(call.op.removeprefix(PREFIX), *call.values.values()) for call in calls]


def shown(olt, words=""):
    text, rc = olt.run(f"show alarm-log remote server {words}".rstrip())
    assert rc == 0
    return text


def test_nothing_configured_shows_each_family_off_and_without_server(olt):
    assert shown(olt) == NOTHING.format("ipv4") + NOTHING.format("ipv6")


@pytest.mark.parametrize("family", FAMILIES)
def test_one_family_is_shown_alone(olt, family):
    assert shown(olt, family) == NOTHING.format(family)


@pytest.mark.parametrize("family", FAMILIES)
@pytest.mark.parametrize("word, value", [("enable", "1"), ("disable", "0"), ("en", "1"), ("dis", "0")])
def test_switching_a_family_stores_one_byte_at_once(olt, family, word, value):
    assert stored(olt, f"alarm-log remote server {family} {word}") == (
        "", [(f"set_remote_server_{family}_enable", value, "1", "1")])


@pytest.mark.parametrize("family", FAMILIES)
def test_switching_one_family_leaves_the_other(olt, family):
    other = "ipv6" if family == "ipv4" else "ipv4"
    olt.run(f"alarm-log remote server {family} enable")
    assert shown(olt, family) == f"alarm-log remote server {family} : enable\nno alarm-log remote server {family}\n"
    assert shown(olt, other) == NOTHING.format(other)


@pytest.mark.parametrize("family, command", [
    ("ipv4", "alarm-log remote server ipv4 {} port {}"),
    ("ipv4", "syslog server ip {} port {}"),
    ("ipv6", "alarm-log remote server ipv6 {} port {}"),
    ("ipv6", "syslog server ipv6 {} port {}"),
])
@pytest.mark.parametrize("port", [1, 514, 65535])
def test_both_forms_store_address_then_port_at_once(olt, family, command, port):
    setter, width, address = FAMILIES[family]
    assert stored(olt, command.format(address, port)) == ("", [
        (f"set_remote_server_{setter}", address, str(width), "1"),
        (f"set_remote_server_{family}_port", str(port), "2", "1"),
    ])
    assert shown(olt, family) == (f"alarm-log remote server {family} : disable\n"
                                  f"alarm-log remote server {family} is {address} port {port}\n")


@pytest.mark.parametrize("family, address", [
    ("ipv4", "255.255.255.255"),
    ("ipv4", "0.0.0.0"),
    ("ipv6", "2001:0db8:1111:2222:3333:4444:5555:6666"),
    ("ipv6", "::"),
    ("ipv6", "::ffff:192.168.100.228"),
])
def test_addresses_are_stored_whole_and_as_typed(olt, family, address):
    olt.run(f"alarm-log remote server {family} {address} port 514")
    assert shown(olt, family).endswith(f"alarm-log remote server {family} is {address} port 514\n")


@pytest.mark.parametrize("command", [
    "alarm-log remote server ipv4 10.0.0.256 port 514", "alarm-log remote server ipv4 10.0.0 port 514",
    "alarm-log remote server ipv4 10.0.0.1 port 0", "alarm-log remote server ipv4 10.0.0.1 port 65536",
    "alarm-log remote server ipv4 ::1 port 514", "alarm-log remote server ipv6 10.0.0.1 port 514",
    "alarm-log remote server ipv6 2001:db8::1::2 port 514", "alarm-log remote server ipv6 ::1%eth0 port 514",
    "alarm-log remote server ipv4 10.0.0.1", "syslog server ip 10.0.0.1 port 0", "syslog server ipv4 10.0.0.1 port 1",
    "no alarm-log remote server", "alarm-log remote server enable",
])
def test_what_the_syntax_does_not_allow_changes_nothing(olt, command):
    _, rc, calls = calls_of(olt, command, PREFIX + "(set|del)_.*")
    assert rc != 0 and calls == []


@pytest.mark.parametrize("family, command", [
    ("ipv4", "no alarm-log remote server ipv4"),
    ("ipv4", "no syslog server ip"),
    ("ipv6", "no alarm-log remote server ipv6"),
    ("ipv6", "no syslog server ipv6"),
])
def test_deleting_takes_address_and_port_and_leaves_the_switch(olt, family, command):
    setter, _, address = FAMILIES[family]
    olt.run(f"alarm-log remote server {family} {address} port 514")
    olt.run(f"alarm-log remote server {family} enable")
    assert stored(olt, command) == ("", [(f"del_remote_server_{setter}",), (f"del_remote_server_{family}_port",)])
    assert shown(olt, family) == f"alarm-log remote server {family} : enable\nno alarm-log remote server {family}\n"


@pytest.mark.parametrize("family", FAMILIES)
def test_an_address_that_is_not_stored_is_said_and_the_port_goes_nevertheless(olt, family):
    setter, _, address = FAMILIES[family]
    olt.run(f"alarm-log remote server {family} {address} port 514")
    olt.faults(f"{PREFIX}del_remote_server_{setter} nth=1 ret=-2")
    text, calls = stored(olt, f"no alarm-log remote server {family}")
    assert text == f"delete alarm log remote server {family} failed : No such object\n"
    assert calls[1] == (f"del_remote_server_{family}_port",)
    assert shown(olt, family).endswith(f"no alarm-log remote server {family}\n")


def test_deleting_what_is_not_there_says_both(olt):
    assert stored(olt, "no alarm-log remote server ipv6")[0] == (
        "delete alarm log remote server ipv6 failed : No such object\n"
        "delete alarm log remote server port failed : No such object\n")


FAILURES = [
    (f"set_remote_server_{family}_enable", f"alarm-log remote server {family} enable",
     "set alarm log remote server enable failed : {}\n") for family in FAMILIES
] + [
    (f"{verb}_remote_server_{setter if what == family else family + '_port'}", command,
     f"{verb_text} alarm log remote server {what} failed : {{}}\n")
    for family, (setter, _, address) in FAMILIES.items()
    for verb, verb_text, command in (("set", "set", f"alarm-log remote server {family} {address} port 514"),
                                     ("del", "delete", f"no alarm-log remote server {family}"))
    for what in (family, "port")
]


@pytest.mark.parametrize("op, command, expected", FAILURES)
@pytest.mark.parametrize("code, reason", [(-5, "Database locked by another user"), (5, "Input/output error")])
def test_a_value_that_is_refused_is_one_line_and_keeps_no_other_back(olt, op, command, expected, code, reason):
    family = "ipv6" if "ipv6" in command else "ipv4"
    olt.run(f"alarm-log remote server {family} {FAMILIES[family][2]} port 1")
    olt.faults(f"{PREFIX}{op} nth=1 ret={code}")
    text, calls = stored(olt, command)
    assert text == expected.format(reason)
    assert len(calls) == (1 if command.endswith("enable") else 2)


@pytest.mark.parametrize("family", FAMILIES)
def test_what_cannot_be_read_shows_as_off_and_as_no_server(olt, family):
    setter, _, address = FAMILIES[family]
    olt.run(f"alarm-log remote server {family} {address} port 514")
    olt.run(f"alarm-log remote server {family} enable")
    on = f"alarm-log remote server {family} : enable\n"
    server = f"alarm-log remote server {family} is {address} port 514\n"
    none = f"no alarm-log remote server {family}\n"
    assert shown(olt, family) == on + server
    olt.faults(f"{PREFIX}get_remote_server_{family}_enable nth=1 ret=-1")
    assert shown(olt, family) == f"alarm-log remote server {family} : disable\n" + server
    olt.faults(f"{PREFIX}get_remote_server_{setter} nth=1 ret=-1")
    assert shown(olt, family) == on + none
    olt.faults(f"{PREFIX}get_remote_server_{family}_port nth=1 ret=-1")
    assert shown(olt, family) == on + none


@pytest.mark.parametrize("family", FAMILIES)
def test_the_port_is_read_after_the_address_and_only_with_it(olt, family):
    setter = FAMILIES[family][0]

    def reads():
        _, _, calls = calls_of(olt, f"show alarm-log remote server {family}", PREFIX + "get_remote_server_.*")
        return [call.op.removeprefix(PREFIX + "get_remote_server_") for call in calls]

    assert reads() == [f"{family}_enable", setter]
    olt.run(f"alarm-log remote server {family} {FAMILIES[family][2]} port 514")
    assert reads() == [f"{family}_enable", setter, f"{family}_port"]


def test_no_command_takes_the_apply_lock(olt):
    for command in ["alarm-log remote server ipv4 10.0.0.1 port 1", "no syslog server ip", "alarm-log remote server ipv6 enable"]:
        assert calls_of(olt, command, "db_apply_.*")[2] == []


def test_a_change_made_elsewhere_is_accepted_and_shown(olt):
    edit_database(olt, '<alarm-log xmlns="urn:norvale:yang:olt-alarm-log"><remote-server-ipv4>'
                       "<ipv4-addr>192.0.2.7</ipv4-addr><port>601</port></remote-server-ipv4></alarm-log>")
    wait_until(lambda: "is 192.0.2.7 port 601" in shown(olt, "ipv4"), "the new server is shown")
