# SPDX-License-Identifier: GPL-2.0-or-later
"""The trap action: notifications that reach a real snmptrapd, which reads them with our MIB."""
import datetime
import re
from pathlib import Path

import pytest
from alarm_fixtures import catalogue, olt  # noqa: F401
from receivers import SNMP, Snmptrapd

PORT, OTHER_PORT = 11162, 11163
SINKS = "/etc/olt/trap-sinks.conf"
PEER_AWAY, UNREADABLE = 256 - 11, 256 - 1  # a command's return code is a byte
MIB = "OLT-ALARM-MIB::oltAlarm"


@pytest.fixture
def trapping(olt):
    """An OLT whose fan alarm is to be sent to sinks, of which there are none."""
    reset(olt)
    olt.run("alarm-log alarm fan enable trap")
    yield olt
    reset(olt)


def reset(olt):
    olt.exec("rm", "-rf", SINKS, check=True)
    olt.run("alarm-log alarm fan default all")
    olt.run("clear alarm-log")


@pytest.fixture
def snmptrapd(olt):
    """A function that starts an snmptrapd on both loopback addresses."""
    running = []

    def start(port=PORT, **how):
        running.append(Snmptrapd(olt, [port], **how))
        return running[-1]

    yield start
    for one in running:
        one.stop()


def sinks(olt, *lines):
    olt.exec("tee", SINKS, input="".join(line + "\n" for line in lines), check=True)


def send(olt, message="Open!", words="id 0"):
    """The return code of filing an alarm."""
    return olt.run(f"alarm-log debug send {words} message {message}")[1]


def recorded(olt, message="Open!"):
    return olt.run("show alarm-log")[0].count(message)


def messages(traps):
    return [values[f"{MIB}Message.0"] for _, values in traps]


def text(value):
    return "STRING: " + value


@pytest.mark.parametrize("sink", [f"127.0.0.1:{PORT}", f"[::1]:{PORT}"])
def test_an_alarm_reaches_the_sink_with_every_object(trapping, snmptrapd, catalogue, sink):
    receiver = snmptrapd()
    sinks(trapping, f"{sink} public")
    before = datetime.datetime.now(datetime.timezone.utc)
    assert send(trapping, "Open!", "id 0 uplink-port 2 pon 3 onu 17 onu-port 4") == 0
    after = datetime.datetime.now(datetime.timezone.utc)
    [(community, values)] = receiver.traps(1)
    assert community == "public"
    assert re.fullmatch(r"Timeticks: \(\d+\) .*", values.pop("SNMPv2-MIB::sysUpTime.0"))
    time = values.pop(f"{MIB}Time.0").removeprefix("STRING: ")
    date, clock, zone = time.split(",")
    year, month, day = map(int, date.split("-"))
    hour, minute, second = (int(float(part)) for part in clock.split(":"))
    offset = datetime.datetime.strptime(re.sub(r"\b(\d)\b", r"0\1", zone), "%z").tzinfo
    happened = datetime.datetime(year, month, day, hour, minute, second, tzinfo=offset)
    assert before - datetime.timedelta(seconds=1) < happened <= after, "the tenths of a second are not told here"
    assert values == {
        "SNMPv2-MIB::snmpTrapOID.0": f"OID: {MIB}",
        f"{MIB}Id.0": "Gauge32: 0",
        f"{MIB}Name.0": text("fan"),
        f"{MIB}Class.0": "INTEGER: 0",
        f"{MIB}Level.0": "INTEGER: 4",
        f"{MIB}Description.0": text(catalogue[0]["description"]),
        f"{MIB}Message.0": text("Open!"),
        f"{MIB}UplinkPort.0": "Gauge32: 2",
        f"{MIB}Pon.0": "Gauge32: 3",
        f"{MIB}Onu.0": "Gauge32: 17",
        f"{MIB}OnuPort.0": "Gauge32: 4",
    }


def test_every_sink_of_the_file_gets_every_alarm(trapping, snmptrapd):
    first, second = snmptrapd(), snmptrapd(OTHER_PORT, community="other", name="second")
    sinks(trapping, "# ours", f"127.0.0.1:{PORT} public", "", f"[::1]:{OTHER_PORT}\tother # theirs")
    for number in range(3):
        assert send(trapping, f"n{number}") == 0
    assert messages(first.traps(3)) == messages(second.traps(3)) == [text(f"n{number}") for number in range(3)]


@pytest.mark.parametrize("level, number", [("debug", 0), ("info", 1), ("notice", 2), ("warning", 3), ("major", 4),
                                           ("critical", 5), ("alert", 6), ("emerg", 7)])
def test_the_configured_level_is_sent(trapping, snmptrapd, level, number):
    receiver = snmptrapd()
    sinks(trapping, f"127.0.0.1:{PORT} public")
    assert trapping.run(f"alarm-log alarm fan level {level}") == ("", 0)
    send(trapping)
    trapping.run("alarm-log alarm fan level major")
    assert receiver.traps(1)[0][1][f"{MIB}Level.0"] == f"INTEGER: {number}"


def test_an_event_is_sent_as_one(trapping, snmptrapd, catalogue):
    event = next(entry for entry in catalogue if entry["class"] == "event")
    receiver = snmptrapd()
    sinks(trapping, f"127.0.0.1:{PORT} public")
    trapping.run(f"alarm-log event {event['name']} enable trap")
    send(trapping, "x", f"id {event['id']}")
    trapping.run(f"alarm-log event {event['name']} disable trap")
    assert receiver.traps(1)[0][1][f"{MIB}Class.0"] == "INTEGER: 1"


def test_only_alarms_whose_trap_action_is_on_are_sent(trapping, snmptrapd):
    receiver = snmptrapd()
    sinks(trapping, f"127.0.0.1:{PORT} public")
    send(trapping, "other", "id 77")
    trapping.run("alarm-log alarm fan disable trap")
    send(trapping, "off")
    trapping.run("alarm-log alarm fan enable trap")
    send(trapping, "on")
    assert messages(receiver.traps(1)) == [text("on")]


def test_a_changed_file_takes_effect_with_the_next_alarm(trapping, snmptrapd):
    first, second = snmptrapd(), snmptrapd(OTHER_PORT, name="second")
    sinks(trapping, f"127.0.0.1:{PORT} public")
    send(trapping, "one")
    sinks(trapping, f"127.0.0.1:{OTHER_PORT} public")
    send(trapping, "two")
    trapping.exec("rm", SINKS, check=True)
    assert send(trapping, "none") == 0
    sinks(trapping, f"127.0.0.1:{PORT} public", f"127.0.0.1:{OTHER_PORT} public")
    send(trapping, "three")
    assert messages(first.traps(2)) == [text("one"), text("three")]
    assert messages(second.traps(2)) == [text("two"), text("three")]


def test_a_sink_that_takes_another_community_gets_nothing_to_read(trapping, snmptrapd):
    right, wrong = snmptrapd(), snmptrapd(OTHER_PORT, community="secret", name="second")
    sinks(trapping, f"127.0.0.1:{OTHER_PORT} public", f"127.0.0.1:{PORT} public")
    send(trapping)
    assert messages(right.traps(1)) == [text("Open!")]
    # What it takes later on the same socket says that it has seen the first.
    sinks(trapping, f"127.0.0.1:{OTHER_PORT} secret")
    send(trapping, "later")
    assert messages(wrong.traps(1)) == [text("later")]


def test_texts_long_and_beyond_ascii_arrive_whole(trapping, snmptrapd):
    receiver = snmptrapd()
    sinks(trapping, f"127.0.0.1:{PORT} public")
    long = "".join(chr(ord("a") + n % 26) for n in range(319))
    send(trapping, long)
    send(trapping, "Lüfter".encode().decode("latin-1"))
    send(trapping, '%s%n"\\')
    assert messages(receiver.traps(3)) == [text(long), text("Lüfter"), text('%s%n"\\')]


def test_no_sinks_are_no_error(trapping):
    assert send(trapping) == 0
    sinks(trapping, "# nothing")
    assert send(trapping) == 0
    assert recorded(trapping) == 2


def test_lines_that_are_wrong_are_said_once_and_leave_the_others(trapping, snmptrapd):
    receiver = snmptrapd()
    sinks(trapping, "localhost public", f"127.0.0.1:{PORT} public", "127.0.0.1")
    for _ in range(2):
        assert send(trapping) == 0
    assert len(receiver.traps(2)) == 2
    for mistake in ("line 1: no address of the form IPV4[:PORT], IPV6 or [IPV6]:PORT",
                    "line 3: an address and a community are wanted"):
        assert trapping.log().count(f"{SINKS} {mistake}") == 1


def test_an_unreachable_sink_is_said_once_and_keeps_nothing_back(trapping, snmptrapd):
    complaint = "alarms do not get out to trap sink 192.0.2.1 port 162: Network is unreachable"
    receiver, before = snmptrapd(), trapping.log().count(complaint)
    sinks(trapping, "192.0.2.1 public", f"127.0.0.1:{PORT} public")
    for _ in range(3):
        assert send(trapping) == PEER_AWAY
    assert len(receiver.traps(3)) == 3
    assert recorded(trapping) == 3
    assert trapping.log().count(complaint) == before + 1


def test_a_sink_that_stays_in_an_edited_file_is_complained_of_once(trapping, snmptrapd):
    complaint = "alarms do not get out to trap sink 192.0.2.2 port 162: Network is unreachable"
    receiver, before = snmptrapd(), trapping.log().count(complaint)
    sinks(trapping, "192.0.2.2 public")
    assert send(trapping) == PEER_AWAY
    sinks(trapping, f"127.0.0.1:{PORT} public", "192.0.2.2 public")
    assert send(trapping) == PEER_AWAY
    assert len(receiver.traps(1)) == 1
    assert trapping.log().count(complaint) == before + 1


def test_a_file_of_more_than_64_KiB_is_refused_whole(trapping, snmptrapd):
    receiver = snmptrapd()
    sinks(trapping, f"127.0.0.1:{PORT} public", "#" * 65536)
    assert send(trapping, "huge") == UNREADABLE
    trapping.wait_log(f"alarms do not get out to the trap sinks of {SINKS}: File too large")
    sinks(trapping, f"127.0.0.1:{PORT} public", "#" * 60000)
    assert send(trapping, "large") == 0
    assert messages(receiver.traps(1)) == [text("large")]


def test_a_port_that_was_not_told_is_sent_as_0_and_the_mib_says_what_that_means(trapping, snmptrapd):
    receiver = snmptrapd()
    sinks(trapping, f"127.0.0.1:{PORT} public")
    send(trapping, "GPON_0/3_is_dark")
    [(_, values)] = receiver.traps(1)
    for name in ("UplinkPort", "Pon", "Onu", "OnuPort"):
        assert values[f"{MIB}{name}.0"] == "Gauge32: 0"
        described = " ".join(snmptranslate(trapping, "-Td", f"{MIB}{name}").stdout.split())
        assert re.search("0 when the program that filed (it|the alarm) did not say", described), described


def test_a_sink_that_is_away_costs_what_is_sent_meanwhile_only(trapping, snmptrapd):
    sinks(trapping, f"127.0.0.1:{PORT} public")
    for _ in range(3):
        assert send(trapping, "lost") == 0
    receiver = snmptrapd()
    assert send(trapping, "got") == 0
    assert messages(receiver.traps(1)) == [text("got")]


@pytest.mark.parametrize("make", [["mkdir"], ["mkfifo"], ["ln", "-s", "/dev/zero"], ["install", "-m", "0600", "/dev/null"]])
def test_a_file_that_is_none_or_cannot_be_read_is_said_once_and_never_waited_for(trapping, snmptrapd, make):
    receiver = snmptrapd()
    before = trapping.log().count(f"do not get out to the trap sinks of {SINKS}")
    trapping.exec(*make, SINKS, check=True)
    for _ in range(2):
        assert send(trapping, "kept") == UNREADABLE
    assert recorded(trapping, "kept") == 2
    assert trapping.log().count(f"do not get out to the trap sinks of {SINKS}") == before + 1
    trapping.exec("rm", "-r", SINKS, check=True)
    sinks(trapping, f"127.0.0.1:{PORT} public")
    assert send(trapping, "again") == 0
    assert messages(receiver.traps(1)) == [text("again")]


def test_both_ways_out_fail_alone(trapping, snmptrapd):
    """An unreachable log server is no trouble for a trap, and the other way round."""
    receiver = snmptrapd()
    sinks(trapping, f"127.0.0.1:{PORT} public")
    trapping.run("alarm-log alarm fan enable remote")
    trapping.run("alarm-log remote server ipv4 192.0.2.9 port 514")
    trapping.run("alarm-log remote server ipv4 enable")
    assert send(trapping) == PEER_AWAY
    trapping.run("no alarm-log remote server ipv4")
    trapping.run("alarm-log remote server ipv4 disable")
    assert messages(receiver.traps(1)) == [text("Open!")]
    assert recorded(trapping) == 1


def test_nothing_is_printed_and_no_file_of_snmp_is_made(trapping):
    before = trapping.stdout() + trapping.stderr()
    sinks(trapping, "192.0.2.1 public")
    send(trapping)
    assert trapping.stdout() + trapping.stderr() == before
    assert trapping.exec("find", "/var/lib/snmp", "-newer", SINKS, check=True).stdout == ""


ENCODER = "/run/olt/build/lib/libtqtrap.so"


def mapped(olt):
    """What the daemon has of the encoder in its memory."""
    maps = Path(f"/proc/{olt.pid}/maps").read_text()
    return {name for name in ("libtqtrap", "libnetsnmp", "libcrypto") if name in maps}


def test_the_encoder_is_loaded_when_the_first_trap_is_sent(fresh_olt):
    fresh_olt.run("alarm-log alarm fan enable trap")
    send(fresh_olt)
    assert not mapped(fresh_olt), "without a sink it is not needed"
    sinks(fresh_olt, f"127.0.0.1:{PORT} public")
    assert send(fresh_olt) == 0
    assert mapped(fresh_olt) == {"libtqtrap", "libnetsnmp", "libcrypto"}


def test_an_encoder_that_cannot_be_loaded_is_said_once_and_keeps_no_record_back(fresh_olt):
    fresh_olt.exec("mount", "--bind", "/dev/null", ENCODER, check=True)
    fresh_olt.run("alarm-log alarm fan enable trap")
    sinks(fresh_olt, f"127.0.0.1:{PORT} public")
    for _ in range(2):
        assert send(fresh_olt) == PEER_AWAY
    assert recorded(fresh_olt) == 2
    said = [line for line in fresh_olt.log().splitlines() if "traps cannot be made" in line]
    assert len(said) == 1 and "/libtqtrap.so: " in said[0]
    fresh_olt.wait_log(f"alarms do not get out to trap sink 127.0.0.1 port {PORT}: Can not access a needed shared library")


def snmptranslate(olt, *words):
    olt.exec("mkdir", "-p", "/run/snmp/cert_indexes", check=True)  # the first program says that it makes them
    return olt.exec(*SNMP, "snmptranslate", "-Pewu", *words)


def test_the_mib_is_accepted_without_a_warning(olt):
    done = snmptranslate(olt, "-On", f"{MIB}")
    assert (done.stdout, done.stderr, done.returncode) == (".1.3.6.1.4.1.32473.1.0.1\n", "", 0)


@pytest.mark.parametrize("number, name", enumerate(
    "Id Name Class Level Description Message Time UplinkPort Pon Onu OnuPort".split(), 1))
def test_objects_have_the_numbers_that_are_sent(olt, number, name):
    assert snmptranslate(olt, "-On", f"{MIB}{name}.0").stdout == f".1.3.6.1.4.1.32473.1.1.{number}.0\n"


def test_level_and_class_names_are_those_of_the_commands(olt):
    levels = "debug(0), info(1), notice(2), warning(3), major(4), critical(5), alert(6), emerg(7)"
    assert f"INTEGER {{{levels}}}" in snmptranslate(olt, "-Td", f"{MIB}Level").stdout
    assert "INTEGER {alarm(0), event(1)}" in snmptranslate(olt, "-Td", f"{MIB}Class").stdout
