# SPDX-License-Identifier: GPL-2.0-or-later
"""Where the project is, and the build of it that is tested."""

import os
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
BUILD = PROJECT / "build" / os.environ.get("DIAGD_PRESET", "release")
