# SPDX-License-Identifier: GPL-2.0-or-later
"""Nobody gets in: a user of the box outside its group, and a peer on the network without a password.

Each attack is tried on a running daemon, and those that plant something on a box whose daemon starts afterwards; a daemon
that was attacked answers, files alarms and keeps its files to itself. docs/security.md tells who can reach what and which
attack shows that it is of no use to him. The long form repeats all of them while operators work."""
import random

import attacks_local
import attacks_remote

TARGETS = ["diagd", "diagsh", "boardsim", "boardctl", "gpio_sim"]
RUNNING = [*attacks_local.RUNNING, *attacks_remote.RUNNING]
BEFORE_START = attacks_local.BEFORE_START


def options(parser):
    parser.add_argument("--rounds", type=int, help="how often each is tried (20, short form 1)")
    parser.add_argument("--only", action="append", metavar="NAME", help="these attacks; may be repeated")


def tried(attack, olt, report):
    """Whether the daemon withstood it."""
    try:
        attack(olt)
    except AssertionError as error:
        report.finding(f"{attack.__name__}: {error}"[:3000])
        return False
    return True


def run(how, report):
    rounds = how.rounds or (1 if how.short else 20)
    wanted = [attack for attack in [*RUNNING, *BEFORE_START] if not how.only or attack.__name__ in how.only]
    withstood = dict.fromkeys(wanted, 0)
    olt = how.boxes.make().start()
    chance = random.Random(how.seed)
    for number in range(rounds):
        report.say(f"round {number + 1}")
        for attack in chance.sample(wanted, len(wanted)):
            if attack in RUNNING:
                withstood[attack] += tried(attack, olt, report)
                if olt.daemon.poll() is not None:
                    olt.wait_end()
                    olt.start()
                continue
            cold = how.boxes.make()
            withstood[attack] += tried(attack, cold, report)
            cold.close()
    for attack, times in withstood.items():
        report.figure(attack.__name__.replace("_", " "), f"{times} of {rounds}", "all", times == rounds)
