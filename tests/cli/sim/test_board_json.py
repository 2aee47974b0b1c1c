# SPDX-License-Identifier: GPL-2.0-or-later
"""docs/board.json.md explains every key of a board description, and boardctl and boardsim what does not fit together."""
import json
import re
import subprocess

import pytest
from documents import matches, steps
from olt import BUILD, PROJECT, wait_until

PAGE = PROJECT / "docs" / "board.json.md"
READER = PROJECT / "platform" / "description" / "board_description.cpp"
BOARDS = PROJECT / "sim" / "boards"
# Lists of one form, explained with the first of them.
ALIKE = {"pon2": "pon1", "sfp": "pon1", "indirect": "registers"}


def explained_keys():
    """The keys in the first column of the page's tables."""
    cells = re.findall(r"^\| (`.*?) \|", PAGE.read_text(), re.M)
    return {key for cell in cells for key in re.findall(r"`([^`]+)`", cell)}


def keys_of(value, path=""):
    """Every key of a description, as "records[].pon1[].port"."""
    if isinstance(value, list):
        for entry in value:
            yield from keys_of(entry, path + "[]")
    elif isinstance(value, dict):
        for key, inner in value.items():
            own = f"{path}.{key}" if path else key
            yield own
            yield from keys_of(inner, f"{path}.{ALIKE.get(key, key)}" if path else key)


@pytest.mark.parametrize("board", sorted(path.name for path in BOARDS.glob("olt*.json") if "modules" not in path.name))
def test_every_key_of_the_boards_that_come_along_is_explained(board):
    assert set(keys_of(json.loads((BOARDS / board).read_text()))) - explained_keys() == set()


def test_the_keys_explained_are_those_that_are_read():
    # A key is read by a method of Fields or by a helper that takes them: f(fields, "key"), fields.number("key", ...).
    asked = re.findall(r'(?:\w\.\w+\(|\w+\(\w+, )"([a-z][a-z0-9_]*)"', READER.read_text())
    assert {key.split(".")[-1].removesuffix("[]") for key in explained_keys()} == set(asked)


def boardctl(*words):
    done = subprocess.run([BUILD / "bin" / "boardctl", *map(str, words)], capture_output=True, text=True, check=False)
    return done.returncode, done.stdout + done.stderr


def test_each_line_of_the_page_shows_what_the_page_says(tmp_path):
    for step in steps(PAGE.read_text()):
        command = step.command.replace("/tmp/", f"{tmp_path}/").replace("boardctl", str(BUILD / "bin" / "boardctl"))
        done = subprocess.run(["bash", "-c", command], cwd=PROJECT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, check=False)
        shown = done.stdout.replace(f"{tmp_path}/", "/tmp/").splitlines()
        if not matches(shown, step.expected):
            assert shown == step.expected, step


def test_check_says_where_a_description_cannot_be_read(tmp_path):
    file = tmp_path / "board.json"
    file.write_text((BOARDS / "olt2.json").read_text().replace('"channels": 2', '"channels": 20'))
    status, text = boardctl("check", file)
    assert status == 1 and text.startswith(f"error: {file}: multiplexer.channels: ") and text.count("\n") == 1
    assert boardctl("check")[0] == 1
    assert boardctl("check", tmp_path / "none.json")[0] == 1


def test_boardsim_says_what_does_not_fit_and_begins(make_olt):
    board = make_olt(board={"port_record": [0] * 16})
    console = board.state / "log" / "console.log"
    wait_until(lambda: "port_record[10], [11]: the higher one is 0" in console.read_text(), "the board says so")


@pytest.mark.parametrize("name, ports", [("olt2", ["GPON 0/1", "GPON 0/2"]),
                                         ("olt16", [f"{kind} 0/{port}" for kind in ("GPON", "GE") for port in range(1, 9)])])
def test_a_board_lists_its_cages(make_olt, name, ports):
    olt = make_olt(board=json.loads((BOARDS / f"{name}.json").read_text()) | {"drift": False})
    for module in json.loads((BOARDS / f"{name}-modules.json").read_text())["modules"]:
        olt.boardctl("plug", module["kind"], module["port"], BOARDS / module["file"])
    text, status = olt.start().run("show transceiver")
    assert status == 0 and list(dict.fromkeys(re.findall(r"^(G\w+ 0/\d+)", text, re.M))) == ports
    assert "started, nothing is missing" in olt.log()
