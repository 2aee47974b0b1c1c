# SPDX-License-Identifier: GPL-2.0-or-later
"""What a proof found: figures for its table, and what did not hold."""
import os
import re
import time
from datetime import date
from pathlib import Path

INTRODUCTION = """\
# What was proved

`tools/prove` does to the daemon in minutes what a box goes through in years; [develop.md](develop.md#proofs) tells how to
run it. Every `./test` runs a short form of each. These are the figures of the last long forms, as the tool wrote them.
"""


LONGEST = 1500  # of a finding; more than that is a daemon's whole log


def machine():
    """The machine in words: figures of another one differ."""
    memory = int(re.search(r"MemTotal:\s+(\d+)", Path("/proc/meminfo").read_text())[1]) / 1e6
    system = re.search(r'^PRETTY_NAME="(.*)"', Path("/etc/os-release").read_text(), re.M)[1]
    cpus = len(os.sched_getaffinity(0))
    kernel = re.match(r"\d+\.\d+", os.uname().release)[0]
    return (f"{cpus} processor{'s' if cpus != 1 else ''} ({os.uname().machine}) at a load\nof {os.getloadavg()[0]:.0f}, "
            f"{memory:.0f} GB of memory, Linux {kernel}, {system}")


class Report:
    def __init__(self, name, how):
        self.name = name
        self.how = how
        self.rows = []  # (what, figure, bound)
        self.findings = []
        self._begin = time.monotonic()

    @property
    def holds(self):
        return not self.findings

    def say(self, text):
        """What goes on now."""
        print(f"{self.spent_s():6.0f} s  {text}", flush=True)

    def spent_s(self):
        return time.monotonic() - self._begin

    def figure(self, what, figure, bound="", good=True):
        """A row of the table.  good: the figure is within its bound; one that is not is a finding."""
        self.rows.append((what, str(figure), bound))
        if not good:
            self.finding(f"{what}: {figure}, not {bound}")

    def finding(self, text):
        """Something that does not hold, with all that helps to see why."""
        self.findings.append(text[:LONGEST])
        self.say(f"FINDING {text[:LONGEST]}")

    def check(self, holds, text):
        if not holds:
            self.finding(text)
        return holds

    def show(self):
        widths = [max((len(row[column]) for row in self.rows), default=0) for column in (0, 1)]
        for what, figure, bound in self.rows:
            print(f"{what:{widths[0]}}  {figure:{widths[1]}}  {bound}".rstrip())
        form = "short form" if self.how.short else "long form"
        print(f"{self.name}, {form}, seed {self.how.seed}, {self.spent_s():.0f} s: "
              f"{'held' if self.holds else f'{len(self.findings)} findings'}")

    def section(self, description):
        """The proof's part of the page."""
        today = date.today()
        form = "Short form" if self.how.short else "Long form"
        lines = [f"## {self.name}", "", description.strip(), "",
                 f"{form} of {today.day} {today:%B %Y}, seed {self.how.seed}, {self.spent_s() / 60:.0f} minutes on {machine()}:"
                 f" {'everything held' if self.holds else 'not everything held'}.", "",
                 "| what | figure | bound |", "|---|---|---|"]
        lines += [f"| {' | '.join(cell.replace('|', chr(92) + '|') for cell in row)} |" for row in self.rows]
        if self.findings:
            lines += ["", "Did not hold:", ""] + [f"- {' '.join(text.split())[:300]}" for text in self.findings]
        return "\n".join(lines) + "\n"

    def record(self, page, description):
        """Puts the section in the place of the proof's last one; sections stand in the order of their names."""
        sections = {}
        if page.exists():
            parts = re.split(r"^(?=## )", page.read_text(), flags=re.M)
            sections = {part.split("\n")[0][3:]: part.strip() + "\n" for part in parts[1:]}
        sections[self.name] = self.section(description)
        page.write_text("\n".join([INTRODUCTION, *(sections[name] for name in sorted(sections))]))
