#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Looks for faults in the sources without running them.

usage: lint.py [--junit FILE] [--jobs N] quick
       lint.py [--junit FILE] [--jobs N] [--seconds N] tidy BUILD_FOLDER [changed | FILE...]

quick  the format of the C++ sources, the layers, and shellcheck over the shell scripts; takes seconds
tidy   clang-tidy, its checks in .clang-tidy, over the sources that BUILD_FOLDER knows how to compile: all, those
       named, or with `changed` those that differ from HEAD's first parent, where a changed header is looked at
       through one source that includes it.  After --seconds no further one is begun; what was not looked at is
       reported as skipped.

The exit status is 1 when anything was found.  A source that clang-tidy found nothing in is remembered under
build/lint, until it, a header that it includes or the checks change.
"""
import argparse
import hashlib
import json
import os
import re
import subprocess
import sys
import time
import xml.etree.ElementTree as ElementTree
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import NamedTuple

import check_layers

ROOT = Path(__file__).resolve().parent.parent
# By version: another one formats and finds otherwise.
CLANG_FORMAT, CLANG_TIDY = "clang-format-14", "clang-tidy-14"
SOURCES, HEADERS = (".cpp", ".c"), (".hpp", ".h")
INCLUDE = re.compile(rb'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.MULTILINE)
SHELL = re.compile(rb"#!.*\b(bash|sh)\b")


class Case(NamedTuple):
    """One thing looked at: what was found in it, or why it was not looked at."""

    kind: str
    name: str
    found: str = ""
    skipped: str = ""


def run(*words):
    try:
        return subprocess.run(words, cwd=ROOT, capture_output=True, text=True, errors="replace")
    except FileNotFoundError:
        sys.exit(f"lint: {words[0]} is missing; tools/deps/setup installs it")


def files():
    """The project's files, without what is built; asks no git, as an unpacked release has none."""
    for folder, folders, names in os.walk(ROOT):
        unwanted = {".git", "__pycache__"} | ({"build"} if folder == str(ROOT) else set())
        folders[:] = sorted(set(folders) - unwanted)
        for name in sorted(names):
            yield Path(folder, name).relative_to(ROOT)


def side_by_side(jobs, words, names):
    """What the program says to the names, shared out among some of it; its status is the worst one."""
    shares = [names[i::jobs] for i in range(jobs) if names[i::jobs]]
    with ThreadPoolExecutor(jobs) as pool:
        results = list(pool.map(lambda share: run(*words, *share), shares))
    return "".join(result.stdout + result.stderr for result in results), max(result.returncode for result in results)


def check_format(jobs):
    names = [str(file) for file in files() if file.suffix in SOURCES + HEADERS]
    said, status = side_by_side(jobs, [CLANG_FORMAT, "--dry-run", "--Werror", "--ferror-limit=1"], names)
    wrong = sorted({line.partition(":")[0] for line in said.splitlines() if ": error:" in line})
    found = [f"{name}: not as {CLANG_FORMAT} -i writes it" for name in wrong]
    yield Case("lint", "format", "\n".join(found) or (said if status else ""))


def check_the_layers(_):
    yield Case("lint", "layers", "\n".join(check_layers.check(check_layers.Tree(ROOT))))


def is_shell(file):
    if file.suffix or not (ROOT / file).is_file():
        return file.suffix == ".sh"
    with open(ROOT / file, "rb") as script:
        return bool(SHELL.match(script.readline()))


def check_shell(jobs):
    said, status = side_by_side(jobs, ["shellcheck", "--format=gcc"], [str(file) for file in files() if is_shell(file)])
    yield Case("lint", "shell", (said or "shellcheck failed") if status else "")


class Compilation:
    """The sources of a build folder, each with its command and the project's headers below it."""

    def __init__(self, build):
        self.build = build
        self.commands = {}
        self.below = {}
        for entry in json.loads((build / "compile_commands.json").read_text()):
            file = Path(entry["directory"], entry["file"])
            if ROOT in file.parents and ROOT / "build" not in file.parents:
                self.commands.setdefault(str(file.relative_to(ROOT)), entry["command"])

    def closure(self, name):
        """The file and all that it includes of the project, as {name: content}."""
        found, waiting = {}, [name]
        while waiting:
            file = waiting.pop()
            if file in found:
                continue
            found[file] = content = (ROOT / file).read_bytes()
            for included in INCLUDE.findall(content):
                header = os.fsdecode(included)
                for place in ("", "platform/include", os.path.dirname(file)):
                    path = os.path.normpath(os.path.join(place, header))
                    if (ROOT / path).is_file():
                        waiting.append(path)
                        break
        return found

    def sources_of(self, changed):
        """The changed sources, and of each changed header that none of them includes one source that does."""
        chosen = [name for name in self.commands if name in changed]
        seen = {file for name in chosen for file in self.closure(name)}
        closures = {}
        for header in sorted(file for file in changed if file.endswith(HEADERS)):
            if header in seen:
                continue
            closures = closures or {name: self.closure(name) for name in self.commands}
            users = [name for name, below in closures.items() if header in below]
            if users:
                stem = header.rpartition(".")[0]
                best = min(users, key=lambda name: (name.rpartition(".")[0] != stem, len(closures[name]), name))
                chosen.append(best)
                seen.update(closures[best])
        return sorted(chosen)

    def fingerprint(self, name):
        """Changes with whatever clang-tidy's answer may depend on, but for where the project lies."""
        state = hashlib.sha256(self.commands[name].replace(str(ROOT), "").encode())
        parts = self.closure(name)
        for folder in Path(name).parents:
            config = str(folder / ".clang-tidy")
            if (ROOT / config).is_file():
                parts[config] = (ROOT / config).read_bytes()
        for stamp in sorted((ROOT / "build/deps/stamp").glob("*")):
            parts[stamp.name] = stamp.read_bytes()
        for file, content in sorted(parts.items()):
            state.update(f"{file} {len(content)}\n".encode() + content)
        return state.hexdigest()


def changed_files():
    """What differs from HEAD's first parent, uncommitted and new files included; None where that cannot be told."""
    git = ["git", "-c", f"safe.directory={ROOT}"]
    differing = run(*git, "diff", "--name-only", "--diff-filter=d", "HEAD^1", "--")
    new = run(*git, "ls-files", "--others", "--exclude-standard")
    if differing.returncode or new.returncode:
        return None
    return set(differing.stdout.splitlines()) | set(new.stdout.splitlines())


def tidy(compilation, names, jobs, seconds):
    known = ROOT / "build" / "lint"
    known.mkdir(parents=True, exist_ok=True)
    end = time.monotonic() + seconds
    places = "|".join(check_layers.SOURCES + ("bench", "tests"))
    words = [CLANG_TIDY, "-p", str(compilation.build), "--quiet", "--warnings-as-errors=*"]
    words.append("--extra-arg=-Wno-error")  # what is worth a warning is for the compiler of the build to say
    words.append(f"--header-filter=^{re.escape(str(ROOT))}/({places})/")

    def look_at(name):
        stamp = known / compilation.fingerprint(name)
        if stamp.exists():
            return Case("tidy", name)
        if time.monotonic() > end:
            return Case("tidy", name, skipped=f"not looked at within {seconds} s")
        result = run(*words, name)
        if result.returncode == 0:
            stamp.touch()
            return Case("tidy", name)
        found = result.stdout.replace(f"{ROOT}/", "")
        return Case("tidy", name, found.strip() or result.stderr.strip())

    with ThreadPoolExecutor(jobs) as pool:
        yield from pool.map(look_at, names)


def check_tidy(arguments):
    build = Path(arguments.what[0]).resolve()
    compilation = Compilation(build)
    names = sorted(compilation.commands)
    if arguments.what[1:] == ["changed"]:
        changed = changed_files()
        if changed is None:
            yield Case("tidy", "changed files", skipped="this is no git repository, or HEAD has no parent here")
            return
        names = compilation.sources_of(changed)
    elif arguments.what[1:]:
        names = arguments.what[1:]
        if unknown := [name for name in names if name not in compilation.commands]:
            sys.exit(f"lint: {build} does not compile {' '.join(unknown)}")
    yield from tidy(compilation, names, arguments.jobs, arguments.seconds)


def write_report(file, cases):
    suite = ElementTree.Element("testsuite", name="lint", tests=str(len(cases)))
    for case in cases:
        element = ElementTree.SubElement(suite, "testcase", classname=case.kind, name=case.name)
        if case.found:
            # XML has no place for control characters, which a source may hold.
            text = re.sub(r"[^\t\n\x20-\ufffd]", "?", case.found)
            ElementTree.SubElement(element, "failure", message="found").text = text
        elif case.skipped:
            ElementTree.SubElement(element, "skipped", message=case.skipped)
    ElementTree.ElementTree(suite).write(file)


def main():
    parser = argparse.ArgumentParser(usage="%(prog)s [--junit FILE] [--jobs N] [--seconds N] quick | tidy BUILD_FOLDER [...]")
    parser.add_argument("--junit", type=Path)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--seconds", type=float, default=float("inf"))
    parser.add_argument("kind", choices=("quick", "tidy"))
    parser.add_argument("what", nargs="*")
    arguments = parser.parse_args()
    if bool(arguments.what) != (arguments.kind == "tidy"):
        parser.error("tidy takes a build folder, quick takes nothing")

    if arguments.kind == "quick":
        checks = (case for check in (check_format, check_the_layers, check_shell) for case in check(arguments.jobs))
    else:
        checks = check_tidy(arguments)
    cases = []
    for case in checks:
        cases.append(case)
        if case.found:
            print(f"{case.kind} {case.name}: failed\n{case.found}", flush=True)
    if arguments.junit:
        write_report(arguments.junit, cases)
    failed = sum(bool(case.found) for case in cases)
    skipped = sum(bool(case.skipped) for case in cases)
    print(f"   {len(cases) - failed - skipped} clean, {failed} with findings, {skipped} not looked at")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
