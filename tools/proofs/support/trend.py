# SPDX-License-Identifier: GPL-2.0-or-later
"""A figure watched over time: whether it still grows in the last half."""
import statistics
import time


class Trend:
    def __init__(self):
        self._samples = []  # (seconds, value)

    def add(self, value, at=None):
        self._samples.append((time.monotonic() if at is None else at, value))

    @property
    def first(self):
        return self._samples[0][1]

    @property
    def last(self):
        return self._samples[-1][1]

    @property
    def highest(self):
        return max(value for _, value in self._samples)

    def _last_half(self):
        begin, end = self._samples[0][0], self._samples[-1][0]
        return [(at, value) for at, value in self._samples if at >= (begin + end) / 2]

    def growth(self):
        """By how much the line through the last half rises from its begin to its end, and the noise around that line:
        the standard deviation of what is left."""
        half = self._last_half()
        if len(half) < 3:
            raise ValueError("too few samples for a trend")
        times, values = zip(*half)
        slope, offset = statistics.linear_regression(times, values)
        left = [value - (offset + slope * at) for at, value in half]
        return slope * (times[-1] - times[0]), statistics.pstdev(left)
