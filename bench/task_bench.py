#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The list of tasks on a machine with 2000 threads more, against `ps -eLf` in the same box, in turns.

Exit status 1 when it takes more than twice as long."""
import shutil
import subprocess
import sys
import time
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "cli" / "support"))
sys.dont_write_bytecode = True

from olt import BOX, BUILD, OLT, Olt  # noqa: E402

THREADS = 2000
ROUNDS = 15
LARGEST_RATIO = 2.0
# Runs ps whenever it reads a line, and says its seconds and lines.
PS = """
import subprocess, sys, time
for _ in sys.stdin:
    begin = time.perf_counter()
    text = subprocess.run(["ps", "-eLf"], stdout=subprocess.PIPE).stdout
    print(time.perf_counter() - begin, text.count(b"\\n"), flush=True)
"""


def measure(olt):
    pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "text": True}
    crowd = subprocess.Popen(olt.inside("/run/olt/build/bin/many_threads", THREADS), **pipes)
    ps = subprocess.Popen(olt.inside("/usr/bin/python3", "-c", PS), **pipes)
    assert crowd.stdout.readline() == "ready\n"
    ours_s, theirs_s = [], []
    with olt.vty() as session:
        for _ in range(ROUNDS):
            begin = time.perf_counter()
            text, rc = session.run("show task")
            ours_s.append(time.perf_counter() - begin)
            assert rc == 0 and text.count("\n") > THREADS, (rc, text[-200:])
            ps.stdin.write("\n")
            ps.stdin.flush()
            seconds, lines = ps.stdout.readline().split()
            assert int(lines) > THREADS, lines
            theirs_s.append(float(seconds))
    for process in (ps, crowd):
        process.stdin.close()
        process.wait()
    return min(ours_s), min(theirs_s)


def main():
    states = PROJECT / "build" / "bench-state"
    shutil.rmtree(states, ignore_errors=True)
    try:
        subprocess.run([BOX, "--state", states / "template", "--build", BUILD, "--net", "--", OLT, "files"], check=True)
        olt = Olt(states / "olt", template=states / "template" / "database").start()
        try:
            ours_s, theirs_s = measure(olt)
        finally:
            olt.close()
    finally:
        shutil.rmtree(states, ignore_errors=True)
    ratio = ours_s / theirs_s
    print(f"list of {THREADS} threads     ps -eLf {theirs_s * 1000:6.1f} ms, show task {ours_s * 1000:6.1f} ms, "
          f"ratio {ratio:.2f} (at most {LARGEST_RATIO})")
    return 0 if ratio <= LARGEST_RATIO else 1


if __name__ == "__main__":
    sys.exit(main())
