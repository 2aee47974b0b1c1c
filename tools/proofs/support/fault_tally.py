# SPDX-License-Identifier: GPL-2.0-or-later
"""What came of calls that were made to fail."""
from collections import Counter


class Tally:
    def __init__(self, report, wanted):
        """wanted: the calls that are to fail."""
        self.report = report
        self.wanted = wanted
        self.failed = set()
        self._positions = Counter()
        self._outcomes = Counter()
        self._never = set()  # (call, position) that no place reaches

    def outcome(self, fault, place, outcome):
        """A fault has happened; outcome: what became of it, in words."""
        self.failed.add(fault.op)
        self._positions[("first", "second")[fault.nth - 1] if fault.nth <= 2 else "later"] += 1
        self._outcomes[outcome] += 1

    def broken(self, fault, place, error):
        self.outcome(fault, place, "broken")
        self.report.finding(f"{fault} in {place}: {error}")

    def figures(self):
        for position in ("first", "second", "later"):
            self.report.figure(f"faults at a call's {position} place", self._positions[position])
        for outcome, count in sorted(self._outcomes.items()):
            self.report.figure(f"outcome: {outcome}", count, "0" if outcome == "broken" else "", outcome != "broken" or not count)
