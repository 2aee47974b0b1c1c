# SPDX-License-Identifier: GPL-2.0-or-later
"""The libFuzzer programs of tests/fuzz: run on their seeds and on what they make of them."""
import os
import re
import subprocess
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

import fuzz_seeds
from project import PROJECT

PROGRAMS = PROJECT / "build" / "fuzz" / "fuzz"
FOUND = PROJECT / "build" / "fuzz" / "found"  # inputs at which a target stopped; kept
MAX_LENGTH = 8192
TIMEOUT_S = 25  # of one input; the slowest takes some milliseconds
MEMORY_MB = 512
# Half of the time that all take to compile; their sockets have their share of nonsense in the short form, too.
OF_THE_SIMULATOR = {"boardsim_bus", "boardsim_control"}


def names():
    return sorted(path.stem.removesuffix("_fuzz") for path in (PROJECT / "tests" / "fuzz").glob("*_fuzz.cpp"))


def build(wanted):
    subprocess.run([PROJECT / "tools" / "build", "fuzz", *(f"{name}_fuzz" for name in wanted)], check=True)


@dataclass
class Outcome:
    name: str
    runs: int = 0
    runs_a_second: int = 0
    covered: int = 0  # edges of the code, as the compiler counts them
    edges: int = 0
    seeds: int = 0
    trouble: str = ""


def _run(name, folder, *options):
    environment = {**os.environ, "UBSAN_OPTIONS": "print_stacktrace=1", "ASAN_OPTIONS": "detect_leaks=1:quarantine_size_mb=16"}
    return subprocess.run([PROGRAMS / f"{name}_fuzz", *options], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, errors="replace")


def _number(pattern, text):
    found = re.findall(pattern, text)
    return int(found[-1]) if found else 0


def fuzz(name, folder, seconds, seed, kept=None, runs=-1):
    """Runs a target for so long, or so often.  folder: where its files go.  kept: its inputs of earlier runs, added to."""
    inputs = folder / "inputs"
    fuzz_seeds.write_out(name, inputs)
    found = FOUND / name
    found.mkdir(parents=True, exist_ok=True)
    corpora = [inputs]
    if kept:
        kept.mkdir(parents=True, exist_ok=True)
        corpora = [kept, inputs]  # libFuzzer writes into the first
    done = _run(name, folder, *corpora, f"-max_total_time={seconds}", f"-runs={runs}", f"-seed={seed}", f"-max_len={MAX_LENGTH}",
                f"-timeout={TIMEOUT_S}", f"-rss_limit_mb={MEMORY_MB}", "-print_final_stats=1", f"-artifact_prefix={found}/")
    outcome = Outcome(name, seeds=len(fuzz_seeds.seeds_of(name)),
                      runs=_number(r"stat::number_of_executed_units:\s+(\d+)", done.stderr),
                      runs_a_second=_number(r"stat::average_exec_per_sec:\s+(\d+)", done.stderr),
                      covered=_number(r" cov: (\d+)", done.stderr),
                      edges=_number(r"\((\d+) inline 8-bit counters\)", done.stderr))
    if done.returncode != 0:
        outcome.trouble = _trouble(done.stderr)
    return outcome


def _trouble(said):
    """What a target said at its end, from the sanitizer's or its own first word on."""
    begin = re.search(r"^(fuzz: |.*runtime error: |.*ERROR: (Address|Leak)Sanitizer|.*ERROR: libFuzzer)", said, re.M)
    return said[begin.start():][:6000] if begin else said[-6000:]


def minimize(name, folder, kept):
    """The fewest of the kept inputs that reach what the seeds do not, the shortest first."""
    best = folder / "best"
    fuzz_seeds.write_out(name, best)
    before = set(best.iterdir())
    _run(name, folder, "-merge=1", best, kept, f"-max_len={MAX_LENGTH}")
    return [path.read_bytes() for path in sorted(set(best.iterdir()) - before, key=lambda path: path.stat().st_size)]


def fuzz_all(wanted, folder, seconds, seed, kept=None, runs=-1):
    """The outcomes of several targets, run side by side."""
    def one(name):
        own = Path(folder, name)
        own.mkdir(parents=True)
        return fuzz(name, own, seconds, seed, kept and kept / name, runs)

    with ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        yield from pool.map(one, wanted)
