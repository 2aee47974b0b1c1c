# SPDX-License-Identifier: GPL-2.0-or-later
"""Where the project is, and the build of it that is tested."""

import os
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
BUILD = PROJECT / "build" / os.environ.get("DIAGD_PRESET", "release")
# ThreadSanitizer notes each byte up to eight times, and has a thread of its own under the program's name.
IS_TSAN = BUILD.name == "tsan"
MEMORY_FACTOR = 8 if IS_TSAN else 1
UNNAMED_THREADS = 2 if IS_TSAN else 1
