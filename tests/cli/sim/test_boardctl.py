# SPDX-License-Identifier: GPL-2.0-or-later
"""boardctl and a board that answers, refuses, ends, or is not there: what it says, where, and its exit status."""
import contextlib
import os
import socket
import subprocess
import threading

import pytest
from project import BUILD


def boardctl(*words, folder):
    """Exit status, standard output and standard error."""
    done = subprocess.run([BUILD / "bin" / "boardctl", *words], env={**os.environ, "BOARDSIM_DIR": str(folder)},
                          capture_output=True, text=True, timeout=60)
    return done.returncode, done.stdout, done.stderr


@contextlib.contextmanager
def board(folder, *answer):
    """A board that gives each client these pieces and ends the connection.  Gives what it was asked."""
    asked = []
    with socket.socket(socket.AF_UNIX) as listener:
        place = os.open(folder, os.O_PATH)  # an address is short, a folder may lie deep
        listener.bind(f"/proc/self/fd/{place}/ctl.sock")
        os.close(place)
        listener.listen()

        def serve():
            client, _ = listener.accept()
            with client:
                asked.append(b"".join(iter(lambda: client.recv(4096), b"")))
                for piece in answer:
                    client.sendall(piece)

        thread = threading.Thread(target=serve)
        thread.start()
        yield asked
        thread.join(60)


def test_an_answer_goes_to_standard_output(tmp_path):
    with board(tmp_path, b"0\n12\n") as asked:
        assert boardctl("reg", "get", "5", folder=tmp_path) == (0, "12\n", "")
    assert asked == [b"reg\0get\x005\0"]


def test_an_answer_may_come_byte_by_byte(tmp_path):
    with board(tmp_path, b"0", b"\n", b"1", b"2\n"):
        assert boardctl("reg", "get", "5", folder=tmp_path) == (0, "12\n", "")


def test_a_refusal_goes_to_standard_error(tmp_path):
    with board(tmp_path, b"1\nerror: no such verb\n"):
        assert boardctl("dance", folder=tmp_path) == (1, "", "error: no such verb\n")


@pytest.mark.parametrize("pieces", [(), (b"0",)])
def test_a_board_that_ends_without_an_answer_is_a_failure(tmp_path, pieces):
    with board(tmp_path, *pieces):
        assert boardctl("reg", "get", "5", folder=tmp_path) == (1, "", "error: the board ended without an answer\n")


def test_no_board_is_a_failure_that_names_its_place(tmp_path):
    for folder in (tmp_path, tmp_path / "nowhere"):
        assert boardctl("reg", "get", "5", folder=folder) == (
            1, "", f"error: no board at {folder}/ctl.sock: No such file or directory\n")


def test_an_empty_folder_variable_is_as_none(tmp_path):
    status, _, said = boardctl("reg", "get", "5", folder="")
    assert status == 1 and said.startswith("error: no board at /run/boardsim/ctl.sock: ")


def test_a_folder_deeper_than_a_sockets_address_is_reached(tmp_path):
    deep = tmp_path / ("d" * 100) / ("e" * 100)
    deep.mkdir(parents=True)
    with board(deep, b"0\ndeep\n"):
        assert boardctl("help", folder=deep) == (0, "deep\n", "")


def test_an_option_of_plug_that_there_is_not_is_named(tmp_path):
    status, out, said = boardctl("plug", "gpon", "1", "--absent", "x.json", folder=tmp_path)
    assert (status, out) == (1, "") and said.startswith("error: no option --absent\nusage: boardctl plug ")


def test_plug_without_a_file_says_how_it_goes(tmp_path):
    status, _, said = boardctl("plug", "gpon", "1", folder=tmp_path)
    assert status == 1 and said.startswith("error: usage: boardctl plug gpon|xgpon|ge PORT FILE")
