# SPDX-License-Identifier: GPL-2.0-or-later
"""Every call of the platform fails once, in every place.

Each call that can fail is made to, at its first, its second and a later place chosen at random: in a session that runs
every command while all monitors work, in the monitors, in the pass of the thresholds, at the start and after a press of
the push-button. The daemon neither ends nor hangs, keeps no lock, descriptor, thread or privilege, says exactly what it
must say, and does the same thing right afterwards."""
import random

from fault_calls import all_calls, platform_calls
from fault_lives import presses, starts
from fault_places import commands, monitors, sessions
from fault_tally import Tally

TARGETS = ["diagd", "diagsh", "boardsim", "boardctl", "gpio_sim", "call_shim"]


def options(parser):
    parser.add_argument("--call", help="this call alone")


def run(how, report):
    chance = random.Random(how.seed)
    wanted = all_calls() if not how.call else {how.call}
    tally = Tally(report, wanted)
    for place in (commands, sessions, monitors, presses, starts):
        report.say(place.__doc__.splitlines()[0])
        place(how, chance, tally)
    for what, calls in (("calls of the platform", platform_calls()), ("calls of libfrr and libc", all_calls() - platform_calls())):
        calls &= wanted
        made = tally.failed & calls
        report.figure(f"{what} made to fail", f"{len(made)} of {len(calls)}", "all", made == calls)
        if made != calls:
            report.say(f"never made: {' '.join(sorted(calls - made))}")
    tally.figures()
