#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The push-button: from its release to the record of the reset in the alarm store, at moments that fall anywhere
between two of the monitor's samples.

Exit status 1 when one took more than 250 milliseconds: a sample comes every 200."""
import random
import sys
import time

from bench_olt import running_olt  # first: it leads to the others

from monitors import wait_call

PRESSES = 10
SAMPLE_S = 0.2
MOST_MS = 250


def release_to_record_ms(olt):
    olt.boardctl("button", "press")
    time.sleep((2 + random.random()) * SAMPLE_S)
    released = time.monotonic() * 1000
    olt.boardctl("button", "release")
    return wait_call(olt, "reset_monitor", "cli_log")[0].time_ms - released


def main():
    took = []
    with running_olt("button-bench", trace=True) as olt:
        for _ in range(PRESSES):
            took.append(release_to_record_ms(olt))
            olt.stop()  # the monitor ends with the press
            olt.start(trace=True)
    took.sort()
    print(f"button to record           {took[0]:.0f} to {took[-1]:.0f} ms, half of them in {took[PRESSES // 2]:.0f}, of "
          f"{PRESSES} presses (a sample every {SAMPLE_S * 1000:.0f} ms; at most {MOST_MS})")
    return 0 if took[-1] <= MOST_MS else 1


if __name__ == "__main__":
    sys.exit(main())
