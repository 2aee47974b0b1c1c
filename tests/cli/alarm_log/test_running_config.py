# SPDX-License-Identifier: GPL-2.0-or-later
"""The alarm log's part of the running configuration: its lines, and that a saved one gives itself back."""
import pytest
from alarm_fixtures import calls_of, catalogue, edit_database, let_changes_be_heard, olt, try_edit_database  # noqa: F401
from alarm_words import ACTIONS, ALARM_COUNT, LEVELS, NAMED
from olt import wait_until
from threshold_fixtures import BOARD_ALARMS, PON_ALARMS, a_pass, store_thresholds

FRESH = ["alarm-log remote server ipv4 disable", "alarm-log remote server ipv6 disable", "alarm-log flash level warning"]
SHOW = "show running-config alarm-log"


@pytest.fixture(autouse=True)
def as_fresh(olt):  # noqa: F811
    file = olt.state / "conf" / "diagd.conf"
    content = file.read_text()
    yield
    file.write_text(content)
    olt.faults()
    for family in ("ipv4", "ipv6"):
        olt.run(f"no alarm-log remote server {family}")
    store_thresholds(olt, **{name: (None, None) for name in BOARD_ALARMS})
    olt.restart(trace=True)


def lines(olt):  # noqa: F811
    """Lines of the alarm log's writer; each must end as a daemon's line does."""
    text, rc = olt.run(SHOW)
    assert rc == 0 and (text == "" or text.endswith("\r\n")) and text.count("\r\n") == text.count("\n")
    return text.split("\r\n")[:-1]


def whole(olt):  # noqa: F811
    text, rc = olt.run("show running-config", "enable")
    assert rc == 0
    return text


def interfaces(olt):  # noqa: F811
    """The interface blocks of the whole configuration."""
    text = whole(olt)
    if "interface " not in text:
        return ""
    return text[text.index("interface ") : text.index("alarm-log remote server ipv4")]


def configure(olt, *commands, node="config"):  # noqa: F811
    with olt.vty(node) as session:
        for command in commands:
            assert session.run(command) == ("", 0), command


def test_a_fresh_system_has_exactly_three_lines(olt):  # noqa: F811
    assert olt.run(SHOW) == (
        "alarm-log remote server ipv4 disable\r\n"
        "alarm-log remote server ipv6 disable\r\n"
        "alarm-log flash level warning\r\n", 0)
    assert whole(olt).endswith("\n" + "".join(line + "\r\n" for line in FRESH))
    assert interfaces(olt) == ""


def test_servers_have_their_line_behind_their_switch(olt):  # noqa: F811
    configure(olt, "alarm-log remote server ipv4 10.0.0.1 port 514", "alarm-log remote server ipv4 enable",
              "alarm-log remote server ipv6 2001:db8::1 port 65535")
    assert lines(olt) == [
        "alarm-log remote server ipv4 enable", "alarm-log remote server ipv4 10.0.0.1 port 514",
        "alarm-log remote server ipv6 disable", "alarm-log remote server ipv6 2001:db8::1 port 65535",
        "alarm-log flash level warning"]


@pytest.mark.parametrize("level", LEVELS)
def test_the_flash_level_is_always_written(olt, level):  # noqa: F811
    configure(olt, f"alarm-log flash level {level}")
    assert lines(olt)[2:] == [f"alarm-log flash level {level}"]


def test_a_default_switched_off_is_given_back_as_typed(olt):  # noqa: F811
    configure(olt, "alarm-log alarm fan disable print")
    assert lines(olt)[3:] == ["alarm-log alarm fan disable print"]
    configure(olt, "alarm-log alarm fan enable print")
    assert lines(olt) == FRESH


def test_an_alarm_with_one_action_is_given_back_with_that_action(olt):  # noqa: F811
    """Each alarm has another action, so that no two of them can stand for each other."""
    names = ["fan", "port-updown", "mac-flapping", "rogue-onu"]
    switched = [f"alarm-log alarm {name} disable {action}" for name in names for action in ("print", "record")]
    expected = []
    for name, action in zip(names, ACTIONS):
        switched.append(f"alarm-log alarm {name} enable {action}")
        expected += [f"alarm-log alarm {name} disable {default}" for default in ("print", "record") if default != action]
        expected += [f"alarm-log alarm {name} enable {action}"] if action in ("trap", "remote") else []
    configure(olt, *switched)
    assert [line for line in lines(olt) if line.startswith("alarm-log alarm")] == expected

    assert olt.run("write file", "enable")[1] == 0
    olt.restart(trace=True)
    rows = {row.split()[1]: row.split()[-4:] for row in olt.run("show alarm-log alarm configuration")[0].splitlines()[1:]}
    for name, action in zip(names, ACTIONS):
        assert rows[name] == ["enable" if one == action else "disable" for one in ACTIONS]


def test_only_what_differs_from_the_catalogue_is_written(olt, catalogue):  # noqa: F811
    """Every switch of every alarm turned round, every level moved: a line for each, in order of ids."""
    by_name, expected = {}, []
    for entry in catalogue:
        by_name.setdefault(entry["name"], entry)
    for entry in catalogue:
        if by_name[entry["name"]] is not entry or (entry["class"], entry["name"]) not in NAMED:
            continue
        words = f'alarm-log {entry["class"]} {entry["name"]}'
        if entry["name"] not in BOARD_ALARMS:
            expected.append(f'{words} level {LEVELS[LEVELS.index(entry["level"]) - 1]}')
        for bit, action in enumerate(ACTIONS):
            expected.append(f'{words} {"disable" if entry["actions"] >> bit & 1 else "enable"} {action}')
    assert len(expected) > 500
    configure(olt, *reversed(expected))
    assert lines(olt) == FRESH + expected


def test_a_level_that_somebody_removed_differs_from_the_catalogue(olt):  # noqa: F811
    edit_database(olt, '<alarm-log xmlns="urn:norvale:yang:olt-alarm-log"'
                       ' xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0">'
                       '<alarm><id>0</id><level nc:operation="remove"/></alarm></alarm-log>')
    wait_until(lambda: lines(olt) == [*FRESH, "alarm-log alarm fan level "], "the removal is seen")


def test_thresholds_are_written_as_they_are_stored(olt):  # noqa: F811
    store_thresholds(olt, **{"mem-usage-high": ("90.50", "+80"), "temp-low": ("-5", ".5"), "temp-high": (70, "065"),
                             "cpu-usage-high": ("0", "1")})
    for name in BOARD_ALARMS:
        configure(olt, f"alarm-log alarm {name} enable print")
    assert [line for line in lines(olt) if "threshold" in line] == [
        "alarm-log threshold temp-high enable 70 065", "alarm-log threshold temp-low enable -5 .5",
        "alarm-log threshold cpu-usage-high enable 0 1", "alarm-log threshold mem-usage-high enable 90.50 +80"]


@pytest.mark.parametrize("action", ACTIONS)
def test_the_print_switch_alone_decides_about_a_threshold_line(olt, action):  # noqa: F811
    store_thresholds(olt, **{"temp-high": (70, 65)})
    configure(olt, f"alarm-log alarm temp-high enable {action}")
    assert ("alarm-log threshold temp-high enable 70 65" in lines(olt)) == (action == "print")


@pytest.mark.parametrize("alarm, clear, written", [
    (0, 0, False), ("0.0", "-0", False), ("0", "0.000001", False), ("0", "0.000002", True), ("-0.000002", "0", True),
    (1, 0, True), (0, 1, True),
])
def test_thresholds_of_nothing_have_no_line(olt, alarm, clear, written):  # noqa: F811
    store_thresholds(olt, **{"cpu-usage-high": (alarm, clear)})
    configure(olt, "alarm-log alarm cpu-usage-high enable print")
    assert [line for line in lines(olt) if "threshold" in line] == (
        [f"alarm-log threshold cpu-usage-high enable {alarm} {clear}"] if written else [])


@pytest.mark.parametrize("alarm, clear", [(None, None), (70, None), (None, 65)])
def test_one_threshold_may_be_missing(olt, alarm, clear):  # noqa: F811
    store_thresholds(olt, **{"temp-high": (alarm, clear)})
    configure(olt, "alarm-log alarm temp-high enable print")
    found = [line for line in lines(olt) if "threshold" in line]
    assert found == ([] if alarm is clear is None else
                     [f"alarm-log threshold temp-high enable {alarm or ''} {clear or ''}"])


def test_the_longest_stored_threshold_is_written_whole(olt):  # noqa: F811
    longest = "1" + "0" * 30
    store_thresholds(olt, **{"temp-high": (longest, longest)})
    configure(olt, "alarm-log alarm temp-high enable print")
    assert f"alarm-log threshold temp-high enable {longest} {longest}" in lines(olt)


def alarm_log(content):
    return f'<alarm-log xmlns="urn:norvale:yang:olt-alarm-log">{content}</alarm-log>'


def test_addresses_that_other_programs_stored_are_written_whole(olt):  # noqa: F811
    longest = {"ipv4": "255.255.255.255", "ipv6": "0000:0000:0000:0000:0000:ffff:255.255.255.255"}
    edit_database(olt, alarm_log("".join(
        f"<remote-server-{family}><{family}-addr>{address}</{family}-addr><port>65535</port></remote-server-{family}>"
        for family, address in longest.items())))
    let_changes_be_heard(olt)
    for family, address in longest.items():
        assert f"alarm-log remote server {family} {address} port 65535" in lines(olt)


def test_nothing_wider_than_its_buffer_gets_into_the_database(olt):  # noqa: F811
    before = lines(olt)
    beyond = ["<remote-server-ipv4><ipv4-addr>255.255.255.0255</ipv4-addr></remote-server-ipv4>",
              f"<remote-server-ipv6><ipv6-addr>{'0000:' * 20}:</ipv6-addr></remote-server-ipv6>",
              "<remote-server-ipv6><port>65536</port></remote-server-ipv6>", "<flash><level>criticalcriticals</level></flash>",
              f"<threshold><temp-high><alarm-threshold>{'1' * 32}</alarm-threshold></temp-high></threshold>",
              *(f"<alarm><id>0</id><{leaf}>{'x' * (width + 1)}</{leaf}></alarm>"
                for leaf, width in {"name": 32, "desc": 32, "level": 16, "type": 16, "class": 8}.items()),
              f"<alarm><id>{ALARM_COUNT}</id></alarm>"]
    for content in beyond:
        assert try_edit_database(olt, alarm_log(content)).returncode != 0, content
    assert lines(olt) == before


@pytest.mark.parametrize("op, gone", [
    ("db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr", "alarm-log remote server ipv4 10"),
    ("db_olt_alarm_log_get_remote_server_ipv4_port", "alarm-log remote server ipv4 10"),
    ("db_olt_alarm_log_get_remote_server_ipv6_ipv6_addr", "alarm-log remote server ipv6 2001"),
    ("db_olt_alarm_log_get_remote_server_ipv6_port", "alarm-log remote server ipv6 2001"),
    ("db_olt_alarm_log_get_alarm_log_flash_level", "alarm-log flash level"),
    ("db_olt_alarm_log_show_xml_alarm_id", "alarm-log alarm "),
    ("db_olt_alarm_log_get_action_print", "alarm-log threshold"),
    ("db_olt_alarm_log_get_temp_high_alarm_threshold", "alarm-log threshold temp-high"),
    ("db_olt_alarm_log_get_temp_high_clear_threshold", "alarm-log threshold temp-high"),
])
def test_what_cannot_be_read_drops_its_own_line_alone(olt, op, gone):  # noqa: F811
    store_thresholds(olt, **{"temp-high": (70, 65)})
    configure(olt, "alarm-log remote server ipv4 10.0.0.1 port 514", "alarm-log remote server ipv6 2001:db8::1 port 1",
              "alarm-log alarm fan level emerg", "alarm-log alarm temp-high enable print")
    all_lines = lines(olt)
    assert any(line.startswith(gone) for line in all_lines)
    olt.faults(f"{op} ret=-4")
    assert lines(olt) == [line for line in all_lines if not line.startswith(gone)]


def test_switches_that_cannot_be_read_are_written_as_off(olt):  # noqa: F811
    configure(olt, "alarm-log remote server ipv4 enable", "alarm-log remote server ipv6 enable")
    olt.faults("db_olt_alarm_log_get_remote_server_ipv4_enable ret=-4",
               "db_olt_alarm_log_get_remote_server_ipv6_enable ret=-4")
    assert lines(olt) == FRESH


# --- interfaces


def test_a_port_is_framed_by_its_interface_line(olt):  # noqa: F811
    configure(olt, "alarm-log threshold pon-vcc-low enable 3.1 3.2", node="gpon 0/1")
    assert interfaces(olt) == "interface gpon 0/1\n alarm-log threshold pon-vcc-low enable 3.10 3.20 \r\n"


def test_every_block_is_written_once_gpon_first(olt):  # noqa: F811
    expected = ""
    for kind in ("gpon", "xgpon"):
        for port in range(1, 9):
            expected += f"interface {kind} 0/{port}\n"
            for name in PON_ALARMS:
                configure(olt, f"alarm-log threshold {name} enable {port} {port}", node=f"{kind} 0/{port}")
                expected += f" alarm-log threshold {name} enable {port}.00 {port}.00 \r\n"
    assert interfaces(olt) == expected
    configure(olt, "alarm-log threshold pon-vcc-low disable", node="gpon 0/8")
    assert interfaces(olt) == expected.replace(" alarm-log threshold pon-vcc-low enable 8.00 8.00 \r\n", "", 1)


def test_a_port_without_an_enabled_alarm_has_no_line(olt):  # noqa: F811
    configure(olt, "alarm-log threshold pon-vcc-low enable 1 2", "alarm-log threshold pon-vcc-low disable",
              node="xgpon 0/4")
    assert interfaces(olt) == ""


def test_the_ports_are_those_of_the_board(make_olt):
    own = make_olt(board={"port_record": [2, 8, 0, 4, 4, 0, 0, 0, 0, 0, 4, 4, 4, 2, 0, 0]}).start()
    for node in ("gpon 0/4", "gpon 0/5", "xgpon 0/4", "xgpon 0/8"):
        configure(own, "alarm-log threshold pon-vcc-low enable 1 2", node=node)
    line = " alarm-log threshold pon-vcc-low enable 1.00 2.00 \r\n"
    assert interfaces(own) == f"interface gpon 0/4\n{line}interface xgpon 0/4\n{line}"


def test_without_known_ports_there_is_no_interface(make_olt):
    own = make_olt()
    own.faults("database_dev_get_port_info ret=-1")
    own.start()
    configure(own, "alarm-log threshold pon-vcc-low enable 1 2", node="gpon 0/1")
    assert interfaces(own) == ""


# --- saved and read back


def saved_and_restarted(olt):  # noqa: F811
    text, rc = olt.run("write file", "enable")
    assert (text, rc) == ("Configuration saved to /etc/frr/diagd.conf\n", 0)
    file = olt.state / "conf" / "diagd.conf"
    assert (file.owner(), file.group()) == ("daemon", "daemon")
    before = whole(olt)
    assert file.read_bytes().decode().endswith("!\n" + before)
    errors, log = len(olt.stderr()), len(olt.log())
    olt.restart(trace=True)
    said = [line for line in (olt.stderr()[errors:] + olt.log()[log:]).splitlines()
            if "docstring" not in line and "Terminating" not in line and ": alarm " not in line
            and not line.endswith("started, nothing is missing")]
    assert said == [], "the configuration is read back without a word"
    return before


def test_a_saved_configuration_gives_itself_back(olt):  # noqa: F811
    configure(olt, "alarm-log remote server ipv4 10.0.0.1 port 514", "alarm-log remote server ipv4 enable",
              "alarm-log remote server ipv6 2001:db8::1 port 65535", "alarm-log flash level major",
              "alarm-log alarm fan disable print", "alarm-log event reset level emerg",
              "alarm-log alarm access-list enable all", "alarm-log event all disable record",
              "alarm-log alarm temp-high enable print")
    for kind in ("gpon", "xgpon"):
        for port in (1, 8):
            for name in PON_ALARMS:
                configure(olt, f"alarm-log threshold {name} enable -1.25 -1.25", node=f"{kind} 0/{port}")
    before = saved_and_restarted(olt)
    assert whole(olt) == before
    # Once more from the file that the daemon wrote itself.
    assert saved_and_restarted(olt) == before
    assert whole(olt) == before


def test_stored_board_thresholds_do_not_come_back(olt):  # noqa: F811
    """Reading the line back switches the alarm on, which deletes them."""
    store_thresholds(olt, **{"temp-high": (70, 65)})
    configure(olt, "alarm-log alarm temp-high enable print")
    assert "alarm-log threshold temp-high enable 70 65" in lines(olt)
    saved_and_restarted(olt)
    assert lines(olt) == FRESH + [f"alarm-log alarm temp-high enable {action}" for action in ACTIONS]


def test_optical_thresholds_come_back_with_two_decimals(olt):  # noqa: F811
    configure(olt, "alarm-log threshold pon-vcc-low enable 3.1234 3.1267", node="gpon 0/2")
    saved_and_restarted(olt)
    assert interfaces(olt) == "interface gpon 0/2\n alarm-log threshold pon-vcc-low enable 3.12 3.13 \r\n"


def test_the_terminal_shows_the_same_lines(olt):  # noqa: F811
    configure(olt, "alarm-log alarm fan disable print")
    configure(olt, "alarm-log threshold pon-vcc-low enable 3.1 3.2", node="gpon 0/1")
    assert olt.run("write terminal", "enable") == (whole(olt), 0)
    with olt.telnet() as session:
        session.run("enable")
        text = session.run("show running-config").replace("\r\r\n", "\n").replace("\r\n", "\n")
    assert "interface gpon 0/1\n alarm-log threshold pon-vcc-low enable 3.10 3.20 \nalarm-log remote server ipv4" in text
    assert "alarm-log alarm fan disable print\n" in text and text.rstrip().endswith("end")


def test_a_configuration_file_that_cannot_be_written_is_said(olt):  # noqa: F811
    folder = olt.state / "conf"
    olt.exec("chown", "root:root", "/etc/frr", check=True)
    olt.exec("chmod", "0755", "/etc/frr", check=True)
    try:
        text, rc = olt.run("write file", "enable")
    finally:
        olt.exec("chown", "daemon:daemon", "/etc/frr", check=True)
        olt.exec("chmod", "0750", "/etc/frr", check=True)
    assert rc != 0 and text.startswith("Can't open configuration file /etc/frr/diagd.conf.")
    assert [entry.name for entry in folder.iterdir() if "diagd.conf." in entry.name and not entry.name.endswith("sav")] == []


def test_the_writer_reads_in_the_order_of_its_lines(olt):  # noqa: F811
    for name in BOARD_ALARMS:
        configure(olt, f"alarm-log alarm {name} enable print")
    a_pass(olt)  # the next one, which reads, too, is three seconds away
    text, rc, calls = calls_of(olt, SHOW, "db_olt_.*|parsing_.*")
    assert rc == 0
    stems = [name.replace("-", "_") for name in BOARD_ALARMS]
    assert [call.op.removeprefix("db_olt_alarm_log_") for call in calls] == [
        "get_remote_server_ipv4_enable", "get_remote_server_ipv4_ipv4_addr",
        "get_remote_server_ipv6_enable", "get_remote_server_ipv6_ipv6_addr",
        "get_alarm_log_flash_level", "show_xml_alarm_id", "parsing_alarm_list_xml_data",
        *(op for stem in stems for op in ("get_action_print", f"get_{stem}_alarm_threshold", f"get_{stem}_clear_threshold"))]
