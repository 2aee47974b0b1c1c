# SPDX-License-Identifier: GPL-2.0-or-later
"""Nonsense from every side: no parser, no command and no socket minds.

Every pure parser and decoder runs as a libFuzzer target, with the checks of addresses and of undefined behaviour and with
what its result must be like. Then a daemon is typed at: lines made from the commands that it has itself, in every node,
with words that fit, that do not, and that nobody would type; bytes on its terminal port with and without a password; and
packets on the sockets of the simulated board. It answers every line, gives back every lock and descriptor, executes
nothing of what was typed, and its memory stays bounded."""
import fuzz_seeds
import fuzz_targets
from fuzz_board import Packets
from fuzz_vty import Typing
from project import BUILD, PROJECT

TARGETS = ["diagd", "diagsh", "boardsim", "boardctl", "gpio_sim"]
SHORT_RUNS = 4000  # of each target, its seeds included
KEPT = PROJECT / "build" / "fuzz" / "kept"  # inputs of earlier long forms, to go on with


def options(parser):
    parser.add_argument("--seconds", type=int, help="how long each target runs at most (300, short form 2)")
    parser.add_argument("--lines", type=int, help="how many lines are typed (100000, short form 1500)")
    parser.add_argument("--only", action="append", metavar="NAME", help="these targets, or vty, or board; may be repeated")
    parser.add_argument("--keep-seeds", type=int, metavar="BYTES",
                        help="add to the seeds in the tree what reached something new, up to so many bytes for each target")


def parsers(how, report, names):
    fuzz_targets.build(names)  # of a build of their own, which nobody else makes
    seconds = how.seconds or (2 if how.short else 300)
    report.say(f"{len(names)} targets, {seconds} s each")
    outcomes = []
    kept, runs = (None, SHORT_RUNS) if how.short else (KEPT, -1)
    for outcome in fuzz_targets.fuzz_all(names, how.folder, seconds, how.seed, kept, runs):
        outcomes.append(outcome)
        report.check(not outcome.trouble, f"{outcome.name}: {outcome.trouble}")
        if not how.short:
            report.figure(f"{outcome.name}: inputs, a second, edges",
                          f"{outcome.runs}, {outcome.runs_a_second}, {outcome.covered} of {outcome.edges}")
    report.figure("targets", len(outcomes))
    report.figure("inputs", sum(outcome.runs for outcome in outcomes))
    report.figure("edges covered", f"{sum(o.covered for o in outcomes)} of {sum(o.edges for o in outcomes)}")
    trouble = [outcome.name for outcome in outcomes if outcome.trouble]
    report.figure("targets that stopped at an input", len(trouble), "0", not trouble)
    if how.keep_seeds:
        keep_seeds(how, report, names)


def keep_seeds(how, report, names):
    for name in names:
        room, chosen = how.keep_seeds, []
        for data in fuzz_targets.minimize(name, how.folder / name, KEPT / name):
            room -= len(fuzz_seeds.encoded(data)) + 1
            if room < 0:
                break
            chosen.append(data)
        report.say(f"{name}: {fuzz_seeds.add(name, chosen)} seeds more")


def run(how, report):
    left_out = fuzz_targets.OF_THE_SIMULATOR if how.short else set()
    wanted = how.only or [*(name for name in fuzz_targets.names() if name not in left_out), "vty", "board"]
    report.check(sum(path.stat().st_size for path in fuzz_seeds.FOLDER.iterdir()) <= fuzz_seeds.MAX_BYTES,
                 f"the seeds in the tree are at most {fuzz_seeds.MAX_BYTES} bytes")
    names = [name for name in fuzz_targets.names() if name in wanted]
    if names:
        parsers(how, report, names)
    report.say(f"the daemon's build is {BUILD.name}")
    if "vty" in wanted:
        Typing(how, report).run(how.lines or (1500 if how.short else 100_000))
    if "board" in wanted:
        Packets(how, report).run(300 if how.short else 20_000)
