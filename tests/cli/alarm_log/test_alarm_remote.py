# SPDX-License-Identifier: GPL-2.0-or-later
"""The remote action: alarms that reach a real rsyslogd over both address families."""
import datetime
import re
import socket

import pytest
from alarm_fixtures import olt  # noqa: F401
from receivers import Rsyslog

SERVERS = {"ipv4": "127.0.0.1", "ipv6": "::1"}
PORT, OTHER_PORT = 5514, 5515
MARK = "\ufeff"
PEER_AWAY = 256 - 11  # a command's return code is a byte
# What the daemon says of a server that a datagram cannot leave for.
LOST = "alarms do not get out to log server {} port {}: "


@pytest.fixture
def remote(olt):
    """An OLT whose fan alarm is to be sent to servers, none of which is configured."""
    reset(olt)
    olt.run("alarm-log alarm fan enable remote")
    yield olt
    reset(olt)


def reset(olt):
    olt.run("alarm-log alarm fan default all")
    olt.run("clear alarm-log")
    for family in SERVERS:
        olt.run(f"no alarm-log remote server {family}")
        olt.run(f"alarm-log remote server {family} disable")


@pytest.fixture
def rsyslog(olt):
    """A function that starts an rsyslogd on both loopback addresses."""
    running = []

    def start(port=PORT, name="rsyslogd"):
        running.append(Rsyslog(olt, [(address, port) for address in SERVERS.values()], name))
        return running[-1]

    yield start
    for one in running:
        one.stop()


def configure(olt, family, port=PORT, address=None):
    for command in (f"{family} {address or SERVERS[family]} port {port}", f"{family} enable"):
        assert olt.run(f"alarm-log remote server {command}") == ("", 0)


def send(olt, message="Open!", words="id 0"):
    """The return code of filing an alarm."""
    return olt.run(f"alarm-log debug send {words} message {message}")[1]


def recorded(olt, message="Open!"):
    return olt.run("show alarm-log")[0].count(message)


@pytest.mark.parametrize("family", SERVERS)
def test_an_alarm_reaches_the_server_with_all_its_fields(remote, rsyslog, family):
    server = rsyslog()
    configure(remote, family)
    before = datetime.datetime.now(datetime.timezone.utc)
    assert send(remote, "port_0/3_is_down", "id 0 pon 3 onu 17") == 0
    after = datetime.datetime.now(datetime.timezone.utc)
    [message] = server.messages(1)
    pid = remote.exec("pidof", "-s", "diagd").stdout.strip()
    expected = {"pri": "187", "protocol-version": "1", "hostname": socket.gethostname(), "app-name": "diagd",
                "procid": pid, "msgid": "fan", "msg": "port 0/3 is down", "inputname": SERVERS[family],
                "structured-data": '[alarm@32473 id="0" name="fan" class="alarm" pon="3" onu="17"]'}
    assert {name: message[name] for name in expected} == expected
    assert before <= datetime.datetime.fromisoformat(message["time"]) <= after
    assert re.fullmatch(r"<187>1 \d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}[+-]\d\d:\d\d .* port 0/3 is down", message["rawmsg"])


def test_both_servers_get_every_alarm(remote, rsyslog):
    server = rsyslog()
    for family in SERVERS:
        configure(remote, family)
    for number in range(3):
        assert send(remote, f"n{number}") == 0
    assert sorted((m["inputname"], m["msg"]) for m in server.messages(6)) == [
        (address, f"n{number}") for address in sorted(SERVERS.values()) for number in range(3)]


@pytest.mark.parametrize("level, severity", [
    ("debug", 7), ("info", 6), ("notice", 5), ("warning", 4), ("major", 3), ("critical", 2), ("alert", 1), ("emerg", 0)])
def test_the_configured_level_is_the_severity_of_local7(remote, rsyslog, level, severity):
    server = rsyslog()
    configure(remote, "ipv4")
    assert remote.run(f"alarm-log alarm fan level {level}") == ("", 0)
    send(remote)
    remote.run("alarm-log alarm fan level major")
    assert server.messages(1)[0]["pri"] == str(23 * 8 + severity)


def test_only_alarms_whose_remote_action_is_on_are_sent(remote, rsyslog):
    server = rsyslog()
    configure(remote, "ipv4")
    send(remote, "other", "id 77")
    remote.run("alarm-log alarm fan disable remote")
    send(remote, "off")
    remote.run("alarm-log alarm fan enable remote")
    send(remote, "on")
    assert [m["msg"] for m in server.messages(1)] == ["on"]


@pytest.mark.parametrize("family", SERVERS)
def test_a_server_is_left_alone_when_switched_off_or_deleted_and_nothing_fails(remote, rsyslog, family):
    server = rsyslog()
    configure(remote, family)
    remote.run(f"alarm-log remote server {family} disable")
    assert send(remote, "off") == 0
    remote.run(f"alarm-log remote server {family} enable")
    assert send(remote, "on") == 0
    remote.run(f"no alarm-log remote server {family}")
    assert send(remote, "deleted") == 0
    configure(remote, family)
    assert send(remote, "again") == 0
    assert [m["msg"] for m in server.messages(2)] == ["on", "again"]


@pytest.mark.parametrize("family", SERVERS)
def test_a_changed_server_takes_effect_with_the_next_alarm(remote, rsyslog, family):
    old, new = rsyslog(), rsyslog(OTHER_PORT, "other")
    configure(remote, family)
    send(remote, "first")
    configure(remote, family, OTHER_PORT)
    send(remote, "second")
    configure(remote, family)
    send(remote, "third")
    assert [m["msg"] for m in new.messages(1)] == ["second"]
    assert [m["msg"] for m in old.messages(2)] == ["first", "third"]


def test_utf8_is_marked_and_ascii_is_not(remote, rsyslog):
    server = rsyslog()
    configure(remote, "ipv4")
    send(remote, "Lüfter".encode().decode("latin-1"))
    send(remote, "plain")
    assert [m["rawmsg"].rsplit("] ")[1] for m in server.messages(2)] == [MARK + "Lüfter", "plain"]


def test_a_long_text_arrives_whole(remote, rsyslog):
    server = rsyslog()
    configure(remote, "ipv4")
    text = "".join(chr(ord("a") + n % 26) for n in range(319))
    send(remote, text)
    assert server.messages(1)[0]["msg"] == text


def test_text_that_looks_like_structure_stays_text(remote, rsyslog):
    server = rsyslog()
    configure(remote, "ipv4")
    send(remote, '[x@1_a="b"]_%s_"]')
    [message] = server.messages(1)
    assert message["msg"] == '[x@1 a="b"] %s "]'
    assert message["structured-data"].count("[") == 1


def test_a_server_that_is_away_costs_what_is_sent_meanwhile_only(remote, rsyslog):
    configure(remote, "ipv4")
    for _ in range(3):
        assert send(remote, "lost") == 0
    server = rsyslog()
    assert send(remote, "got") == 0
    assert [m["msg"] for m in server.messages(1)] == ["got"]
    assert recorded(remote, "lost") == 3


def test_an_unreachable_server_is_said_once_and_keeps_nothing_back(remote, rsyslog):
    server = rsyslog()
    unreachable = LOST.format("192.0.2.1", PORT)
    again = f"alarms get out to log server 127.0.0.1 port {PORT} again"
    begin = len(remote.log())

    def said(text):
        return remote.log()[begin:].count(text)

    configure(remote, "ipv4", address="192.0.2.1")
    configure(remote, "ipv6")
    for _ in range(3):
        assert send(remote) == PEER_AWAY
    assert recorded(remote) == 3
    assert [m["inputname"] for m in server.messages(3)] == ["::1"] * 3
    assert said(unreachable + "Network is unreachable") == 1
    assert said("alarm fan (major): Open!") >= 3
    configure(remote, "ipv4")
    for _ in range(2):
        assert send(remote) == 0
    assert said(again) == 1
    configure(remote, "ipv4", address="192.0.2.1")
    assert send(remote) == PEER_AWAY
    assert said(unreachable) == 2


def test_another_unreachable_server_is_news(remote):
    for address in ("198.51.100.1", "198.51.100.2"):
        configure(remote, "ipv4", address=address)
        for _ in range(2):
            assert send(remote) == PEER_AWAY
        assert remote.log().count(LOST.format(address, PORT)) == 1


def test_sending_keeps_one_socket_for_each_family_open(remote, rsyslog):
    rsyslog()
    for family in SERVERS:
        configure(remote, family)
    with remote.vty() as session:
        session.run("alarm-log debug send id 0 message first")
        before = remote.settled_fds()
        for _ in range(20):
            session.run("alarm-log debug send id 0 message more")
        remote.wait_no_more_fds(before)


def test_neither_the_store_nor_its_lock_suffers_when_sending_fails(remote):
    configure(remote, "ipv4", address="203.0.113.1")
    for _ in range(20):
        send(remote)
    assert recorded(remote) == 20
    remote.wait_free("alarm")


def test_a_neighbour_that_never_answers_keeps_nobody_waiting(fresh_olt):
    """Packets for an address that is still being looked for queue in the kernel, and few of them."""
    for words in ("link add out0 type veth peer name out1", "addr add 192.0.2.2/24 dev out0", "link set out0 up",
                  "link set out1 up"):
        fresh_olt.exec("ip", *words.split(), check=True)
    fresh_olt.quiet().run("alarm-log alarm fan enable remote")
    configure(fresh_olt, "ipv4", address="192.0.2.1")
    with fresh_olt.vty() as session:
        for number in range(500):
            assert session.run(f"alarm-log debug send id 0 message n{number}")[1] in (0, PEER_AWAY)
    assert len(re.findall(r" n\d+$", fresh_olt.run("show alarm-log")[0], re.M)) == 500
