# SPDX-License-Identifier: GPL-2.0-or-later
"""diagsh for a person: keys and screens."""

import re

import pytest
from olt import BUILD
from terminal import DELETE, END, HOME, LEFT, UP, WORD_LEFT, WORD_RIGHT, Terminal

DIAGSH = str(BUILD / "bin" / "diagsh")
IN_BOX = "/run/olt/build/bin/diagsh"
UNAVAILABLE, NO_PERMISSION = 69, 77
GREETING = "olt, node {}.  ? helps, TAB completes, find WORD searches all commands."


@pytest.fixture
def session(olt):
    """Opens sessions as one does in the box, where the OLT is that of the machine."""
    opened = []

    def open_session(*words, prompt="olt(config)# ", **how):
        opened.append(Terminal(olt.inside(IN_BOX, *words), **how))
        opened[-1].wait_line(prompt)
        return opened[-1]

    yield open_session
    for terminal in opened:
        terminal.close()


# --- the first line, and the last


@pytest.mark.parametrize("columns", [80, 120, 200])
def test_first_line_says_where_one_is_and_how_to_find_things(session, columns):
    assert session(prompt="olt> ", columns=columns).rows == [GREETING.format("view"), "olt>"]


@pytest.mark.parametrize("node, name, prompt", [
    ("view", "view", "olt> "),
    ("enable", "enable", "olt# "),
    ("config", "config", "olt(config)# "),
    ("diagnose", "diagnose", "olt(diagnose)# "),
    ("interface xgpon 0/3", "xgpon", "olt(config-xgpon-0/3)# "),
])
def test_session_begins_in_the_node_asked_for(session, node, name, prompt):
    terminal = session("-n", node, prompt=prompt)
    assert terminal.rows == [GREETING.format(name), prompt.rstrip()]


def test_node_that_there_is_not_is_told_before_anything(olt):
    with Terminal(olt.inside(IN_BOX, "-n", "interface nonsense 9")) as terminal:
        assert terminal.end() == (2, True)
        assert terminal.rows == ["% [DIAGD] Unknown command: interface nonsense 9"]


def test_exit_ends_in_view_and_leads_up_elsewhere(session):
    terminal = session("-n", "diagnose", prompt="olt(diagnose)# ")
    terminal.run("exit", "olt(config)# ")
    terminal.run("exit", "olt# ")
    terminal.type(b"ex\r")
    assert terminal.end() == (0, True)


@pytest.mark.parametrize("key", [b"\x04", b"\x1d"], ids=["Control-D", "Control-]"])
def test_session_that_is_left_gives_the_terminal_back_at_the_begin_of_a_line(session, key):
    terminal = session("-n", "config")
    terminal.type(key)
    assert terminal.end() == (0, True)
    assert terminal.rows == [GREETING.format("config"), "olt(config)#"]
    assert terminal.cursor == (2, 0)


def test_session_ends_with_the_daemon_and_says_so(fresh_olt):
    with Terminal(fresh_olt.inside(IN_BOX)) as terminal:
        terminal.wait_line("olt> ")
        fresh_olt.kill()
        assert terminal.end() == (UNAVAILABLE, True)
        assert terminal.rows[1:] == ["olt>", "diagsh: the daemon has ended"]


def test_no_daemon_is_told(cold_olt):
    with Terminal(cold_olt.inside(IN_BOX)) as terminal:
        assert terminal.end() == (UNAVAILABLE, True)
        assert terminal.rows == ["diagsh: no daemon answers on /run/frr/diagd.vty; is the OLT running?"]


# --- which OLT, and who may


def test_state_folder_decides_which_olt_a_session_reaches(olt, make_olt):
    other = make_olt().start()
    assert other.run("hostname other") == ("", 0)
    for which, host in ((olt, "olt"), (other, "other")):
        with Terminal([DIAGSH, "-s", str(which.state), "-n", "config"], columns=200) as terminal:
            terminal.wait_line(f"{host}(config)# ")
            assert terminal.rows[0].startswith(f"{host} of {which.state}, node config.")
            terminal.run("exit", f"{host}# ")


def test_vty_group_is_asked_no_password(olt):
    group = ["setpriv", "--reuid", "nobody", "--regid", "daemon", "--clear-groups"]
    with Terminal(olt.inside(*group, IN_BOX)) as terminal:
        terminal.wait_line("olt> ")
        assert terminal.rows == [GREETING.format("view"), "olt>"]


OTHERS = ["setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups"]


def test_others_are_asked_and_have_the_keys_of_their_terminal(olt):
    with Terminal(olt.inside(*OTHERS, IN_BOX)) as terminal:
        terminal.wait_line("Password: ")
        terminal.type(b"secret\r")
        terminal.wait_line("olt> ")
        terminal.type(b"xnableZ" + HOME + DELETE + b"e" + END + b"\x7f" + DELETE + b"\r")
        terminal.wait_line("olt# ")
        terminal.type(DELETE * 3 + b"configure terminal" + WORD_LEFT + WORD_LEFT + b"do " + HOME + DELETE * 3 + b"\r")
        terminal.wait_line("olt(config)# ")
        terminal.type(b"\x1d")
        assert terminal.end() == (0, True)
        assert terminal.cursor[1] == 0


def test_others_are_not_led_to_another_olt_than_they_named(olt):
    for words in (["-s", str(olt.state)], ["-n", "config"]):
        with Terminal(olt.inside(*OTHERS, IN_BOX, *words)) as terminal:
            assert terminal.end() == (NO_PERMISSION, True)
            assert "only root and the vty group" in "".join(terminal.rows)


# --- keys


def test_home_end_and_delete_edit_the_line(session):
    terminal = session("-n", "config")
    terminal.type(b"how version jsonX" + HOME + b"ss" + HOME + DELETE + END + b"\x7f")
    terminal.wait_line("olt(config)# show version json")


def test_words_are_moved_over_and_deleted(session):
    terminal = session("-n", "config")
    terminal.type(b"show version json" + WORD_LEFT + WORD_LEFT + b"a ")
    terminal.wait_line("olt(config)# show a ")
    terminal.type(b"\x17" + WORD_RIGHT)
    terminal.wait_line("olt(config)# show version")
    terminal.type(b"\x15")
    terminal.wait(lambda rows: rows[-1] == "olt(config)#  json" and terminal.cursor[1] == 13, "all before it gone")


def test_control_r_searches_what_was_typed(session):
    terminal = session("-n", "config")
    for command in ("show alarm-log remote server", "fan mode auto"):
        terminal.run(command, "olt(config)# ")
    terminal.type(b"\x12remote")
    terminal.wait(lambda rows: rows[-1] == "bck:remote", "the search")
    terminal.type(END)
    terminal.wait_line("olt(config)# show alarm-log remote server")
    terminal.type(b"\x03" + UP)
    terminal.wait_line("olt(config)# fan mode auto")


def test_control_c_drops_the_line_and_control_z_goes_to_enable(session):
    terminal = session("-n", "config")
    terminal.type(b"nonsense")
    terminal.wait_line("olt(config)# nonsense")
    terminal.type(LEFT * 3 + b"\x03")
    terminal.wait_line("olt(config)# ")
    assert terminal.rows[1:] == ["olt(config)# nonsense", "olt(config)#"]
    terminal.type(b"\x1a")
    terminal.wait_line("olt# ")


def test_question_helps_below_the_line(session):
    terminal = session("-n", "config")
    terminal.type(b"interface gpon ?")
    terminal.wait(lambda rows: len(rows) == 4 and terminal.cursor == (3, 28), "the help")
    assert terminal.rows[1:] == [
        "olt(config)# interface gpon",
        "  S/P  PON interface number,slot:<0>,port:<1-x>,x is 2,4,or 8.",
        "olt(config)# interface gpon",
    ]


def test_help_is_folded_and_the_line_above_it_stays(session):
    terminal = session("-n", "config", columns=40)
    terminal.type(b"alarm-log threshold mem-usage-high enable 90 ?")
    terminal.wait(lambda rows: len(rows) >= 9 and terminal.cursor[1] == 18, "the help")
    assert terminal.rows[-6:] == [
        "olt(config)# alarm-log threshold mem-usa",
        "ge-high enable 90",
        "  WORD  Value past which the alarm is",
        "        cleared.",
        "olt(config)# alarm-log threshold mem-usa",
        "ge-high enable 90",
    ]


def test_tab_completes_and_shows_what_there_is(session):
    terminal = session("-n", "config")
    terminal.type(b"sh\t")
    terminal.wait_line("olt(config)# show ")
    terminal.type(b"alarm-log co\t")
    terminal.wait_line("olt(config)# show alarm-log configuration ")
    terminal.type(b"name pow\t")
    terminal.wait_line("olt(config)# show alarm-log configuration name power")
    terminal.type(b"\t")
    terminal.wait(lambda rows: len(rows) == 4 and terminal.cursor == (3, 52), "the names")
    assert terminal.rows[2] == "power1-updown  power2-updown"
    terminal.type(b"1\t\r")
    terminal.wait_line("olt(config)# ")
    assert any("power1-updown" in row and "Power supply 1" in row for row in terminal.rows)


# --- what is said


@pytest.mark.parametrize("columns, told", [
    (80, ["It is known in diagnose (enable, configure terminal, diagnose)."]),
    (40, ["It is known in diagnose (enable,", "    configure terminal, diagnose)."]),
])
def test_unknown_command_is_told_with_the_way_to_its_node(session, columns, told):
    terminal = session(prompt="olt> ", columns=columns)
    terminal.run("show diag monitor", "olt> ")
    assert terminal.rows[-len(told) - 1 : -1] == told


def test_steps_told_begin_where_one_is(session):
    terminal = session("-n", "config")
    terminal.run("no fan monitor", "olt(config)# ")
    assert terminal.rows[-2] == "It is known in diagnose (diagnose)."
    terminal.run("alarm-log threshold pon-vcc-low enable 3 3.1", "olt(config)# ")
    assert terminal.rows[-2] == "It is known in gpon (interface gpon 0/1) and xgpon (interface xgpon 0/1)."


def test_find_looks_into_all_nodes(session):
    terminal = session(prompt="olt> ")
    terminal.run("find DIAG MONITOR", "olt> ")
    assert terminal.rows[-2] == "diagnose  show diag monitor  -- monitor information"
    terminal.run("find no such thing", "olt> ")
    assert terminal.rows[-2] == "% No command has that."


def test_history_is_that_of_the_session(session):
    terminal = session("-n", "config")
    terminal.run("hostname olt", "olt(config)# ")
    terminal.run("show history", "olt(config)# ")
    assert terminal.rows[-2] == "  hostname olt"


def test_log_is_shown_beside_the_line_that_is_typed(session, olt):
    terminal = session("-n", "enable", prompt="olt# ")
    terminal.run("terminal monitor", "olt# ")
    terminal.type(b"configure")
    terminal.wait_line("olt# configure")
    assert olt.run("alarm-log debug send id 0 message tray_2")[1] == 0
    terminal.wait(lambda rows: any(row.endswith("DIAGD: alarm fan (major): tray 2") for row in rows), "the alarm")
    terminal.wait_line("olt# configure")
    terminal.type(b" terminal\r")
    terminal.wait_line("olt(config)# ")


# --- pages


def test_output_is_paged_by_the_window(session):
    terminal = session(prompt="olt> ", columns=100)
    for rows in (40, 12, 25):
        terminal.resize(rows, 100)
        terminal.type(b"find .\r")
        terminal.wait_line(" --More-- ")
        assert terminal.cursor[0] == rows - 1
        terminal.type(b"q")
        terminal.wait_line("olt> ")


def test_terminal_length_decides_about_pages(session):
    terminal = session(prompt="olt> ", rows=40)
    terminal.run("terminal length 5", "olt> ")
    terminal.type(b"list\r")
    terminal.wait_line(" --More-- ")
    assert terminal.cursor[0] == 3 + 5
    terminal.type(b"\r")
    terminal.wait(lambda rows: terminal.cursor == (3 + 6, 10), "one more line")
    terminal.type(b"q")
    terminal.wait_line("olt> ")
    terminal.run("terminal length 0", "olt> ")
    assert "--More--" not in "".join(terminal.run("find .", "olt> "))


# --- width

TEMPERATURE_TO_CURRENT = [
    "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)",
    "----------    ---------------------    ---------------    ------------",
    "GPON 0/1      N/A                      N/A                N/A",
]
TX = ["    Optical Tx Power(dBm)       ", "    ----------------------------", "    N/A                         "]
RX = ["    Optical Rx Power(dBm)", "    -------------------------------", "    N/A"]
NAMES = ["Interface ", "----------", "GPON 0/1  "]


def padded(rows, width):
    return [row.ljust(width) for row in rows]


@pytest.mark.parametrize("columns, parts", [
    (80, [[TEMPERATURE_TO_CURRENT], [NAMES, TX, RX]]),
    (120, [[padded(TEMPERATURE_TO_CURRENT, 70), TX], [NAMES, RX]]),
    (200, [[padded(TEMPERATURE_TO_CURRENT, 70), TX, RX]]),
])
@pytest.mark.parametrize("how", ["option", "bar"])
def test_wide_table_is_folded_between_its_columns(session, columns, parts, how):
    words, bar = (["--wide"], "") if how == "option" else ([], " | fold")
    terminal = session("-n", "config", *words, columns=columns, rows=30)
    terminal.type(f"show transceiver{bar}\r".encode())
    terminal.wait_line(" --More-- ")
    expected = ["".join(cells).rstrip() for part in parts for cells in zip(*part)]
    begin = terminal.rows.index(expected[0])
    assert terminal.rows[begin : begin + len(expected)] == expected
    assert terminal.rows[begin - 1] == ""


def test_wide_table_of_a_command_is_folded_on_a_terminal(olt):
    with Terminal(olt.inside(IN_BOX, "--wide", "-c", "show transceiver"), rows=300) as terminal:
        assert terminal.end() == (0, True)
        assert TEMPERATURE_TO_CURRENT[0] in terminal.rows and "--More--" not in "".join(terminal.rows)


@pytest.mark.parametrize("columns, first", [(80, 41), (120, 19)])
def test_wide_table_is_scrolled_by_keys_and_leaves_the_screen_as_it_was(session, columns, first):
    terminal = session("-n", "config", columns=columns, rows=12)
    before = terminal.rows
    heading = "".join([TEMPERATURE_TO_CURRENT[0], TX[0], RX[0]])
    terminal.type(b"show transceiver | scroll\r")
    terminal.wait(lambda rows: rows[-1].startswith("lines 1-11 of "), "the view")
    assert terminal.rows[7] == heading[:columns].rstrip()
    terminal.type(b"\x1b[C")
    terminal.wait(lambda rows: f"columns {first}-{first + columns - 1} of 138" in rows[-1], "the right")
    label = "Interface     "  # stays, so that each row says of which port it is
    assert terminal.rows[7] == (label + heading[first - 1 + len(label) : first - 1 + columns]).rstrip()
    assert terminal.rows[9].startswith("GPON 0/1      ")
    terminal.type(b"q")
    terminal.wait_line("olt(config)# ")
    assert terminal.rows[: len(before)] == [*before[:-1], "olt(config)# show transceiver | scroll"]


def test_view_ends_at_the_last_line_and_the_last_column(session):
    terminal = session("-n", "config", rows=12)
    terminal.type(b"show transceiver | scroll\r")
    terminal.wait(lambda rows: rows[-1].startswith("lines 1-11 of "), "the view")
    total = int(terminal.rows[-1].split()[3].rstrip(","))
    terminal.type(b"G" + b"\x1b[C" * 9)
    terminal.wait(lambda rows: re.match(rf"lines {total - 10}-{total} of {total}, columns \d+-(\d+) of \1;", rows[-1]), "the end")
    first, last = re.search(r"columns (\d+)-(\d+) of", terminal.rows[-1]).groups()
    assert int(first) == int(last) - 79


HINT = "% Wider than this terminal: show transceiver | fold shows it in parts, | scroll in a view; diagsh --wide folds always."


@pytest.mark.parametrize("columns", [80, 120, 200])
def test_table_that_the_terminal_broke_is_told_once_with_what_helps(session, columns):
    terminal = session("-n", "config", columns=columns, rows=200)
    terminal.run("show transceiver", "olt(config)# ")
    broken = columns < 200
    hints = [number for number, row in enumerate(terminal.rows) if row.startswith("% Wider than this terminal")]
    assert len(hints) == broken
    if broken:
        told = terminal.rows[hints[0] : -1]
        assert " ".join(row.strip() for row in told) == HINT and all(len(row) <= columns for row in told)
    terminal.run("show transceiver", "olt(config)# ")
    assert sum(row.startswith("% Wider than") for row in terminal.rows) == broken


def test_nothing_is_added_to_what_a_single_command_says(olt):
    with Terminal(olt.inside(IN_BOX, "-c", "show transceiver"), rows=200) as terminal:
        assert terminal.end() == (0, True)
        assert "Wider than" not in "".join(terminal.rows)


def test_find_breaks_its_lines_between_words(session):
    terminal = session(prompt="olt> ", rows=200)
    terminal.run("find transceiver", "olt> ")
    text = " ".join(row.strip() for row in terminal.rows)
    assert "show optical transceiver interface <gigabitEthernet|gpon> <S/P>" in text
    assert "Show interface optical transceiver information." in text
    assert all(not row or row[0] != " " or row.startswith("    ") for row in terminal.rows)


@pytest.mark.parametrize("word", ["optical", "module", "sfp", "light", "Modules"])
def test_find_leads_from_other_words_to_the_modules_readings(olt, word):
    found = olt.exec(IN_BOX, "--find", word)
    assert found.returncode == 0
    lines = found.stdout.splitlines()
    said = lines.index("% also by another name, transceiver:")
    assert any(line.startswith("config") and "  show transceiver [json]" in line for line in lines[said:]), found.stdout


def test_output_that_fits_is_not_scrolled(session):
    terminal = session("-n", "config")
    terminal.run("show temperature | scroll", "olt(config)# ")
    assert terminal.rows[1:] == ["olt(config)# show temperature | scroll", " Current temperature: 25.0 .C", "olt(config)#"]
