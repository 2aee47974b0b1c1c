# SPDX-License-Identifier: GPL-2.0-or-later
"""What was acknowledged, and what of it must be in the alarm store."""
import re

from alarm_store import CAPACITY

LISTED = re.compile(r"^\[.*?\]  .*    (\w+)-(\d+)$", re.M)
RECORD = re.compile(r"^\[\d{4}/", re.M)


class Ledger:
    """Whoever files records has a name; its records carry that and count up from 0."""

    def __init__(self):
        self._last = {}  # the number acknowledged last, by name
        self._since = {}  # how many of all names were acknowledged before it was filed
        self.count = 0  # of all that was acknowledged
        self.found = 0  # newest ones of a name that had to be there, and were

    def acknowledge(self, name, number, since):
        """since: what the count was when this record was surely not filed yet."""
        if number > self.last(name):
            self.count += number - self.last(name)
            self._last[name] = number
            self._since[name] = since

    def last(self, name):
        return self._last.get(name, -1)

    def judge(self, listing):
        """What a listing lacks, in words.

        The store keeps the newest: a record may be gone once so many came after it as it holds, and it goes after all
        older ones of its name.  A listing is at one moment, so of a name there is everything between the first and the
        last that it shows."""
        found, wrong = {}, []
        for name, number in LISTED.findall(listing):
            found.setdefault(name, []).append(int(number))
        records = len(RECORD.findall(listing))
        if records < min(self.count, CAPACITY):
            wrong.append(f"{records} records are left of {self.count} that were acknowledged")
        if listing and not listing.endswith(f"alarm log count: {records}\n"):
            wrong.append(f"the listing of {records} records ends with {listing[-80:]!r}")
        for name, numbers in found.items():
            gaps = [(a, b) for a, b in zip(numbers, numbers[1:]) if b != a + 1]
            if gaps:
                wrong.append(f"records of {name} are missing or twice between {gaps[:3]}")
        # What was filed and not acknowledged came after, too.
        filed = self.count + sum(max(numbers[-1] - self.last(name), 0) for name, numbers in found.items())
        for name, last in self._last.items():
            newest = found.get(name, [-1])[-1]
            if filed - self._since[name] > CAPACITY:
                continue
            self.found += newest >= last
            if newest < last:
                wrong.append(f"record {name}-{last} was acknowledged and is gone, the last is {newest}")
        return wrong
