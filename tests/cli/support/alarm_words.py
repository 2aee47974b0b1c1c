# SPDX-License-Identifier: GPL-2.0-or-later
"""The words of the alarm commands: names by group in command order, actions, levels, and the catalogue's ids."""

from command_table import SETS

# (group, class): names
GROUPS = {(group, klass): SETS[f"{group}_{klass}".upper()]
          for klass in ("alarm", "event") for group in ("global", "pon", "onu", "routing")}
THRESHOLD_ALARMS = SETS["BOARD_THRESHOLD"]

*ACTIONS, _ALL = SETS["ACTION"]
LEVELS = SETS["LEVEL"]

# Every (class, name) that a command can name.
NAMED = [(klass, name) for (_, klass), names in GROUPS.items() for name in names]
ALARM_COUNT = len(NAMED)
# Those that have a level command and an older form.
LEVELLED = [(klass, name) for klass, name in NAMED if name not in THRESHOLD_ALARMS]
